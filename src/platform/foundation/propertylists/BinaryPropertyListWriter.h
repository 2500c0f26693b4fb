#pragma once

#include "platform/foundation/Value.h"

namespace kelvo {

/// A binary property list ("bplist00") with each distinct short string once. Recursion stays within
/// Value::maximumDepth. Throws NSException with the reason when the tree is no property list, too deep or too
/// large.
///
/// Written here because a library's nodes hold dates as 32-bit seconds and strings up to the first U+0000.
NSData binaryPropertyListFromValue(const Value& value);

} // namespace kelvo
