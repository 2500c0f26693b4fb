#include "text/LineScan.h"

#include "platform/foundation/UnitScan.h"

#include <array>
#include <cstdint>

namespace kelvo {

namespace {

constexpr auto lineEnds = [] {
    std::array<std::uint8_t, 8192> bitmap{};
    for (const char16_t unit : {u'\n', u'\f', u'\r', u'\u2028', u'\u2029', u'\u0003', u'\uFFFC'})
        bitmap[unit >> 3] = static_cast<std::uint8_t>(bitmap[unit >> 3] | 1u << (unit & 7));
    return bitmap;
}();

} // namespace

LineSpan lineFrom(std::u16string_view text, std::size_t start) {
    const std::u16string_view rest = text.substr(start);
    const std::size_t length = firstUnitInBitmap(rest.data(), rest.size(), lineEnds.data());
    const std::u16string_view ending = rest.substr(length, rest.substr(length).starts_with(u"\r\n") ? 2 : 1);
    return {rest.substr(0, length), ending, start + length + ending.size()};
}

} // namespace kelvo
