#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/units/UnitScan.h"

#include <string_view>

namespace kelvo {

// Searching, counting and replacing single code units. Indices count UTF-16 code units; a search that finds
// nothing gives NSNotFound. Nil and empty strings, and a start at or past the end, hold nothing. Nothing is
// allocated but the result of a replacement.
//
// How one character matches, here called the character rule: a letter that has both cases matches, without
// regard to case, whatever has the same upper case, and with regard to case its upper-case form only. So a
// search for "a" that regards case finds "A" and never "a". Any other character matches itself.

/// The code units whose entry in the upper-case table is that of `unit`.
UnitsToFind unitsOfSameUppercase(char16_t unit);
/// The code units that match by the character rule, ready for the scans of UnitScan.h.
UnitsToFind unitsMatchingCharacter(char16_t unit, bool caseInsensitive);
/// The code units that a replacement of `unit` replaces: a letter that has both cases is itself alone,
/// whatever the flag says.
UnitsToFind unitsReplacedWithCharacter(char16_t unit, bool caseInsensitive);

/// The first match by the character rule at or after `startAt`.
std::size_t findCharacter(std::u16string_view string, char16_t unit, std::size_t startAt,
                          bool caseInsensitive);
/// The number of matches by the character rule from `startAt` to the end.
std::size_t countCharacter(std::u16string_view string, char16_t unit, std::size_t startAt,
                           bool caseInsensitive);
/// The first unit at or after `startAt` that equals one of the candidates; case-insensitively, that has the
/// same entry in the upper-case table as one of them. The character rule does not apply.
std::size_t findOneOf(std::u16string_view string, std::u16string_view candidates, std::size_t startAt,
                      bool caseInsensitive);
/// The string itself when nothing was replaced. See unitsReplacedWithCharacter.
NSString stringByReplacingCharacter(const NSString& string, char16_t oldUnit, char16_t newUnit,
                                    bool caseInsensitive);

// The same as messages to a string. Without a start they begin at 0; without a flag they regard case.

inline std::size_t findCharacter_startAt_caseInsensitive(std::u16string_view string, char16_t unit,
                                                         std::size_t startAt, bool caseInsensitive) {
    return findCharacter(string, unit, startAt, caseInsensitive);
}
inline std::size_t findCharacter_caseInsensitive(std::u16string_view string, char16_t unit,
                                                 bool caseInsensitive) {
    return findCharacter(string, unit, 0, caseInsensitive);
}
inline std::size_t findCharacter(std::u16string_view string, char16_t unit) {
    return findCharacter(string, unit, 0, false);
}

inline bool containsCharacter_startAt_caseInsensitive(std::u16string_view string, char16_t unit,
                                                      std::size_t startAt, bool caseInsensitive) {
    return findCharacter(string, unit, startAt, caseInsensitive) != NSNotFound;
}
inline bool containsCharacter_caseInsensitive(std::u16string_view string, char16_t unit,
                                              bool caseInsensitive) {
    return findCharacter(string, unit, 0, caseInsensitive) != NSNotFound;
}
inline bool containsCharacter(std::u16string_view string, char16_t unit) {
    return findCharacter(string, unit, 0, false) != NSNotFound;
}

inline std::size_t countCharacter_startAt_caseInsensitive(std::u16string_view string, char16_t unit,
                                                          std::size_t startAt, bool caseInsensitive) {
    return countCharacter(string, unit, startAt, caseInsensitive);
}
inline std::size_t countCharacter_caseInsensitive(std::u16string_view string, char16_t unit,
                                                  bool caseInsensitive) {
    return countCharacter(string, unit, 0, caseInsensitive);
}
inline std::size_t countCharacter(std::u16string_view string, char16_t unit) {
    return countCharacter(string, unit, 0, false);
}

inline std::size_t findOneOf_startAt_caseInsensitive(std::u16string_view string,
                                                     std::u16string_view candidates, std::size_t startAt,
                                                     bool caseInsensitive) {
    return findOneOf(string, candidates, startAt, caseInsensitive);
}
inline std::size_t findOneOf_caseInsensitive(std::u16string_view string, std::u16string_view candidates,
                                             bool caseInsensitive) {
    return findOneOf(string, candidates, 0, caseInsensitive);
}
inline std::size_t findOneOf(std::u16string_view string, std::u16string_view candidates) {
    return findOneOf(string, candidates, 0, false);
}

inline NSString stringByReplacingCharacter_withCharacter_caseSensitive(const NSString& string,
                                                                       char16_t oldUnit, char16_t newUnit,
                                                                       bool caseSensitive) {
    return stringByReplacingCharacter(string, oldUnit, newUnit, !caseSensitive);
}
inline NSString stringByReplacingCharacter_withCharacter(const NSString& string, char16_t oldUnit,
                                                         char16_t newUnit) {
    return stringByReplacingCharacter(string, oldUnit, newUnit, false);
}

} // namespace kelvo
