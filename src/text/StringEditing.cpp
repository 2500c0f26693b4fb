#include "text/StringEditing.h"

#include "platform/foundation/units/UnitScan.h"
#include "text/CopyingForm.h"
#include "text/StringLines.h"
#include "text/StringTrimming.h"

#include <algorithm>

namespace kelvo {

namespace {

std::size_t columnAfter(std::size_t column, char16_t unit, std::size_t columnsPerTab) {
    if (unit == u'\t')
        return column + (columnsPerTab - column % columnsPerTab);
    return isFeedCharacter(unit) ? 0 : column + 1;
}

/// NSNotFound when no string can be that long.
std::size_t lengthWithoutTabs(std::u16string_view text, std::size_t columnsPerTab) {
    std::size_t length = 0, column = 0;
    for (const char16_t unit : text) {
        const std::size_t next = columnAfter(column, unit, columnsPerTab);
        const std::size_t added = unit == u'\t' ? next - column : 1;
        if (added > mostUnits - length)
            return NSNotFound;
        length += added;
        column = next;
    }
    return length;
}

} // namespace

void appendTrimmedString(NSMutableString& string, std::u16string_view text) {
    unlessRefused([&] { string.appendString(withoutWhiteSpacesAtEnds(text)); });
}

void appendCharacters_length(NSMutableString& string, const char16_t* units, std::size_t count) {
    if (units)
        unlessRefused([&] { string.appendString({units, count}); });
}

void appendCharacter(NSMutableString& string, char16_t unit) {
    unlessRefused([&] { string.appendCharacter(unit); });
}

void insertCharacter_atIndex(NSMutableString& string, char16_t unit, std::size_t index) {
    unlessRefused([&] { string.insertString_atIndex({&unit, 1}, index); });
}

void appendSubstring_range(NSMutableString& string, std::u16string_view text, NSRange range) {
    if (rangeFits(range, text.size()))
        unlessRefused([&] { string.appendString(text.substr(range.location, range.length)); });
}

void encodeTabs(NSMutableString& string, std::size_t columnsPerTab) {
    // No run of spaces is as long as that.
    if (columnsPerTab == 0 || columnsPerTab > mostUnits)
        return;
    char16_t* units = string.mutableCharacters();
    std::size_t kept = 0, column = 0, spaces = 0;
    for (std::size_t index = 0; index < string.length(); ++index) {
        const char16_t unit = units[index];
        units[kept++] = unit;
        column = columnAfter(column, unit, columnsPerTab);
        spaces = unit == u' ' ? spaces + 1 : 0;
        if (spaces > 0 && column % columnsPerTab == 0) {
            if (spaces > 1) {
                kept -= spaces;
                units[kept++] = u'\t';
            }
            spaces = 0;
        }
    }
    string.setLength(kept);
}

void decodeTabs(NSMutableString& string, std::size_t columnsPerTab) {
    const std::u16string_view text = string;
    constexpr UnitsToFind tab{{u'\t', u'\t', u'\t', u'\t'}, 1};
    if (columnsPerTab == 0 || firstUnitEqualTo(text.data(), text.size(), tab) == text.size())
        return;
    const std::size_t length = lengthWithoutTabs(text, columnsPerTab);
    if (length == NSNotFound)
        return;
    NSMutableString result = NSMutableString::stringWithCapacity(length);
    char16_t* units = result.mutableCharacters();
    std::size_t column = 0;
    for (const char16_t unit : text) {
        const std::size_t next = columnAfter(column, unit, columnsPerTab);
        if (unit == u'\t')
            units = std::fill_n(units, next - column, u' ');
        else
            *units++ = unit;
        column = next;
    }
    result.setLength(length);
    string.swap(result);
}

NSString stringByRotating(const NSString& string, int places) {
    const int shift = (places % 26 + 26) % 26;
    return copyMappedBy(string, [shift](char16_t unit) -> char16_t {
        const bool isUpper = unit >= u'A' && unit <= u'Z';
        if (!isUpper && !(unit >= u'a' && unit <= u'z'))
            return unit;
        const char16_t first = isUpper ? u'A' : u'a';
        return static_cast<char16_t>(first + (unit - first + shift) % 26);
    });
}

} // namespace kelvo
