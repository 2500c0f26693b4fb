#pragma once

#include "platform/foundation/Value.h"

namespace kelvo {

/// The tree as an XML property list in UTF-8. Dates are cut to whole seconds. Throws NSException with the
/// reason when the tree is no property list, too deep or too large, or has something that XML cannot hold:
/// characters outside of XML 1.0, dates outside the years 1 to 9999.
NSData XMLPropertyListFromValue(const Value& value);

} // namespace kelvo
