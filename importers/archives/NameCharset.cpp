#include "importers/archives/NameCharset.h"

#include "platform/foundation/NSData.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/units/ASCII.h"

#include <climits>
#include <cstddef>
#include <cstdint>

namespace kelvo::importers {
namespace {

constexpr int impossible = INT_MIN;

// Points for what two bytes are together. A byte of a common letter has ten.
constexpr int common = 20;
constexpr int kana = 40;
constexpr int rare = 5;

using PointsOfPair = int(std::uint8_t lead, std::uint8_t trail);

constexpr bool isIn(std::uint8_t byte, int first, int last) {
    return byte >= first && byte <= last;
}

int pointsInShiftJIS(std::uint8_t lead, std::uint8_t trail) {
    if (!isIn(trail, 0x40, 0xFC) || trail == 0x7F)
        return impossible;
    return isIn(lead, 0x82, 0x83) ? kana : isIn(lead, 0x88, 0x97) ? common : rare;
}

int pointsInGBK(std::uint8_t lead, std::uint8_t trail) {
    if (!isIn(lead, 0x81, 0xFE) || !isIn(trail, 0x40, 0xFE) || trail == 0x7F)
        return impossible;
    return isIn(lead, 0xB0, 0xD7) && trail >= 0xA1 ? common : rare;
}

int pointsInBig5(std::uint8_t lead, std::uint8_t trail) {
    if (!isIn(lead, 0xA1, 0xF9) || !(isIn(trail, 0x40, 0x7E) || isIn(trail, 0xA1, 0xFE)))
        return impossible;
    return isIn(lead, 0xA4, 0xC6) ? common - 1 : rare;
}

/// Syllables alone are likelier than Chinese that happens to keep to their rows.
int pointsInEUCKR(std::uint8_t lead, std::uint8_t trail) {
    if (!isIn(lead, 0xA1, 0xFE) || !isIn(trail, 0xA1, 0xFE))
        return impossible;
    return isIn(lead, 0xB0, 0xC8) ? common + 2 : -rare;
}

int pointsOfPairs(std::string_view bytes, PointsOfPair& pointsOfPair) {
    int points = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
        const auto lead = static_cast<std::uint8_t>(bytes[at]);
        if (lead < 0x80)
            continue;
        if (&pointsOfPair == &pointsInShiftJIS && isIn(lead, 0xA1, 0xDF)) {
            points -= common; // a narrow letter
            continue;
        }
        if (++at == bytes.size())
            return impossible;
        const int pair = pointsOfPair(lead, static_cast<std::uint8_t>(bytes[at]));
        if (pair == impossible)
            return impossible;
        points += pair;
    }
    return points;
}

/// Letters have their points within words of their own kind, and capitals at the beginning.
int pointsOfLetters(std::u16string_view text) {
    const auto isCapital = [](char16_t unit) { return (unit >= 0x410 && unit <= 0x42F) || unit == 0x401; };
    const auto isSmall = [](char16_t unit) { return (unit >= 0x430 && unit <= 0x44F) || unit == 0x451; };
    const auto isLatin = [](char16_t unit) {
        return (unit >= 0xC0 && unit <= 0x17F && unit != 0xD7 && unit != 0xF7);
    };
    int points = 0;
    char16_t previous = u' ';
    for (std::size_t at = 0; at < text.size(); previous = text[at++]) {
        const char16_t unit = text[at];
        const char16_t next = at + 1 < text.size() ? text[at + 1] : u' ';
        if (unit < 0x80)
            continue;
        if (unit == 0xFFFD || unit < 0xA0)
            return impossible;
        const bool isWithinLatin = isASCIILetter(previous) || isASCIILetter(next);
        const bool isGood = isSmall(unit)     ? !isWithinLatin
                            : isCapital(unit) ? !isWithinLatin && !isSmall(previous)
                                              : isLatin(unit) && isWithinLatin;
        points += isGood ? 10 : -10;
    }
    return points;
}

struct Page {
    CFStringEncoding encoding;
    PointsOfPair* points; ///< null for those of single bytes
};

/// The first of those with as many points counts.
constexpr Page pages[] = {{kCFStringEncodingWindowsLatin1, nullptr},
                          {kCFStringEncodingDOSLatinUS, nullptr},
                          {kCFStringEncodingDOSRussian, nullptr},
                          {kCFStringEncodingWindowsCyrillic, nullptr},
                          {kCFStringEncodingKOI8_R, nullptr},
                          {kCFStringEncodingGBK_95, pointsInGBK},
                          {kCFStringEncodingDOSJapanese, pointsInShiftJIS},
                          {kCFStringEncodingEUC_KR, pointsInEUCKR},
                          {kCFStringEncodingBig5, pointsInBig5}};

} // namespace

NSStringEncoding likelyEncodingOfNames(std::string_view bytes) {
    const NSData data = NSData::dataWithBytes(bytes);
    NSStringEncoding best = CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingDOSLatinUS);
    int mostPoints = impossible;
    for (const Page& page : pages) {
        const NSStringEncoding encoding = CFStringConvertEncodingToNSStringEncoding(page.encoding);
        const int points = page.points
                               ? pointsOfPairs(bytes, *page.points)
                               : pointsOfLetters(stringByRepairingData_encoding(data, encoding).characters());
        if (points > mostPoints) {
            mostPoints = points;
            best = encoding;
        }
    }
    return best;
}

} // namespace kelvo::importers
