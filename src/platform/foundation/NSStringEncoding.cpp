#include "platform/foundation/NSStringEncoding.h"

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/TextCodec.h"

#include <utility>

namespace kelvo {

namespace {

constexpr std::uint8_t markOfUTF8[] = {0xEF, 0xBB, 0xBF};

std::span<const std::uint8_t> withoutUTF8Mark(std::span<const std::uint8_t> bytes) {
    const bool isMarked = bytes.size() >= 3 && bytes[0] == markOfUTF8[0] && bytes[1] == markOfUTF8[1] &&
                          bytes[2] == markOfUTF8[2];
    return bytes.subspan(isMarked ? 3 : 0);
}

} // namespace

NSString stringWithData_encoding(const NSData& data, NSStringEncoding encoding) {
    const CFStringEncoding number = CFStringConvertNSStringEncodingToEncoding(encoding);
    const auto codec = data.isNil() ? nullptr : makeTextCodec(number);
    if (!codec)
        return nullptr;
    std::span<const std::uint8_t> bytes = data.bytes();
    if (number == kCFStringEncodingUTF8)
        bytes = withoutUTF8Mark(bytes);
    // Most encodings take more bytes than units, so one pass is enough for nearly all texts.
    NSMutableString text = NSMutableString::stringWithCapacity(bytes.size() + 1);
    for (std::size_t length = 0;;) {
        const TextCodec::Progress progress =
            codec->decode(bytes, text.mutableCharacters() + length, text.capacity() - length);
        if (progress.hadErrors)
            return nullptr;
        length += progress.unitsWritten;
        text.setLength(length);
        if (!progress.isOutputFull)
            return text.takeString();
        bytes = bytes.subspan(progress.bytesRead);
        text.reserve(text.capacity() + bytes.size() * codec->mostUnitsPerByte() + 32);
    }
}

NSData dataUsingEncoding(const NSString& string, NSStringEncoding encoding) {
    return dataUsingEncoding_allowLossyConversion(string, encoding, false);
}

NSData dataUsingEncoding_allowLossyConversion(const NSString& string, NSStringEncoding encoding,
                                              bool allowsLossyConversion) {
    const auto codec =
        string.isNil() ? nullptr : makeTextCodec(CFStringConvertNSStringEncodingToEncoding(encoding));
    if (!codec)
        return nullptr;
    std::string bytes(codec->preamble());
    if (allowsLossyConversion)
        encodeLossily(*codec, string, bytes, true);
    else if (codec->encode(string, bytes, true) != string.length())
        return nullptr;
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

} // namespace kelvo
