#include "text/StringFolding.h"

#include "text/CharacterSetReps.h"
#include "text/CopyingForm.h"
#include "text/FoldingTables.h"
#include "text/StringNormalization.h"

#include <algorithm>

namespace kelvo {

namespace {

auto through(const char16_t* table) {
    return [table](char16_t unit) { return table[unit]; };
}

template <class Map>
bool isEqualMappedBy(const NSString& string, NSRange range, const NSString& other, Map map) {
    if (string.isNil() || other.isNil() || !rangeFits(range, string.length()))
        return false;
    const std::u16string_view part = string.characters().substr(range.location, range.length);
    return std::equal(
        part.begin(), part.end(), other.characters().begin(), other.characters().end(),
        [&](char16_t left, char16_t right) { return left == right || map(left) == map(right); });
}

NSRange wholeRange(const NSString& string) {
    return {0, string.length()};
}

bool holdsOnlyLettersOf(std::u16string_view string, CharacterSetRep wanted, CharacterSetRep unwanted) {
    return characterPartOfSet(string, wanted) && !characterPartOfSet(string, unwanted);
}

} // namespace

NSString nonUmlautedString(const NSString& string) {
    return copyMappedBy(string, through(initUmlautsCharsTable()));
}

NSString uppercaseNonUmlautedString(const NSString& string) {
    return copyMappedBy(string, through(initUpperUmlautsCharsTable()));
}

NSString lowercaseNonUmlautedString(const NSString& string) {
    return copyMappedBy(string, through(initLowerUmlautsCharsTable()));
}

NSString nonUmlautedNormalizedString(const NSString& string) {
    return nonUmlautedString(normalizedString(string));
}

NSString uppercaseNonUmlautedNormalizedString(const NSString& string) {
    return uppercaseNonUmlautedString(normalizedString(string));
}

NSString lowercaseNonUmlautedNormalizedString(const NSString& string) {
    return lowercaseNonUmlautedString(normalizedString(string));
}

NSString asciiString(const NSString& string) {
    return copyMappedBy(string, toAscii);
}

NSString uppercaseAsciiString(const NSString& string) {
    return copyMappedBy(string, toUpperAscii);
}

NSString lowercaseAsciiString(const NSString& string) {
    return copyMappedBy(string, toLowerAscii);
}

bool isUmlautedString(std::u16string_view string) {
    const char16_t* folded = initUmlautsCharsTable();
    return std::any_of(string.begin(), string.end(), [&](char16_t unit) { return folded[unit] != unit; });
}

bool isUpperCaseString(std::u16string_view string) {
    return holdsOnlyLettersOf(string, upperCharacterSetRep(), lowerCharacterSetRep());
}

bool isLowerCaseString(std::u16string_view string) {
    return holdsOnlyLettersOf(string, lowerCharacterSetRep(), upperCharacterSetRep());
}

bool range_isNonUmlautedEqualToNoCase(const NSString& string, NSRange range, const NSString& other) {
    return isEqualMappedBy(string, range, other, through(initUpperUmlautsCharsTable()));
}

bool isNonUmlautedEqualToStringNoCase(const NSString& string, const NSString& other) {
    return range_isNonUmlautedEqualToNoCase(string, wholeRange(string), other);
}

bool range_isAsciiEqualToNoCase(const NSString& string, NSRange range, const NSString& other) {
    return isEqualMappedBy(string, range, other, toUpperAscii);
}

bool isAsciiEqualToStringNoCase(const NSString& string, const NSString& other) {
    return range_isAsciiEqualToNoCase(string, wholeRange(string), other);
}

bool range_isEqualToNoCase(const NSString& string, NSRange range, const NSString& other) {
    return isEqualMappedBy(string, range, other, through(initUpperCharsTable()));
}

bool range_isEqualTo(const NSString& string, NSRange range, const NSString& other) {
    return isEqualMappedBy(string, range, other, [](char16_t unit) { return unit; });
}

} // namespace kelvo
