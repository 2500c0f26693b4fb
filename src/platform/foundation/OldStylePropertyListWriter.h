#pragma once

#include "platform/foundation/Value.h"

namespace kelvo {

/// The tree as old-style text in ASCII: four blanks a level, one element or pair a line, strings quoted
/// unless they are letters, digits and underscores. Numbers and dates stand as strings. Throws NSException
/// with the reason when the tree is no property list, too deep or too large.
NSString oldStylePropertyListFromValue(const Value& value);

/// The same form for people to read, of any tree: other kinds of objects stand as strings, and what is too
/// deep or too much is left out with "...". Strings on the top level stand as they are.
NSString descriptionOfValue(const Value& value);

} // namespace kelvo
