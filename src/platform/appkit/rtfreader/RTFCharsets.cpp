#include "platform/appkit/rtfreader/RTFCharsets.h"

#include <algorithm>

namespace kelvo {
namespace {

template <typename Row>
auto valueOf(std::int32_t key, const Row& rows) {
    const auto row = std::ranges::find(rows, key, [](const auto& pair) { return pair.first; });
    return row == std::end(rows) ? std::begin(rows)->second : row->second;
}

// The first row answers for numbers that are not listed.
constexpr std::pair<std::int32_t, RTFCodePage> charsets[] = {
    {1, RTFDocumentCodePage},
    {0, 1252},
    {2, RTFOtherSignsCodePage},
    {77, 10000},
    {78, 10001},
    {79, 10003},
    {80, 10008},
    {81, 10002},
    {82, 1361},
    {83, 10005},
    {84, 10004},
    {85, 10006},
    {86, 10081},
    {87, 10021},
    {88, 10029},
    {89, 10007},
    {128, 932},
    {129, 949},
    {130, 1361},
    {134, 936},
    {136, 950},
    {161, 1253},
    {162, 1254},
    {163, 1258},
    {177, 1255},
    {178, 1256},
    {186, 1257},
    {204, 1251},
    {222, 874},
    {238, 1250},
    {254, 437},
    {255, 850},
};

// The signs of Wingdings that are characters of the first plane, and so of many fonts.
constexpr std::pair<int, char16_t> wingdings[] = {
    {0x22, 0x2702}, {0x23, 0x2701}, {0x29, 0x2706}, {0x36, 0x231B}, {0x3E, 0x2707}, {0x3F, 0x270D},
    {0x41, 0x270C}, {0x45, 0x261C}, {0x46, 0x261E}, {0x47, 0x261D}, {0x48, 0x261F}, {0x4A, 0x263A},
    {0x4C, 0x2639}, {0x4E, 0x2620}, {0x51, 0x2708}, {0x52, 0x263C}, {0x54, 0x2744}, {0x58, 0x2720},
    {0x59, 0x2721}, {0x5A, 0x262A}, {0x5B, 0x262F}, {0x5D, 0x2638}, {0x78, 0x2327}, {0x7A, 0x2318},
    {0xAB, 0x2605}, {0x6C, 0x25CF}, {0x6E, 0x25A0}, {0x6F, 0x25A1}, {0x71, 0x2751}, {0x72, 0x2752},
    {0x75, 0x25C6}, {0x76, 0x2756}, {0x9E, 0x00B7}, {0x9F, 0x2022}, {0xA1, 0x25CB}, {0xA7, 0x25AA},
    {0xA8, 0x25FB}, {0xD8, 0x27A2}, {0xDF, 0x2190}, {0xE0, 0x2192}, {0xE1, 0x2191}, {0xE2, 0x2193},
    {0xE8, 0x2794}, {0xF0, 0x21E8}, {0xFB, 0x2717}, {0xFC, 0x2713}, {0xFD, 0x2612}, {0xFE, 0x2611},
};

/// Where fonts of signs keep theirs.
constexpr char16_t firstSign = 0xF000;

CFStringEncoding encodingOf(RTFCodePage page) {
    const CFStringEncoding encoding = CFStringConvertWindowsCodepageToEncoding(page);
    return CFStringIsEncodingAvailable(encoding) ? encoding : kCFStringEncodingWindowsLatin1;
}

constexpr bool isMultiByte(RTFCodePage page) {
    switch (page) {
    case 932:
    case 936:
    case 949:
    case 950:
    case 1361:
    case 10001:
    case 10002:
    case 10003:
    case 10008:
    case 51932:
    case 51949:
    case 54936:
    case 65001:
        return true;
    default:
        return false;
    }
}

} // namespace

RTFCodePage rtfCodePageOfCharset(std::int32_t charset) {
    return valueOf(charset, charsets);
}

RTFCharsets::Page RTFCharsets::makePage(RTFCodePage number) {
    Page page;
    if (number < 0) {
        page.units.fill(0);
        for (int byte = 0; byte < 256; ++byte)
            page.units[byte] = static_cast<char16_t>(byte < 0x80 ? byte : firstSign + byte);
        if (number == RTFWingdingsCodePage) {
            // A letter is none of its signs.
            for (int byte = 0x21; byte < 0x80; ++byte)
                page.units[byte] = static_cast<char16_t>(firstSign + byte);
            for (const auto& [byte, unit] : wingdings)
                page.units[byte] = unit;
            for (int sign = 0; sign < 12; ++sign)
                page.units[0x5E + sign] = static_cast<char16_t>(0x2648 + sign); // The zodiac.
            for (int digit = 0; digit < 10; ++digit) {
                page.units[0x81 + digit] = static_cast<char16_t>(0x2460 + digit);
                page.units[0x8C + digit] = static_cast<char16_t>(0x2776 + digit);
            }
        }
    }
    if (number < 0 && number != RTFSymbolCodePage)
        return page;
    page.codec = makeTextCodec(number < 0 ? kCFStringEncodingMacSymbol : encodingOf(number));
    if (isMultiByte(number)) {
        page.isSingleByte = false;
        return page;
    }
    for (int byte = 0; byte < 256; ++byte) {
        const std::uint8_t source[] = {static_cast<std::uint8_t>(byte)};
        char16_t units[8];
        page.codec->reset();
        const TextCodec::Progress progress = page.codec->decode(source, units, std::size(units));
        // The few bytes that are two characters go through the codec, except where the second is a mere tag
        // for a variant of a sign.
        if (progress.unitsWritten != 1 && number > 0)
            page.isSingleByte = false;
        else if (!progress.hadErrors || number > 0)
            page.units[byte] = units[0];
    }
    return page;
}

RTFCharsets::Page& RTFCharsets::pageOf(RTFCodePage number) {
    if (current_ && number == currentNumber_)
        return *current_;
    // All numbers that are not known are one page, so that their number is bounded.
    const bool isKnown =
        number < 0 || CFStringConvertWindowsCodepageToEncoding(number) != kCFStringEncodingInvalidId;
    const RTFCodePage key = isKnown ? number : 1252;
    auto found = pages_.find(key);
    if (found == pages_.end())
        found = pages_.emplace(key, makePage(key)).first;
    currentNumber_ = number;
    current_ = &found->second;
    return *current_;
}

void RTFCharsets::decode(std::string_view bytes, RTFCodePage number, std::u16string& units) {
    Page& page = pageOf(number);
    const std::size_t start = units.size();
    if (page.isSingleByte) {
        units.resize(start + bytes.size());
        std::ranges::transform(bytes, units.begin() + static_cast<std::ptrdiff_t>(start),
                               [&](char byte) { return page.units[static_cast<unsigned char>(byte)]; });
        return;
    }
    page.codec->reset();
    std::span<const std::uint8_t> rest(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    std::size_t length = start;
    for (;;) {
        units.resize(length + rest.size() * page.codec->mostUnitsPerByte() + 8);
        const TextCodec::Progress progress =
            page.codec->decode(rest, units.data() + length, units.size() - length);
        length += progress.unitsWritten;
        rest = rest.subspan(progress.bytesRead);
        if (!progress.isOutputFull)
            break;
    }
    units.resize(length);
}

char16_t RTFCharsets::unitOfSign(char16_t unit, RTFCodePage page) {
    if (page >= 0 || unit < firstSign + 0x20 || unit > firstSign + 0xFF)
        return unit;
    const char16_t sign = pageOf(page).units[unit - firstSign];
    return page == RTFSymbolCodePage || sign >= 0x80 ? sign : unit;
}

} // namespace kelvo
