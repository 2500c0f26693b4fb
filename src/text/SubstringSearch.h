#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// Searching substrings, unit by unit: nothing is normalised, a surrogate is a unit like any other, and
// without regard to case two units match that have the same entry in the upper-case table. (The character
// rule of CharacterSearch.h, under which "a" finds "A", is for single characters only.)
//
// Nil and empty needles occur nowhere. Every search takes time linear in text and needle, whatever they hold,
// and allocates nothing.

enum class FindDirection : bool { Forward, Backward };

/// Where the needle first occurs at or after `startAt`, or NSNotFound.
std::size_t firstOccurrence(std::u16string_view text, std::u16string_view needle, std::size_t startAt,
                            bool caseInsensitive);
/// Where the needle occurs last, or NSNotFound.
std::size_t lastOccurrence(std::u16string_view text, std::u16string_view needle, bool caseInsensitive);

/// The first occurrence that lies wholly inside `range`; backward, the last one.
///
/// With `wrap`, when there is none, the search goes on past the end of the range to the end of the text and
/// then from the beginning of the text, over occurrences that only partly lie inside the range too; backward
/// likewise past the beginning of the range and then from the end of the text. With an empty range (a cursor)
/// and `wrap`, repeated calls so walk through all occurrences in a circle.
///
/// {NSNotFound, 0} when there is none and when the range passes the end.
NSRange findString_inRange_caseSensitive_direction_wrap(std::u16string_view text, std::u16string_view needle,
                                                        NSRange range, bool caseSensitive,
                                                        FindDirection direction, bool wrap);

/// The number of occurrences that do not overlap, counted from the beginning: "aa" is twice in "aaaaa".
std::size_t countSubstring_caseSensitive(std::u16string_view text, std::u16string_view needle,
                                         bool caseSensitive);
inline std::size_t countSubstring(std::u16string_view text, std::u16string_view needle) {
    return countSubstring_caseSensitive(text, needle, true);
}

bool containsSubstring_caseSensitive(std::u16string_view text, std::u16string_view needle,
                                     bool caseSensitive);
inline bool containsSubstring(std::u16string_view text, std::u16string_view needle) {
    return containsSubstring_caseSensitive(text, needle, true);
}

/// Whether any of the strings in the array occurs. Elements that are not strings are passed over; a nil array
/// holds nothing. Each needle costs a search of its own.
bool containsSubstrings_caseSensitive(std::u16string_view text, const NSArray& needles, bool caseSensitive);
inline bool containsSubstrings(std::u16string_view text, const NSArray& needles) {
    return containsSubstrings_caseSensitive(text, needles, true);
}

/// Whether any unit of `characters` occurs, with regard to case.
bool containsCharacters(std::u16string_view text, std::u16string_view characters);

} // namespace kelvo
