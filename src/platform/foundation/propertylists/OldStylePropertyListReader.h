#pragma once

#include "platform/foundation/Value.h"

namespace kelvo {

/// Reads an old-style text property list: `{ key = value; key; }`, `( value, value )`, `<68 65 78>`, quoted
/// and bare strings, comments of both kinds, or a strings file (the pairs without their braces). `key;`
/// stands for `key = key;`. Nothing but white space is an empty dictionary.
///
/// The text is UTF-16 when it begins with that byte order mark, else UTF-8, else NEXTSTEP, the encoding that
/// octal escapes are in as well. Throws NSException with the reason and the line.
Value valueFromOldStylePropertyList(const NSData& data);

} // namespace kelvo
