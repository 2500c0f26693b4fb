#include "Input.h"
#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/encodings/EncodingTable.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "platform/foundation/encodings/TextEncodingConverter.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <span>
#include <string>

using namespace kelvo;

namespace {

std::string convert(TextEncoding source, TextEncoding destination, std::span<const std::uint8_t> input,
                    std::size_t room) {
    TECObjectRef converter = nullptr;
    std::string result;
    if (TECCreateConverter(&converter, source, destination) != noErr)
        return result;
    const std::unique_ptr<std::uint8_t[]> output(new std::uint8_t[room]);
    for (OSStatus status = kTECOutputBufferFullStatus; status != noErr;) {
        std::size_t read = 0;
        std::size_t written = 0;
        status = TECConvertText(converter, input.data(), input.size(), &read, output.get(), room, &written);
        require(status == noErr || (status == kTECOutputBufferFullStatus && read + written > 0));
        require(read <= input.size() && written <= room);
        result.append(reinterpret_cast<const char*>(output.get()), written);
        input = input.subspan(read);
    }
    require(input.empty());
    TECDisposeConverter(converter);
    return result;
}

} // namespace

// The first byte chooses the encoding, the second the room for the output; the rest is the text.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > 4096)
        return 0;
    const auto table = encodingTable();
    const EncodingRow& row = table[data[0] % table.size()];
    const std::size_t room = 16 + data[1] % 48;
    const std::span<const std::uint8_t> text(data + 2, size - 2);
    for (TextEncoding destination : {kCFStringEncodingUTF16, kCFStringEncodingUTF8, row.encoding})
        require(convert(row.encoding, destination, text, room) ==
                convert(row.encoding, destination, text, text.size() * 16 + 64));

    const NSStringEncoding encoding = CFStringConvertEncodingToNSStringEncoding(row.encoding);
    const NSString string =
        stringWithData_encoding(NSData::dataWithBytes(text.data(), text.size()),
                                encoding == NSShiftJISStringEncoding ? 0x80000000 | row.encoding : encoding);
    std::u16string units(text.size() / 2, u'\0');
    if (!units.empty())
        std::memcpy(units.data(), text.data(), units.size() * 2);
    for (const NSString& sample : {string, NSString(units)}) {
        dataUsingEncoding_allowLossyConversion(sample, encoding, true);
        const NSData bytes = dataUsingEncoding(sample, NSUTF8StringEncoding);
        if (!bytes.isNil() && !sample.characters().starts_with(u'\uFEFF'))
            require(stringWithData_encoding(bytes, NSUTF8StringEncoding) == sample);
        for (auto form : {CFStringNormalizationForm::D, CFStringNormalizationForm::KD,
                          CFStringNormalizationForm::C, CFStringNormalizationForm::KC}) {
            NSMutableString normalized(sample);
            CFStringNormalize(normalized, form);
            require(CFStringIsNormalized(normalized, form));
            require(CFStringIsNormalized(sample, form) == (normalized.characters() == sample.characters()));
        }
        for (auto* operation :
             {CFStringUppercase, CFStringLowercase, CFStringCapitalize, CFStringTrimWhitespace}) {
            NSMutableString changed(sample);
            operation(changed);
        }
        NSMutableString folded(sample);
        CFStringFold(folded, kCFCompareCaseInsensitive | kCFCompareDiacriticInsensitive);
    }
    return 0;
}
