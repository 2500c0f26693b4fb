#pragma once

#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

// Links, numbers and tags in running text. Nil is taken for the empty text, which holds none.

// A link is looked for in the stretch of text around it that holds no white unit, none of < > " ` { } | \ ^
// and no double quotation mark or guillemet. It begins with
//   * a scheme (an ASCII letter, then letters, digits, "+", "-" and ".") and "://", or
//   * "mailto:" or "www.", in any case and not in the middle of a word,
// with the first of these in the stretch, and goes on to the stretch's end, except for the punctuation there
// (. , ; : ! ? ' and closing brackets that have no opening one in the link). At least one unit must follow
// the beginning. In a stretch without any of these, a link is a mail address: local part, "@", and a domain
// with a dot inside it.

/// The link that the unit at the index belongs to; {NSNotFound, 0} when there is none or the index is
/// outside.
NSRange getLinkRangeAtIndex(std::u16string_view text, std::size_t index);
/// As it is written, or nil.
NSString getLinkAtIndex(const NSString& text, std::size_t index);

// A number is a longest run of decimal digits of any script. Signs, points and separators belong to no number:
// "-3.14" holds the two numbers 3 and 14.

std::size_t countNumbers(std::u16string_view text);
/// Whether one of the numbers has that value, leading zeros aside. A negative value must have its sign
/// (U+002D or U+2212) directly before the digits; a positive one is found whatever stands there, as in
/// "2026-11-21".
bool containsNumber(std::u16string_view text, std::int64_t value);
/// Whether one of the numbers has exactly that many digits; false for 0.
bool containsNumberWithNDigits(std::u16string_view text, std::size_t digitCount);

/// Counts "<" and ">", which tells markup from plain text. Either pointer may be null.
void countLT_GT(std::u16string_view text, std::size_t* lessThanCount, std::size_t* greaterThanCount);

/// Writes the units as ASCII bytes, without diacritics and with a space for what is not ASCII then, one byte
/// a unit and no terminator, as far as the room suffices.
void getChars(std::u16string_view text, std::span<char> bytes);

} // namespace kelvo
