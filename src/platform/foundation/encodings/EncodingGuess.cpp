#include "platform/foundation/encodings/EncodingGuess.h"

#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/encodings/PlainTextReading.h"

#include <unicode/ucsdet.h>

#include <algorithm>
#include <memory>
#include <string_view>

namespace kelvo {
namespace {

constexpr std::size_t mostBytesShown = std::size_t{64} << 10;
/// Below that what follows what is chance.
constexpr std::ptrdiff_t leastForeignBytes = 8;
/// Out of 100, as the detector counts: right guesses from a line of text of 15 encodings had 20 to 100, wrong ones, and
/// seconds that were close, up to 19.
constexpr std::int32_t leastConfidence = 20;
constexpr std::int32_t leastLead = 4;
constexpr std::size_t mostBytesBeforeShift = 4096;

struct CloseDetector {
    void operator()(UCharsetDetector* detector) const { ucsdet_close(detector); }
};

struct Row {
    std::string_view name;
    CFStringEncoding encoding;
};

/// What the detector finds by its names. The encodings of Windows have what those of ISO have, but for control characters.
constexpr Row foundEncodings[] = {
    {"Shift_JIS", kCFStringEncodingDOSJapanese},        {"EUC-JP", kCFStringEncodingEUC_JP},
    {"ISO-2022-JP", kCFStringEncodingISO_2022_JP},      {"ISO-2022-KR", kCFStringEncodingISO_2022_KR},
    {"ISO-2022-CN", kCFStringEncodingISO_2022_CN},      {"GB18030", kCFStringEncodingGB18030},
    {"Big5", kCFStringEncodingDOSChineseTrad},          {"EUC-KR", kCFStringEncodingDOSKorean},
    {"windows-1251", kCFStringEncodingWindowsCyrillic}, {"KOI8-R", kCFStringEncodingKOI8_R},
    {"ISO-8859-5", kCFStringEncodingISOLatinCyrillic},  {"windows-1253", kCFStringEncodingWindowsGreek},
    {"ISO-8859-7", kCFStringEncodingISOLatinGreek},     {"windows-1255", kCFStringEncodingWindowsHebrew},
    {"ISO-8859-8", kCFStringEncodingWindowsHebrew},     {"ISO-8859-8-I", kCFStringEncodingWindowsHebrew},
    {"windows-1256", kCFStringEncodingWindowsArabic},   {"ISO-8859-6", kCFStringEncodingISOLatinArabic},
    {"windows-1250", kCFStringEncodingWindowsLatin2},   {"ISO-8859-2", kCFStringEncodingISOLatin2},
    {"windows-1254", kCFStringEncodingWindowsLatin5},   {"ISO-8859-9", kCFStringEncodingWindowsLatin5},
};

/// kCFStringEncodingInvalidId for Western text and in doubt.
CFStringEncoding guessedEncoding(std::string_view bytes) {
    bytes = bytes.substr(0, mostBytesShown);
    if (!mayBeShifted(bytes) &&
        std::ranges::count_if(bytes, [](char byte) { return byte < 0; }) < leastForeignBytes)
        return kCFStringEncodingInvalidId;
    UErrorCode error = U_ZERO_ERROR;
    const std::unique_ptr<UCharsetDetector, CloseDetector> detector(ucsdet_open(&error));
    ucsdet_setText(detector.get(), bytes.data(), static_cast<std::int32_t>(bytes.size()), &error);
    std::int32_t count = 0;
    const UCharsetMatch** const matches = ucsdet_detectAll(detector.get(), &count, &error);
    if (U_FAILURE(error) || count == 0)
        return kCFStringEncodingInvalidId;
    const std::int32_t confidence = ucsdet_getConfidence(matches[0], &error);
    const std::int32_t second = count > 1 ? ucsdet_getConfidence(matches[1], &error) : 0;
    const char* const name = ucsdet_getName(matches[0], &error);
    if (U_FAILURE(error) || confidence < leastConfidence || confidence - second < leastLead)
        return kCFStringEncodingInvalidId;
    const auto* const row = std::ranges::find(foundEncodings, std::string_view(name), &Row::name);
    return row == std::end(foundEncodings) ? kCFStringEncodingInvalidId : row->encoding;
}

} // namespace

bool mayBeShifted(std::string_view text) {
    return text.substr(0, mostBytesBeforeShift).find("\x1B$") != text.npos;
}

NSString stringWithTextOfAnyLanguage(const NSData& data, NSStringEncoding* encoding) {
    NSString text = stringWithPlainText(data, encoding);
    if (text.isNil())
        return text;
    const bool isUTF8 = *encoding == NSUTF8StringEncoding;
    const bool isLatin = *encoding == NSWindowsCP1252StringEncoding || *encoding == NSISOLatin1StringEncoding;
    if (!isLatin && !(isUTF8 && mayBeShifted(data.characters())))
        return text;
    const CFStringEncoding guessed = guessedEncoding(data.characters());
    if (guessed == kCFStringEncodingInvalidId)
        return text;
    const NSStringEncoding found = CFStringConvertEncodingToNSStringEncoding(guessed);
    // Some of the bytes may be damaged.
    NSString better = stringByRepairingData_encoding(data, found);
    if (better.isNil())
        return text;
    *encoding = found;
    return better;
}

} // namespace kelvo
