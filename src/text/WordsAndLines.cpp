#include "text/WordsAndLines.h"

#include "platform/foundation/units/UnitScan.h"
#include "text/CharacterSearch.h"
#include "text/CharacterSetReps.h"
#include "text/LineScan.h"
#include "text/UnitSet.h"

namespace kelvo {

namespace {

constexpr NSRange nothing{NSNotFound, 0};

NSString substringOrNil(const NSString& text, NSRange range) {
    return range.location == NSNotFound ? NSString() : text.substringWithRange(range);
}

bool isWordUnit(std::u16string_view text, std::size_t index, CharacterSetRep alphaNum) {
    const char16_t unit = text[index];
    if (unit != u'\'' && unit != u'\u2019')
        return unitIsInBitmap(alphaNum, unit);
    return index > 0 && index + 1 < text.size() && unitIsInBitmap(alphaNum, text[index - 1]) &&
           unitIsInBitmap(alphaNum, text[index + 1]);
}

template <class Belongs>
NSRange runAround(std::size_t size, std::size_t index, Belongs belongs) {
    if (index >= size || !belongs(index))
        return nothing;
    std::size_t start = index, end = index + 1;
    while (start > 0 && belongs(start - 1))
        --start;
    while (end < size && belongs(end))
        ++end;
    return {start, end - start};
}

} // namespace

NSRange getWordRangeAtIndex(std::u16string_view text, std::size_t index) {
    const CharacterSetRep alphaNum = alphaNumCharacterSetRep();
    return runAround(text.size(), index,
                     [&](std::size_t position) { return isWordUnit(text, position, alphaNum); });
}

NSString getWordAtIndex(const NSString& text, std::size_t index) {
    return substringOrNil(text, getWordRangeAtIndex(text, index));
}

NSString firstWord(const NSString& text) {
    if (text.isEmpty())
        return text;
    const std::u16string_view units = text;
    const std::size_t index = firstUnitInBitmap(units.data(), units.size(), alphaNumCharacterSetRep());
    return index < units.size() ? getWordAtIndex(text, index) : NSString::string();
}

NSString lastWord(const NSString& text) {
    if (text.isEmpty())
        return text;
    const std::u16string_view units = text;
    const CharacterSetRep alphaNum = alphaNumCharacterSetRep();
    std::size_t count = units.size();
    while (count > 0 && !unitIsInBitmap(alphaNum, units[count - 1]))
        --count;
    return count > 0 ? getWordAtIndex(text, count - 1) : NSString::string();
}

NSRange getSubstringRangeAtIndex_separators(std::u16string_view text, std::size_t index,
                                            std::u16string_view separators) {
    // The substrings that are asked for are short, however long the text.
    const UnitSet set(separators, 0);
    return runAround(text.size(), index, [&](std::size_t position) { return !set.contains(text[position]); });
}

NSString getSubstringAtIndex_separators(const NSString& text, std::size_t index,
                                        std::u16string_view separators) {
    return substringOrNil(text, getSubstringRangeAtIndex_separators(text, index, separators));
}

std::size_t numberOfLines(std::u16string_view text) {
    std::size_t count = 0;
    forEachLine(text, [&](const LineSpan&) { ++count; });
    return count;
}

NSString firstLine(const NSString& text) {
    return text.isEmpty() ? text : text.substringToIndex(lineFrom(text, 0).contents.size());
}

std::size_t findLastCharacter_startAt_caseInsensitive(std::u16string_view text, char16_t unit,
                                                      std::size_t startAt, bool caseInsensitive) {
    if (startAt >= text.size())
        return NSNotFound;
    const UnitsToFind wanted = unitsMatchingCharacter(unit, caseInsensitive);
    for (std::size_t index = startAt + 1; index-- > 0;)
        if (wanted.contains(text[index]))
            return index;
    return NSNotFound;
}

} // namespace kelvo
