#include "text/LinksAndNumbers.h"

#include "platform/foundation/units/ASCII.h"
#include "platform/foundation/units/UnitScan.h"
#include "text/CharacterSetReps.h"
#include "text/FoldingTables.h"
#include "text/SubstringSearch.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr NSRange nothing{NSNotFound, 0};

bool isSchemeUnit(char16_t unit) {
    return isASCIILetter(unit) || isASCIIDigit(unit) || unit == u'+' || unit == u'-' || unit == u'.';
}

bool isMailUnit(char16_t unit) {
    constexpr std::u16string_view others = u"!#$%&'*+-/=?_~.";
    return isASCIILetter(unit) || isASCIIDigit(unit) || others.find(unit) != others.npos;
}

bool isDomainUnit(char16_t unit, CharacterSetRep alphaNum) {
    return unit == u'.' || unit == u'-' || unitIsInBitmap(alphaNum, unit);
}

bool endsStretch(char16_t unit, CharacterSetRep white) {
    constexpr std::u16string_view others = u"<>\"`{}|\\^\u00AB\u00BB\u201C\u201D\u201E";
    return unitIsInBitmap(white, unit) || others.find(unit) != others.npos;
}

/// Where the first scheme with "://" begins, or npos.
std::size_t startOfScheme(std::u16string_view stretch) {
    constexpr std::u16string_view mark = u"://";
    std::size_t searched = 0;
    for (std::size_t colon; (colon = stretch.find(mark, searched)) != stretch.npos; searched = colon + 3) {
        std::size_t start = colon;
        while (start > searched && isSchemeUnit(stretch[start - 1]))
            --start;
        while (start < colon && !isASCIILetter(stretch[start]))
            ++start;
        if (start < colon && colon + mark.size() < stretch.size())
            return start;
    }
    return stretch.npos;
}

/// Where the prefix first begins in any case, not inside a word, with something after it; or npos.
std::size_t startOfPrefix(std::u16string_view stretch, std::u16string_view prefix, CharacterSetRep alphaNum) {
    for (std::size_t start = 0; (start = firstOccurrence(stretch, prefix, start, true)) != NSNotFound;
         ++start)
        if ((start == 0 || !unitIsInBitmap(alphaNum, stretch[start - 1])) &&
            start + prefix.size() < stretch.size())
            return start;
    return stretch.npos;
}

std::u16string_view withoutPunctuationAtEnd(std::u16string_view link) {
    constexpr std::u16string_view brackets = u"()[]";
    std::ptrdiff_t counts[4] = {};
    for (std::size_t kind = 0; kind < brackets.size(); ++kind)
        counts[kind] = std::count(link.begin(), link.end(), brackets[kind]);
    while (!link.empty()) {
        const std::size_t kind = brackets.find(link.back());
        if (kind == 1 || kind == 3) {
            if (counts[kind - 1] >= counts[kind])
                break;
            --counts[kind];
        } else if (std::u16string_view(u".,;:!?'\u2019").find(link.back()) == link.npos) {
            break;
        }
        link.remove_suffix(1);
    }
    return link;
}

/// The mail address in the stretch that holds the index.
NSRange mailAddressAround(std::u16string_view stretch, std::size_t index, CharacterSetRep alphaNum) {
    std::size_t searched = 0;
    for (std::size_t at; (at = stretch.find(u'@', searched)) != stretch.npos; searched = at + 1) {
        std::size_t start = at;
        while (start > searched && isMailUnit(stretch[start - 1]))
            --start;
        while (start < at && (stretch[start] == u'.' || stretch[start] == u'\''))
            ++start;
        std::size_t end = at + 1;
        while (end < stretch.size() && isDomainUnit(stretch[end], alphaNum))
            ++end;
        while (end > at + 1 && (stretch[end - 1] == u'.' || stretch[end - 1] == u'-'))
            --end;
        const std::size_t dot = stretch.substr(0, end).find(u'.', at + 1);
        if (start < at && dot != stretch.npos && dot > at + 1 && index >= start && index < end)
            return {start, end - start};
    }
    return nothing;
}

