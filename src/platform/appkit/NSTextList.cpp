#include "platform/appkit/NSTextList.h"

#include "platform/foundation/units/ASCII.h"

#include <array>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

using Units = std::u16string;

Units number(long long value, unsigned base, std::string_view signs = lowerHexDigits) {
    Units digits;
    unsigned long long rest =
        value < 0 ? 0ULL - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
    do {
        digits.insert(digits.begin(), static_cast<char16_t>(signs[rest % base]));
        rest /= base;
    } while (rest != 0);
    return value < 0 ? u"-" + digits : digits;
}

/// a to z, then aa, ab, …
Units letters(int value, std::u16string_view alphabet) {
    const int base = static_cast<int>(alphabet.size());
    Units result;
    for (; value > 0; value = (value - 1) / base)
        result.insert(result.begin(), alphabet[static_cast<std::size_t>((value - 1) % base)]);
    return result;
}

Units roman(int value, bool isUpper) {
    static constexpr std::array<std::pair<int, std::u16string_view>, 13> steps{{{1000, u"m"},
                                                                                {900, u"cm"},
                                                                                {500, u"d"},
                                                                                {400, u"cd"},
                                                                                {100, u"c"},
                                                                                {90, u"xc"},
                                                                                {50, u"l"},
                                                                                {40, u"xl"},
                                                                                {10, u"x"},
                                                                                {9, u"ix"},
                                                                                {5, u"v"},
                                                                                {4, u"iv"},
                                                                                {1, u"i"}}};
    Units result;
    for (const auto& [worth, sign] : steps) {
        for (; value >= worth; value -= worth)
            result += sign;
    }
    for (char16_t& unit : result)
        unit = static_cast<char16_t>(isUpper ? unit - 0x20 : unit);
    return result;
}

/// Empty for what is no kind of marker. Letters and Roman numerals that do not exist are decimal.
Units markerOfKind(std::u16string_view kind, int item) {
    if (kind == u"disc")
        return u"\u2022";
    if (kind == u"circle")
        return u"\u25E6";
    if (kind == u"square")
        return u"\u25AA";
    if (kind == u"hyphen")
        return u"\u2043";
    if (kind == u"check")
        return u"\u2713";
    if (kind == u"box")
        return u"\u25A1";
    if (kind == u"diamond")
        return u"\u25C6";
    if (kind == u"octal")
        return number(item, 8);
    if (kind == u"lower-hexadecimal")
        return number(item, 16);
    if (kind == u"upper-hexadecimal")
        return number(item, 16, upperHexDigits);
    if (item > 0) {
        if (kind == u"lower-alpha")
            return letters(item, u"abcdefghijklmnopqrstuvwxyz");
        if (kind == u"upper-alpha")
            return letters(item, u"ABCDEFGHIJKLMNOPQRSTUVWXYZ");
        if (kind == u"lower-greek")
            return letters(item, u"\u03B1\u03B2\u03B3\u03B4\u03B5\u03B6\u03B7\u03B8\u03B9\u03BA\u03BB\u03BC"
                                 u"\u03BD\u03BE\u03BF\u03C0\u03C1\u03C3\u03C4\u03C5\u03C6\u03C7\u03C8\u03C9");
        // Numerals beyond this have no form without overlines.
        if ((kind == u"lower-roman" || kind == u"upper-roman") && item < 4000)
            return roman(item, kind == u"upper-roman");
    }
    for (const std::u16string_view numbered :
         {u"decimal", u"lower-alpha", u"upper-alpha", u"lower-greek", u"lower-roman", u"upper-roman"}) {
        if (kind == numbered)
            return number(item, 10);
    }
    return {};
}

} // namespace

const NSString& NSTextList::discFormat() {
    static const NSString format(u"{disc}");
    return format;
}

NSString NSTextList::markerForItemNumber(int itemNumber) const {
    const std::u16string_view format = markerFormat.characters();
    const std::size_t open = format.find(u'{');
    const std::size_t close = format.find(u'}', open == format.npos ? 0 : open);
    if (open == format.npos || close == format.npos)
        return markerFormat;
    const Units marker = markerOfKind(format.substr(open + 1, close - open - 1), itemNumber);
    if (marker.empty())
        return markerFormat;
    return NSString(Units(format.substr(0, open)) + marker + Units(format.substr(close + 1)));
}

} // namespace kelvo
