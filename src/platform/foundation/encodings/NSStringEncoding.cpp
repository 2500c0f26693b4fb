#include "platform/foundation/encodings/NSStringEncoding.h"

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/encodings/TextCodec.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelvo {

namespace {

using namespace std::string_view_literals;

struct Mark {
    std::string_view bytes;
    NSStringEncoding encoding;
    std::size_t unitInBytes;
};

// UTF-32 before UTF-16, whose mark begins like it.
constexpr std::array marks{
    Mark{"\xEF\xBB\xBF"sv, NSUTF8StringEncoding, 1},  Mark{"\xFF\xFE\0\0"sv, NSUTF32StringEncoding, 4},
    Mark{"\0\0\xFE\xFF"sv, NSUTF32StringEncoding, 4}, Mark{"\xFF\xFE"sv, NSUnicodeStringEncoding, 2},
    Mark{"\xFE\xFF"sv, NSUnicodeStringEncoding, 2},
};

enum class Invalid : bool { refused, repaired };

NSString decoded(const NSData& data, NSStringEncoding encoding, Invalid invalid) {
    const CFStringEncoding number = CFStringConvertNSStringEncodingToEncoding(encoding);
    const auto codec = data.isNil() ? nullptr : makeTextCodec(number);
    if (!codec)
        return nullptr;
    std::span<const std::uint8_t> bytes = data.bytes();
    if (number == kCFStringEncodingUTF8 && data.characters().starts_with(marks[0].bytes))
        bytes = bytes.subspan(marks[0].bytes.size());
    // Most encodings take more bytes than units, so one pass is enough for nearly all texts.
    NSMutableString text = NSMutableString::stringWithCapacity(bytes.size() + 1);
    for (std::size_t length = 0;;) {
        const TextCodec::Progress progress =
            codec->decode(bytes, text.mutableCharacters() + length, text.capacity() - length);
        if (progress.hadErrors && invalid == Invalid::refused)
            return nullptr;
        length += progress.unitsWritten;
        text.setLength(length);
        if (!progress.isOutputFull)
            return text.takeString();
        bytes = bytes.subspan(progress.bytesRead);
        text.reserve(text.capacity() + bytes.size() * codec->mostUnitsPerByte() + 32);
    }
}

} // namespace

NSString stringWithData_encoding(const NSData& data, NSStringEncoding encoding) {
    return decoded(data, encoding, Invalid::refused);
}

NSString stringByRepairingData_encoding(const NSData& data, NSStringEncoding encoding) {
    return decoded(data, encoding, Invalid::repaired);
}

NSStringEncoding encodingOfByteOrderMark(std::string_view bytes) {
    const auto* mark = std::ranges::find_if(
        marks, [bytes](const Mark& candidate) { return bytes.starts_with(candidate.bytes); });
    return mark == marks.end() ? kCFStringEncodingInvalidId : mark->encoding;
}

NSString stringWithMarkedData(const NSData& data, NSStringEncoding* encoding) {
    for (const Mark& mark : marks) {
        if (!data.characters().starts_with(mark.bytes))
            continue;
        // A file that was cut off ends within a unit.
        const std::size_t wholeUnits = data.length() - data.length() % mark.unitInBytes;
        const Invalid invalid = mark.unitInBytes == 4 ? Invalid::refused : Invalid::repaired;
        NSString text = decoded(data.subdataWithRange({0, wholeUnits}), mark.encoding, invalid);
        if (text.isNil())
            continue;
        if (encoding)
            *encoding = mark.encoding;
        return text;
    }
    return nullptr;
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