/// Calls `use` with the range of each number until it returns true; whether it did.
template <class Use>
bool anyNumber(std::u16string_view text, Use use) {
    const CharacterSetRep digits = digitCharacterSetRep();
    for (std::size_t start = 0; start < text.size();) {
        start += firstUnitInBitmap(text.data() + start, text.size() - start, digits);
        if (start == text.size())
            break;
        const std::size_t length = firstUnitNotInBitmap(text.data() + start, text.size() - start, digits);
        if (use(NSRange{start, length}))
            return true;
        start += length;
    }
    return false;
}

unsigned digitValue(char16_t digit, CharacterSetRep digits) {
    // Digits stand in the code in rows of ten, in order; a row may follow directly on another.
    char16_t first = digit;
    while (unitIsInBitmap(digits, static_cast<char16_t>(first - 1)))
        --first;
    return static_cast<unsigned>(digit - first) % 10;
}

bool digitsHaveValue(std::u16string_view number, std::uint64_t value, CharacterSetRep digits) {
    // From the last digit on, so that the value never has to be made of more digits than fit.
    for (; !number.empty(); number.remove_suffix(1), value /= 10)
        if (digitValue(number.back(), digits) != value % 10)
            return false;
    return value == 0;
}

} // namespace

NSRange getLinkRangeAtIndex(std::u16string_view text, std::size_t index) {
    const CharacterSetRep white = whiteCharacterSetRep(), alphaNum = alphaNumCharacterSetRep();
    if (index >= text.size() || endsStretch(text[index], white))
        return nothing;
    std::size_t stretchStart = index, stretchEnd = index + 1;
    while (stretchStart > 0 && !endsStretch(text[stretchStart - 1], white))
        --stretchStart;
    while (stretchEnd < text.size() && !endsStretch(text[stretchEnd], white))
        ++stretchEnd;
    const std::u16string_view stretch = text.substr(stretchStart, stretchEnd - stretchStart);
    index -= stretchStart;

    std::size_t start = startOfScheme(stretch), lengthOfBeginning = 0;
    if (start != stretch.npos)
        lengthOfBeginning = stretch.find(u"://", start) + 3 - start;
    for (const std::u16string_view prefix : {u"mailto:", u"www."})
        if (const std::size_t other = startOfPrefix(stretch, prefix, alphaNum); other < start) {
            start = other;
            lengthOfBeginning = prefix.size();
        }
    NSRange link = nothing;
    if (start == stretch.npos) {
        link = mailAddressAround(stretch, index, alphaNum);
    } else {
        const std::size_t length = withoutPunctuationAtEnd(stretch.substr(start)).size();
        if (length > lengthOfBeginning && index >= start && index < start + length)
            link = {start, length};
    }
    return link.location == NSNotFound ? nothing : NSRange{stretchStart + link.location, link.length};
}

NSString getLinkAtIndex(const NSString& text, std::size_t index) {
    const NSRange range = getLinkRangeAtIndex(text, index);
    return range.location == NSNotFound ? NSString() : text.substringWithRange(range);
}

std::size_t countNumbers(std::u16string_view text) {
    std::size_t count = 0;
    anyNumber(text, [&](NSRange) {
        ++count;
        return false;
    });
    return count;
}

bool containsNumber(std::u16string_view text, std::int64_t value) {
    const CharacterSetRep digits = digitCharacterSetRep();
    const std::uint64_t magnitude =
        value < 0 ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
    return anyNumber(text, [&](NSRange number) {
        if (value < 0 && (number.location == 0 ||
                          (text[number.location - 1] != u'-' && text[number.location - 1] != u'\u2212')))
            return false;
        return digitsHaveValue(text.substr(number.location, number.length), magnitude, digits);
    });
}

bool containsNumberWithNDigits(std::u16string_view text, std::size_t digitCount) {
    return anyNumber(text, [&](NSRange number) { return number.length == digitCount; });
}

void countLT_GT(std::u16string_view text, std::size_t* lessThanCount, std::size_t* greaterThanCount) {
    const auto countOf = [&](char16_t unit) {
        return countUnitsEqualTo(text.data(), text.size(), UnitsToFind{{unit, unit, unit, unit}, 1});
    };
    if (lessThanCount)
        *lessThanCount = countOf(u'<');
    if (greaterThanCount)
        *greaterThanCount = countOf(u'>');
}

void getChars(std::u16string_view text, std::span<char> bytes) {
    const std::size_t count = std::min(text.size(), bytes.size());
    std::transform(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(count), bytes.begin(),
                   [](char16_t unit) { return static_cast<char>(toAscii(unit)); });
}

} // namespace kelvo
