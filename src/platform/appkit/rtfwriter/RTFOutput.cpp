#include "platform/appkit/rtfwriter/RTFOutput.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace kelvo {
namespace {

/// "\u65535?"
constexpr std::size_t maximumBytesPerUnit = 8;
constexpr std::size_t unitsPerChunk = 4096;

/// The characters of bytes 0x80 to 0x9F in code page 1252, by code point.
struct PageEntry {
    char16_t unit;
    unsigned char byte;
};
constexpr std::array<PageEntry, 27> upperPage{
    {{0x0152, 0x8C}, {0x0153, 0x9C}, {0x0160, 0x8A}, {0x0161, 0x9A}, {0x0178, 0x9F}, {0x017D, 0x8E},
     {0x017E, 0x9E}, {0x0192, 0x83}, {0x02C6, 0x88}, {0x02DC, 0x98}, {0x2013, 0x96}, {0x2014, 0x97},
     {0x2018, 0x91}, {0x2019, 0x92}, {0x201A, 0x82}, {0x201C, 0x93}, {0x201D, 0x94}, {0x201E, 0x84},
     {0x2020, 0x86}, {0x2021, 0x87}, {0x2022, 0x95}, {0x2026, 0x85}, {0x2030, 0x89}, {0x2039, 0x8B},
     {0x203A, 0x9B}, {0x20AC, 0x80}, {0x2122, 0x99}}};

/// 0 when the page has no such character.
unsigned char pageByte(char16_t unit) {
    if (unit >= 0xA0 && unit <= 0xFF)
        return static_cast<unsigned char>(unit);
    if (unit < upperPage.front().unit || unit > upperPage.back().unit)
        return 0;
    const auto found = std::ranges::lower_bound(upperPage, unit, {}, &PageEntry::unit);
    return found->unit == unit ? found->byte : 0;
}

constexpr bool isPlain(char16_t unit) {
    return (unit >= 0x20 && unit < 0x7F && unit != u'\\' && unit != u'{' && unit != u'}') || unit == u'\t';
}
constexpr auto plainUnits = [] {
    std::array<bool, 128> table{};
    for (std::size_t unit = 0; unit < table.size(); ++unit)
        table[unit] = isPlain(static_cast<char16_t>(unit));
    return table;
}();

char* appendBytes(char* end, std::string_view bytes) {
    return std::copy(bytes.begin(), bytes.end(), end);
}

char* appendHexByte(char* end, unsigned char byte) {
    *end++ = '\\';
    *end++ = '\'';
    *end++ = lowerHexDigits[byte >> 4];
    *end++ = lowerHexDigits[byte & 15];
    return end;
}

char* appendEscaped(char* end, char16_t unit) {
    if (unit == u'\\' || unit == u'{' || unit == u'}') {
        *end++ = '\\';
        *end++ = static_cast<char>(unit);
        return end;
    }
    if (const unsigned char byte = pageByte(unit))
        return appendHexByte(end, byte);
    end = appendBytes(end, "\\u");
    end = std::to_chars(end, end + 5, static_cast<unsigned>(unit)).ptr;
    // For readers that do not know the word, as all are told to expect unless \uc says otherwise.
    *end++ = '?';
    return end;
}

char* appendTextUnit(char* end, char16_t unit) {
    switch (unit) {
    case u'\n':
        return appendBytes(end, "\\\n");
    case u'\f':
        return appendBytes(end, "\\page ");
    case 0x2028:
        return appendBytes(end, "\\line ");
    default:
        return appendEscaped(end, unit);
    }
}

} // namespace

std::int32_t rtfNumber(double value, double factor, std::int32_t limit) {
    const double product = value * factor;
    if (std::isnan(product))
        return 0;
    return static_cast<std::int32_t>(
        std::lround(std::clamp(product, -static_cast<double>(limit), static_cast<double>(limit))));
}

std::int32_t rtfTwips(double points) {
    return rtfNumber(points, 20);
}

void RTFOutput::word(std::string_view name, std::int32_t parameter) {
    word(name);
    std::array<char, 12> digits;
    const char* const end = std::to_chars(digits.begin(), digits.end(), parameter).ptr;
    bytes_.append(digits.data(), static_cast<std::size_t>(end - digits.data()));
}

void RTFOutput::text(std::u16string_view units) {
    if (units.empty())
        return;
    delimit();
    std::array<char, unitsPerChunk * maximumBytesPerUnit> chunk;
    while (!units.empty()) {
        const std::size_t count = std::min(units.size(), unitsPerChunk);
        char* end = chunk.data();
        for (const char16_t unit : units.substr(0, count)) {
            if (unit < plainUnits.size() && plainUnits[unit])
                *end++ = static_cast<char>(unit);
            else
                end = appendTextUnit(end, unit);
        }
        bytes_.append(chunk.data(), static_cast<std::size_t>(end - chunk.data()));
        units.remove_prefix(count);
        if (bytes_.size() > maximumSizeInBytes)
            throw NSException(NSMallocException, u"The rich text would pass 2147483646 bytes.");
    }
}

void RTFOutput::string(std::u16string_view units) {
    delimit();
    for (const char16_t unit : units) {
        std::array<char, maximumBytesPerUnit> escaped;
        char* end = escaped.data();
        if (unit != u'\t' && isPlain(unit))
            *end++ = static_cast<char>(unit);
        else
            end = appendEscaped(end, unit);
        bytes_.append(escaped.data(), static_cast<std::size_t>(end - escaped.data()));
    }
}

void RTFOutput::fileName(std::string_view name) {
    delimit();
    for (const char character : name) {
        const auto byte = static_cast<unsigned char>(character);
        std::array<char, maximumBytesPerUnit> escaped;
        char* end = escaped.data();
        if (byte < 0x80 && isPlain(byte) && byte != '\t')
            *end++ = character;
        else if (byte == '\\' || byte == '{' || byte == '}')
            end = appendEscaped(end, byte);
        else
            end = appendHexByte(end, byte);
        bytes_.append(escaped.data(), static_cast<std::size_t>(end - escaped.data()));
    }
}

} // namespace kelvo
