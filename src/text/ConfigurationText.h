#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Value.h"

namespace kelvo {

// Texts of settings, one "key = value" or "key: value" a line. White units at both ends of lines, keys and
// values do not count; blank lines, and lines that begin with "#", ";" or "//", are comments. Nil gives nil.

/// The lines that are no comments, in order, without their ends and without white units at theirs.
NSArray configLines(const NSString& text);

/// The value of the first line with that key, with regard to case. The key ends at the "=" or ":", so it may
/// hold blanks; a value in double quotes loses them (and keeps white units inside). A line with nothing but
/// the key has the empty value. Nil when no line has the key, and for a nil or empty key.
NSString configValueForKey(const NSString& text, const NSString& key);

/// The value of the first key in the list that the text has, by what it looks like: "yes", "on", "true",
/// "no", "off" and "false" in any case are booleans; decimal integers are 32-bit ones, or 64-bit ones where
/// they need to be; other decimal numbers, also with an exponent, are doubles; everything else, and whatever
/// stands in quotes, is a string. Nil when the text has none of the keys; what is no string in the list is
/// passed over.
Value typedValueForKeys(const NSString& text, const NSArray& keys);

/// The paragraphs of a mail: each line loses its quote marks (">" and "|" at its beginning, with white units
/// between them), and then reformattedStringByRemovingCharactersOfString, which removes nothing more, joins
/// the lines. Nil and empty texts are returned as they are.
NSString reformattedMailing(const NSString& mail);

// What a string is made of, for people who look for a fault.

/// One line for 8 units: the index of the first in 8 hexadecimal digits, the units in 4 each, and the text
/// with a point for all but printable ASCII. Nil for nil.
NSArray dumpAsArray(const NSString& text);
/// The same lines as one text, each with a line feed. Nil for nil, and when they would pass
/// maximumSizeInBytes.
NSString dump(const NSString& text);

} // namespace kelvo
