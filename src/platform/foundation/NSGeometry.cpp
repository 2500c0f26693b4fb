#include "platform/foundation/NSGeometry.h"

#include <array>
#include <charconv>
#include <cmath>
#include <string>

namespace kelvo {
namespace {

void appendNumber(std::string& text, float number) {
    // The longest is minus the smallest normal number: a sign, "0.", and digits down to the 46th place.
    std::array<char, 80> digits;
    if (std::isnan(number))
        number = std::fabs(number);
    const auto written =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed);
    text.append(digits.data(), written.ptr);
}

} // namespace

NSString NSStringFromSize(NSSize size) {
    std::string text = "{";
    appendNumber(text, size.width);
    text += ", ";
    appendNumber(text, size.height);
    text += '}';
    return NSString::stringWithLatin1Bytes(text);
}

NSSize NSSizeFromString(const NSString& string) {
    const std::string text = string.UTF8String();
    const char* const end = text.data() + text.size();
    NSSize size;
    const auto read = [end](const char* place, const char* before, const char* after, float& number) {
        for (; *before; ++before, ++place) {
            if (place == end || *place != *before)
                return end;
        }
        const auto [stop, error] = std::from_chars(place, end, number);
        return error == std::errc() && stop != end && *stop == *after ? stop : end;
    };
    const char* const comma = read(text.data(), "{", ",", size.width);
    if (comma == end || read(comma, ", ", "}", size.height) != end - 1)
        return {};
    return size;
}

} // namespace kelvo
