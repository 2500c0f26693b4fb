#include "text/Base64Text.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/encodings/NSStringEncoding.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvo {

namespace {

constexpr std::u16string_view alphabet = u"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char16_t padding = u'=';
constexpr std::uint8_t notInAlphabet = 64;

constexpr auto valueOfUnit = [] {
    std::array<std::uint8_t, 128> values{};
    values.fill(notInAlphabet);
    for (std::size_t value = 0; value < alphabet.size(); ++value)
        values[alphabet[value]] = static_cast<std::uint8_t>(value);
    return values;
}();

bool isWhite(char16_t unit) {
    return unit == u' ' || unit == u'\t' || unit == u'\n' || unit == u'\r';
}

std::optional<std::vector<std::uint8_t>> decoded(std::u16string_view base64) {
    std::vector<std::uint8_t> bytes;
    bytes.reserve(base64.size() / 4 * 3 + 3);
    std::uint32_t bits = 0;
    unsigned units = 0, paddings = 0;
    for (const char16_t unit : base64) {
        if (isWhite(unit))
            continue;
        const std::uint8_t value = unit < valueOfUnit.size() ? valueOfUnit[unit] : notInAlphabet;
        if (unit == padding) {
            // Two units of a group of four must come first, and nothing but padding may follow.
            if (units < 2 || units + paddings == 4)
                return std::nullopt;
            ++paddings;
            continue;
        }
        if (value == notInAlphabet || paddings != 0)
            return std::nullopt;
        bits = bits << 6 | value;
        if (++units < 4)
            continue;
        for (const int shift : {16, 8, 0})
            bytes.push_back(static_cast<std::uint8_t>(bits >> shift));
        units = bits = 0;
    }
    if (units == 0 && paddings == 0)
        return bytes;
    const unsigned unusedBits = units == 2 ? 4 : 2;
    if (units + paddings != 4 || (bits & ((1u << unusedBits) - 1)) != 0)
        return std::nullopt;
    bits >>= unusedBits;
    if (units == 3)
        bytes.push_back(static_cast<std::uint8_t>(bits >> 8));
    bytes.push_back(static_cast<std::uint8_t>(bits));
    return bytes;
}

} // namespace

NSString encodebase64(const NSString& text) {
    if (text.isEmpty())
        return text;
    try {
        return dataUsingEncoding(text, NSUTF8StringEncoding).base64EncodedString();
    } catch (const NSException&) {
        return nullptr;
    }
}

NSString decodebase64UsingEncoding(const NSString& base64, NSStringEncoding encoding) {
    if (base64.isEmpty())
        return base64;
    try {
        auto bytes = decoded(base64);
        return bytes ? stringWithData_encoding(NSData::dataWithBytesNoCopy(std::move(*bytes)), encoding)
                     : NSString();
    } catch (const NSException&) {
        return nullptr;
    }
}

NSString decodebase64(const NSString& base64) {
    return decodebase64UsingEncoding(base64, NSUTF8StringEncoding);
}

} // namespace kelvo
