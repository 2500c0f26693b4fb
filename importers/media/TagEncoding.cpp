#include "importers/media/TagEncoding.h"

#include "platform/foundation/encodings/NSStringEncoding.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace kelvo::importers {
namespace {

/// More does not make the judgement any better.
constexpr std::size_t mostBytesJudged = 8192;

bool isPastASCII(char byte) {
    return (byte & '\x80') != 0;
}

bool isASCII(std::string_view text) {
    return std::ranges::none_of(text, isPastASCII);
}

/// The bytes that stood in the file; absent for what is Unicode with certainty.
std::optional<std::string> bytesInFile(std::string_view tag) {
    const NSString text = NSString::stringWithUTF8String(tag);
    if (text.isNil())
        return std::string(tag);
    std::string bytes;
    for (const char16_t unit : text.characters()) {
        if (unit > 0xFF)
            return std::nullopt;
        bytes += static_cast<char>(unit);
    }
    return bytes;
}

NSString decoded(const std::string& bytes, NSStringEncoding encoding) {
    return stringByRepairingData_encoding(NSData::dataWithBytes(bytes), encoding);
}

/// Languages of Latin letters have few others among these; in all the others most of a word is past ASCII.
bool isWestern(std::string_view bytes) {
    std::size_t alone = 0;
    std::size_t together = 0;
    for (std::size_t place = 0; place < bytes.size();) {
        std::size_t end = place;
        while (end < bytes.size() && isPastASCII(bytes[end]))
            ++end;
        (end - place > 1 ? together : alone) += end - place;
        place = end + 1;
    }
    return together <= alone;
}

/// Old tags have so many bytes, whatever character that divides.
bool isCutAt(std::u16string_view text, std::size_t place) {
    return text[place] == u'\uFFFD' && (place + 1 == text.size() || text[place + 1] == u'\n');
}

/// Of the characters of a text past ASCII those that are of a kind.
template <typename Predicate>
double share(const NSString& text, const Predicate& isOfKind) {
    std::size_t all = 0;
    std::size_t found = 0;
    const std::u16string_view units = text.characters();
    for (std::size_t place = 0; place < units.size(); ++place) {
        if (units[place] < 0x80 || isCutAt(units, place))
            continue;
        ++all;
        found += isOfKind(units[place]) ? 1 : 0;
    }
    return all == 0 ? 0 : static_cast<double>(found) / static_cast<double>(all);
}

bool isIdeograph(char16_t unit) {
    return unit >= 0x4E00 && unit <= 0x9FFF;
}
bool isHangul(char16_t unit) {
    return unit >= 0xAC00 && unit <= 0xD7A3;
}
bool isJapanese(char16_t unit) {
    return (unit >= 0x3000 && unit <= 0x30FF) || isIdeograph(unit) || (unit >= 0xFF00 && unit <= 0xFF5E);
}
bool isCyrillic(char16_t unit) {
    return unit >= 0x0400 && unit <= 0x045F;
}
/// The most frequent letters, two thirds of all, small as most are.
bool isCommonCyrillic(char16_t unit) {
    return std::u16string_view(u"оеаинтсрвл").find(unit) != std::u16string_view::npos;
}

/// Of the pairs of bytes past ASCII, those whose first byte is one of the given ones: in the tables of China and Taiwan
/// the common characters come first.
double shareOfLeads(std::string_view bytes, unsigned char first, unsigned char last) {
    std::size_t all = 0;
    std::size_t found = 0;
    for (std::size_t place = 0; place + 1 < bytes.size(); ++place) {
        if (!isPastASCII(bytes[place]))
            continue;
        const auto lead = static_cast<unsigned char>(bytes[place++]);
        ++all;
        found += lead >= first && lead <= last ? 1 : 0;
    }
    return all == 0 ? 0 : static_cast<double>(found) / static_cast<double>(all);
}

std::optional<NSStringEncoding> cyrillicEncoding(const std::string& bytes) {
    const NSStringEncoding koi8 = CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingKOI8_R);
    const auto commonIn = [&](NSStringEncoding encoding) {
        const NSString text = decoded(bytes, encoding);
        // What stands between words may be past ASCII too.
        return share(text, isCyrillic) < 0.9 ? 0 : share(text, isCommonCyrillic);
    };
    constexpr double least = 0.4;
    const double inWindows = commonIn(NSWindowsCP1251StringEncoding);
    const double inKOI8 = commonIn(koi8);
    if (std::max(inWindows, inKOI8) < least)
        return std::nullopt;
    return inWindows >= inKOI8 ? NSWindowsCP1251StringEncoding : koi8;
}

} // namespace

void TagEncoding::add(std::string_view tag) {
    if (isASCII(tag) || bytes_.size() > mostBytesJudged)
        return;
    if (const auto bytes = bytesInFile(tag.substr(0, mostBytesJudged)))
        bytes_ += *bytes + '\n';
}

NSStringEncoding TagEncoding::judged() const {
    if (!NSString::stringWithUTF8String(bytes_).isNil())
        return NSUTF8StringEncoding;
    if (isWestern(bytes_))
        return NSWindowsCP1252StringEncoding;
    constexpr double most = 0.9;
    if (share(decoded(bytes_, NSShiftJISStringEncoding), isJapanese) >= most)
        return NSShiftJISStringEncoding;
    if (const auto cyrillic = cyrillicEncoding(bytes_))
        return *cyrillic;
    const NSStringEncoding korean = CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingDOSKorean);
    if (share(decoded(bytes_, korean), isHangul) >= most)
        return korean;
    const NSStringEncoding chinese = CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingGB18030);
    const NSStringEncoding taiwanese = CFStringConvertEncodingToNSStringEncoding(kCFStringEncodingBig5);
    constexpr double mostLeads = 0.8;
    if (share(decoded(bytes_, chinese), isIdeograph) >= most && shareOfLeads(bytes_, 0xB0, 0xD7) >= mostLeads)
        return chinese;
    if (share(decoded(bytes_, taiwanese), isIdeograph) >= most &&
        shareOfLeads(bytes_, 0xA4, 0xC6) >= mostLeads)
        return taiwanese;
    return NSWindowsCP1252StringEncoding;
}

NSString TagEncoding::textOf(std::string_view tag) const {
    const auto bytes = isASCII(tag) ? std::nullopt : bytesInFile(tag);
    if (!bytes)
        return NSString::stringByRepairingUTF8String(tag);
    if (encoding_ == kCFStringEncodingInvalidId)
        encoding_ = judged();
    return decoded(*bytes, encoding_);
}

} // namespace kelvo::importers
