#include "text/StringMatching.h"

#include "text/FoldingTables.h"

#include <cstring>

namespace kelvo {

namespace {

template <class UnitAt>
bool restOfNeedleStands(const char* needle, std::size_t needleLength, UnitAt unitAt) {
    for (std::size_t index = 1; index < needleLength; ++index)
        // A byte of 0x80 or above is negative here and equals no unit.
        if (int{unitAt(index)} != int{static_cast<signed char>(needle[index])})
            return false;
    return true;
}

enum class Case : bool { Matters, DoesNot };
enum class Match : bool { Whole, Prefix };

template <Case letterCase>
bool equalInRep(std::u16string_view first, std::u16string_view second, CharacterSetRep rep, Match match) {
    if (first.empty() && second.empty())
        return true;
    if (!rep)
        return false;
    const char16_t* upper = letterCase == Case::DoesNot ? initUpperCharsTable() : nullptr;
    std::size_t other = 0;
    for (const char16_t unit : first) {
        if (!unitIsInBitmap(rep, unit))
            continue;
        while (other < second.size() && !unitIsInBitmap(rep, second[other]))
            ++other;
        if (other == second.size())
            return match == Match::Prefix;
        const char16_t counterpart = second[other++];
        if (unit == counterpart)
            continue;
        if (letterCase == Case::Matters || upper[unit] != upper[counterpart])
            return false;
    }
    return !characterPartOfSet(second.substr(other), rep);
}

} // namespace

bool fastContainsSubCStrings(const char16_t* units, std::size_t length, const char* const* needles,
                             const char16_t* foldTable) {
    if (length < 1 || !needles)
        return false;
    for (; *needles; ++needles) {
        const char* needle = *needles;
        const std::size_t needleLength = std::strlen(needle);
        if (needleLength > length)
            continue;
        if (needleLength == 0)
            return true;
        const std::size_t starts = length - needleLength + 1;
        if (static_cast<signed char>(*needle) < 0)
            continue;
        const char16_t first = static_cast<char16_t>(*needle);
        if (foldTable) {
            for (std::size_t start = 0; start < starts; ++start)
                if (foldTable[units[start]] == first &&
                    restOfNeedleStands(needle, needleLength,
                                       [&](std::size_t index) { return foldTable[units[start + index]]; }))
                    return true;
            continue;
        }
        const UnitsToFind wanted{{first, first, first, first}, 1};
        for (std::size_t start = 0; start < starts; ++start) {
            start += firstUnitEqualTo(units + start, starts - start, wanted);
            if (start < starts && restOfNeedleStands(needle, needleLength,
                                                     [&](std::size_t index) { return units[start + index]; }))
                return true;
        }
    }
    return false;
}

bool containsSubCStrings(std::u16string_view string, const char* const* needles) {
    return fastContainsSubCStrings(string.data(), string.size(), needles, nullptr);
}

bool containsSubCStrings_caseSensitive(std::u16string_view string, const char* const* needles,
                                       bool caseSensitive) {
    return fastContainsSubCStrings(string.data(), string.size(), needles,
                                   caseSensitive ? nullptr : initLowerCharsTable());
}

bool _equalStringsUsingCharacterSetRep(std::u16string_view first, std::u16string_view second,
                                       CharacterSetRep rep, bool noCase, bool prefix) {
    const Match match = prefix ? Match::Prefix : Match::Whole;
    return noCase ? equalInRep<Case::DoesNot>(first, second, rep, match)
                  : equalInRep<Case::Matters>(first, second, rep, match);
}

bool equalStringsUsingCharacterSetRep(std::u16string_view first, std::u16string_view second,
                                      CharacterSetRep rep) {
    return _equalStringsUsingCharacterSetRep(first, second, rep, false, false);
}

bool equalStringsNoCaseUsingCharacterSetRep(std::u16string_view first, std::u16string_view second,
                                            CharacterSetRep rep) {
    return _equalStringsUsingCharacterSetRep(first, second, rep, true, false);
}

bool hasPrefixUsingCharacterSetRep(std::u16string_view string, std::u16string_view prefix,
                                   CharacterSetRep rep) {
    return _equalStringsUsingCharacterSetRep(string, prefix, rep, false, true);
}

bool hasPrefixNoCaseUsingCharacterSetRep(std::u16string_view string, std::u16string_view prefix,
                                         CharacterSetRep rep) {
    return _equalStringsUsingCharacterSetRep(string, prefix, rep, true, true);
}

bool equalCharsOfCharacterSetRep(const char16_t* first, std::size_t firstCount, const char16_t* second,
                                 std::size_t secondCount, CharacterSetRep rep) {
    return equalStringsUsingCharacterSetRep({first, firstCount}, {second, secondCount}, rep);
}

bool equalCharsNoCaseOfCharacterSetRep(const char16_t* first, std::size_t firstCount, const char16_t* second,
                                       std::size_t secondCount, CharacterSetRep rep) {
    return equalStringsNoCaseUsingCharacterSetRep({first, firstCount}, {second, secondCount}, rep);
}

bool hasPrefixCharsOfCharacterSetRep(const char16_t* units, std::size_t count, const char16_t* prefix,
                                     std::size_t prefixCount, CharacterSetRep rep) {
    return hasPrefixUsingCharacterSetRep({units, count}, {prefix, prefixCount}, rep);
}

bool hasPrefixCharsNoCaseOfCharacterSetRep(const char16_t* units, std::size_t count, const char16_t* prefix,
                                           std::size_t prefixCount, CharacterSetRep rep) {
    return hasPrefixNoCaseUsingCharacterSetRep({units, count}, {prefix, prefixCount}, rep);
}

bool isMashedWordString(std::u16string_view string) {
    if (string.size() < 3)
        return false;
    const CharacterSetRep upper = upperCharacterSetRep(), lower = lowerCharacterSetRep();
    if (!unitIsInBitmap(upper, string[0]))
        return false;
    const std::size_t second = 1 + firstUnitNotInBitmap(string.data() + 1, string.size() - 1, lower);
    return second > 1 && second + 1 < string.size() && unitIsInBitmap(upper, string[second]) &&
           unitIsInBitmap(lower, string[second + 1]);
}

} // namespace kelvo
