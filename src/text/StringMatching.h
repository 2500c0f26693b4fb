#pragma once

#include "text/CharacterSetReps.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// Needles.

/// Whether any of the needles occurs in the `length` units. `needles` is a list of NUL-terminated byte
/// strings that a null pointer ends; it may itself be null, which finds nothing. Needles are ASCII: a byte of
/// 0x80 or above never matches. An empty needle occurs in every string but the empty one. `foldTable`, where
/// not null, is a table of FoldingTables.h through which the units (not the needles) are read.
bool fastContainsSubCStrings(const char16_t* units, std::size_t length, const char* const* needles,
                             const char16_t* foldTable);
bool containsSubCStrings(std::u16string_view string, const char* const* needles);
/// When case does not matter the needles must be given in lower case.
bool containsSubCStrings_caseSensitive(std::u16string_view string, const char* const* needles,
                                       bool caseSensitive);

// Comparison of the units that are in a rep; all others are skipped on both sides. Without regard to case,
// units are equal that have the same entry in the upper-case table. The prefix forms tell whether the units
// of the second string that count begin those of the first. Two empty strings are equal; nil is taken for
// empty. A null rep makes nothing equal but two empty strings.

bool _equalStringsUsingCharacterSetRep(std::u16string_view first, std::u16string_view second,
                                       CharacterSetRep rep, bool noCase, bool prefix);

// The same by name.

bool equalStringsUsingCharacterSetRep(std::u16string_view first, std::u16string_view second,
                                      CharacterSetRep rep);
bool equalStringsNoCaseUsingCharacterSetRep(std::u16string_view first, std::u16string_view second,
                                            CharacterSetRep rep);
bool hasPrefixUsingCharacterSetRep(std::u16string_view string, std::u16string_view prefix,
                                   CharacterSetRep rep);
bool hasPrefixNoCaseUsingCharacterSetRep(std::u16string_view string, std::u16string_view prefix,
                                         CharacterSetRep rep);

/// The same on arrays; a pointer may be null when its count is 0.
bool equalCharsOfCharacterSetRep(const char16_t* first, std::size_t firstCount, const char16_t* second,
                                 std::size_t secondCount, CharacterSetRep rep);
bool equalCharsNoCaseOfCharacterSetRep(const char16_t* first, std::size_t firstCount, const char16_t* second,
                                       std::size_t secondCount, CharacterSetRep rep);
bool hasPrefixCharsOfCharacterSetRep(const char16_t* units, std::size_t count, const char16_t* prefix,
                                     std::size_t prefixCount, CharacterSetRep rep);
bool hasPrefixCharsNoCaseOfCharacterSetRep(const char16_t* units, std::size_t count, const char16_t* prefix,
                                           std::size_t prefixCount, CharacterSetRep rep);

// Mashed words.

/// Whether the string begins like two capitalised words run together: an upper-case letter, one or more
/// lower-case letters, an upper-case and a lower-case letter ("WebKit"; not "FooB", not "FBar"). Nil and what
/// is shorter than 3 units: false.
bool isMashedWordString(std::u16string_view string);
inline bool isMashedWord(std::u16string_view string) {
    return isMashedWordString(string);
}

} // namespace kelvo
