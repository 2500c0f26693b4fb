#include "platform/ledger/RecordText.h"

#include "platform/foundation/NSFileManager.h"

#include <algorithm>
#include <cstdint>

namespace kelvo::ledger {
namespace {

constexpr std::string_view mark = "\xE2\x80\xA6";
constexpr std::size_t longestPacked = 255;

bool goesOn(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

bool isLowSurrogate(char16_t unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

/// So many units are as many bytes at least. One more, so that the cut is seen.
NSString beginningOf(const NSString& text, std::size_t capacity) {
    return text.length() > capacity + 1 ? text.substringToIndex(capacity + 1) : text;
}

NSString endOf(const NSString& text, std::size_t capacity) {
    if (text.length() <= capacity + 2)
        return text;
    // Half a pair would be taken for a byte.
    const std::size_t begin = text.length() - capacity - 1;
    return text.substringFromIndex(begin - (isLowSurrogate(text.characterAtIndex(begin)) ? 1 : 0));
}

} // namespace

std::string cutToFit(std::string_view text, std::size_t capacity, KeptEnd kept) {
    if (text.size() <= capacity)
        return std::string(text);
    const std::size_t room = capacity - mark.size();
    // What is not UTF-8 may go on for ever.
    constexpr std::size_t longestRest = 3;
    if (kept == KeptEnd::end) {
        std::string_view end = text.substr(text.size() - room);
        for (std::size_t turn = 0; turn < longestRest && !end.empty() && goesOn(end.front()); ++turn)
            end.remove_prefix(1);
        return std::string(mark) + std::string(end);
    }
    std::size_t length = room;
    for (std::size_t turn = 0; turn < longestRest && length > 0 && goesOn(text[length]); ++turn)
        --length;
    return std::string(text.substr(0, length)) + std::string(mark);
}

std::string bytesOfText(const NSString& text, std::size_t capacity) {
    return cutToFit(beginningOf(text, capacity).UTF8String(), capacity, KeptEnd::beginning);
}

std::string bytesOfPath(const NSString& path, std::size_t capacity) {
    const NSString end = endOf(path, capacity);
    const auto bytes = NSFileManager::defaultManager().fileSystemRepresentationWithPath(end);
    return cutToFit(bytes ? *bytes : end.UTF8String(), capacity, KeptEnd::end);
}

std::string packedTexts(const std::vector<NSString>& texts, std::size_t capacity) {
    std::string packed;
    for (std::size_t index = 0; index < texts.size(); ++index) {
        const std::size_t share = (capacity - packed.size()) / (texts.size() - index);
        if (share < 8)
            break;
        const std::string bytes = bytesOfText(texts[index], std::min(share - 1, longestPacked));
        packed += static_cast<char>(static_cast<std::uint8_t>(bytes.size()));
        packed += bytes;
    }
    return packed;
}

std::vector<NSString> unpackedTexts(std::string_view packed) {
    std::vector<NSString> texts;
    while (!packed.empty()) {
        const std::size_t length = static_cast<std::uint8_t>(packed.front());
        packed.remove_prefix(1);
        if (length > packed.size())
            break;
        texts.push_back(NSString::stringByRepairingUTF8String(packed.substr(0, length)));
        packed.remove_prefix(length);
    }
    return texts;
}

} // namespace kelvo::ledger
