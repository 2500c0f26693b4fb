#include "platform/foundation/encodings/NSStringNumbers.h"

#include "platform/foundation/encodings/NSCharacterSet.h"
#include "platform/foundation/units/ASCII.h"

#include <cstdlib>
#include <limits>
#include <string>
#include <type_traits>

#include <locale.h>

namespace kelvo {

namespace {

std::u16string_view withoutWhiteSpace(std::u16string_view text) {
    const NSCharacterSet& white = NSCharacterSet::whitespaceAndNewlineCharacterSet();
    std::size_t index = 0;
    while (index < text.size() && white.characterIsMember(text[index]))
        ++index;
    return text.substr(index);
}

template <typename Integer>
Integer integerValue(std::u16string_view text) {
    using Magnitude = std::make_unsigned_t<Integer>;
    text = withoutWhiteSpace(text);
    const bool isNegative = text.starts_with(u'-');
    const Magnitude limit = static_cast<Magnitude>(std::numeric_limits<Integer>::max()) + isNegative;
    Magnitude magnitude = 0;
    for (std::size_t index = isNegative || text.starts_with(u'+') ? 1 : 0;
         index < text.size() && isASCIIDigit(text[index]); ++index) {
        const auto digit = static_cast<Magnitude>(text[index] - u'0');
        if (magnitude > (limit - digit) / 10) {
            magnitude = limit;
            break;
        }
        magnitude = magnitude * 10 + digit;
    }
    return static_cast<Integer>(isNegative ? Magnitude{0} - magnitude : magnitude);
}

} // namespace

std::int32_t intValue(std::u16string_view text) {
    return integerValue<std::int32_t>(text);
}

std::int64_t longLongValue(std::u16string_view text) {
    return integerValue<std::int64_t>(text);
}

double doubleValue(std::u16string_view text) {
    // Only what makes up decimal numbers: the library knows hexadecimal ones, "inf" and "nan" as well.
    text = withoutWhiteSpace(text);
    text = text.substr(0, text.find_first_not_of(u"0123456789.eE+-"));
    const std::string number(text.begin(), text.end());
    static const locale_t plainLocale = ::newlocale(LC_ALL_MASK, "C", nullptr);
    return ::strtod_l(number.c_str(), nullptr, plainLocale);
}

} // namespace kelvo
