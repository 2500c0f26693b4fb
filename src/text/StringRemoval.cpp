#include "text/StringRemoval.h"

#include "platform/foundation/units/UnitScan.h"
#include "text/CopyingForm.h"
#include "text/FoldingTables.h"
#include "text/StringLines.h"
#include "text/StringNormalization.h"
#include "text/UnitBitmap.h"
#include "text/UnitSet.h"

namespace kelvo {

namespace {

constexpr UnitBitmap tabs(u"\t");
constexpr UnitBitmap attachments(u"\uFFFC");

bool holdsNoneOf(std::u16string_view text, CharacterSetRep rep) {
    return !rep || firstUnitInBitmap(text.data(), text.size(), rep) == text.size();
}

} // namespace

void removeCharacters(NSMutableString& string, CharacterSetRep rep) {
    if (!rep)
        return;
    char16_t* units = string.mutableCharacters();
    const std::size_t count = string.length();
    string.setLength(UnitSet::removeWhere(units, firstUnitInBitmap(units, count, rep), count,
                                          [rep](char16_t unit) { return unitIsInBitmap(rep, unit); }));
}

void removeMembers(NSMutableString& string, const UnitSet& unwanted) {
    string.setLength(unwanted.removeFrom(string.mutableCharacters(), string.length()));
}

NSString stringByRemovingCharacters(const NSString& string, CharacterSetRep rep) {
    if (holdsNoneOf(string, rep))
        return string;
    return copyChangedBy(string, [&](NSMutableString& copy) { removeCharacters(copy, rep); });
}

void removeCharactersOfString(NSMutableString& string, std::u16string_view characters) {
    removeMembers(string, UnitSet(characters, string.length()));
}

NSString stringByRemovingCharactersOfString(const NSString& string, std::u16string_view characters) {
    const std::u16string_view text = string;
    const UnitSet unwanted(characters, text.size());
    if (unwanted.firstIn(text.data(), text.size()) == text.size())
        return string;
    return copyChangedBy(string, [&](NSMutableString& copy) { removeMembers(copy, unwanted); });
}

void removeCharacterAtIndex(NSMutableString& string, std::size_t index) {
    if (index < string.length())
        string.deleteCharactersInRange({index, 1});
}

void removeTabs(NSMutableString& string) {
    removeCharacters(string, tabs.rep());
}

NSString stringByRemovingTabs(const NSString& string) {
    return stringByRemovingCharacters(string, tabs.rep());
}

void removeFeeds(NSMutableString& string) {
    removeCharacters(string, feedCharacterSetRep());
}

NSString stringByRemovingFeeds(const NSString& string) {
    return stringByRemovingCharacters(string, feedCharacterSetRep());
}

void removeSpaces(NSMutableString& string) {
    removeCharacters(string, spaceCharacterSetRep());
}

NSString stringByRemovingSpaces(const NSString& string) {
    return stringByRemovingCharacters(string, spaceCharacterSetRep());
}

void removeWhiteCharacters(NSMutableString& string) {
    removeCharacters(string, whiteCharacterSetRep());
}

NSString stringByRemovingWhiteCharacters(const NSString& string) {
    return stringByRemovingCharacters(string, whiteCharacterSetRep());
}

void removeDigits(NSMutableString& string) {
    removeCharacters(string, digitCharacterSetRep());
}

NSString stringByRemovingDigits(const NSString& string) {
    return stringByRemovingCharacters(string, digitCharacterSetRep());
}

void removeAttachments(NSMutableString& string) {
    removeCharacters(string, attachments.rep());
}

void removeMultipleSpaces(NSMutableString& string) {
    const CharacterSetRep spaces = spaceCharacterSetRep();
    char16_t* units = string.mutableCharacters();
    std::size_t kept = 0;
    bool followsSpace = false;
    for (std::size_t index = 0; index < string.length(); ++index) {
        const bool isSpace = unitIsInBitmap(spaces, units[index]);
        units[kept] = units[index];
        kept += !(isSpace && followsSpace);
        followsSpace = isSpace;
    }
    string.setLength(kept);
}

void removeMultipleFeeds(NSMutableString& string) {
    char16_t* units = string.mutableCharacters();
    std::size_t kept = 0;
    for (std::size_t index = 0; index < string.length();) {
        const char16_t unit = units[index++];
        units[kept++] = unit;
        if (!isFeedCharacter(unit))
            continue;
        if (unit == u'\r' && index < string.length() && units[index] == u'\n')
            units[kept++] = units[index++];
        while (index < string.length() && isFeedCharacter(units[index]))
            ++index;
    }
    string.setLength(kept);
}

NSString stringByRemovingMultipleFeeds(const NSString& string) {
    return copyChangedBy(string, removeMultipleFeeds);
}

void removeMultipleSpacesAndFeeds(NSMutableString& string, bool andFeeds) {
    removeMultipleSpaces(string);
    if (andFeeds)
        removeMultipleFeeds(string);
}

NSString stringByRemovingMultipleSpacesAndFeeds(const NSString& string, bool andFeeds) {
    return copyChangedBy(string,
                         [&](NSMutableString& copy) { removeMultipleSpacesAndFeeds(copy, andFeeds); });
}

NSString uppercaseStringByRemovingDigits(const NSString& string) {
    return copyChangedBy(string, [](NSMutableString& copy) {
        removeDigits(copy);
        uppercase(copy);
    });
}

NSString lowercaseStringByRemovingDigits(const NSString& string) {
    return copyChangedBy(string, [](NSMutableString& copy) {
        removeDigits(copy);
        lowercase(copy);
    });
}

NSString caseInsensitiveStringByRemovingNonAlphaNumericCharacters(const NSString& string) {
    return copyChangedBy(string, [](NSMutableString& copy) {
        const CharacterSetRep alphaNum = alphaNumCharacterSetRep();
        const char16_t* upper = initUpperCharsTable();
        char16_t* units = copy.mutableCharacters();
        std::size_t kept = 0;
        for (const char16_t unit : copy.characters()) {
            units[kept] = upper[unit];
            kept += unitIsInBitmap(alphaNum, unit);
        }
        copy.setLength(kept);
    });
}

} // namespace kelvo
