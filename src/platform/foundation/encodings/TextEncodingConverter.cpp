#include "platform/foundation/encodings/TextEncodingConverter.h"

#include "platform/foundation/encodings/TextCodec.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <utility>

namespace kelvo {

namespace {

CFStringEncoding unitsOfThisMachine() {
    const std::uint16_t one = 1;
    std::uint8_t low = 0;
    std::memcpy(&low, &one, 1);
    return low == 1 ? kCFStringEncodingUTF16LE : kCFStringEncodingUTF16BE;
}

// How many units of a decoded piece go to the encoder at once when there may not be room for all of them.
std::size_t lengthOfFirstCharacter(std::u16string_view units) {
    const bool isPair = units.size() > 1 && (units[0] & 0xFC00) == 0xD800 && (units[1] & 0xFC00) == 0xDC00;
    return isPair ? 2 : 1;
}

} // namespace

class TECConverter {
public:
    // No encoding writes more bytes for one unit, escape sequences included.
    static constexpr std::size_t mostBytesPerUnit = 16;

    TECConverter(std::unique_ptr<TextCodec> decoder, std::unique_ptr<TextCodec> encoder)
        : decoder_(std::move(decoder)), encoder_(std::move(encoder)) {}

    void clear() {
        decoder_->reset();
        if (encoder_)
            encoder_->reset();
        units_.clear();
        bytes_.clear();
        isDecoded_ = isEncoded_ = false;
    }

    OSStatus convert(std::span<const std::uint8_t> input, std::size_t& read, std::span<std::uint8_t> output,
                     std::size_t& written) {
        return encoder_ ? convertThroughUnits(input, read, output, written)
                        : convertToUnits(input, read, output, written);
    }

private:
    OSStatus convertToUnits(std::span<const std::uint8_t> input, std::size_t& read,
                            std::span<std::uint8_t> output, std::size_t& written) {
        const std::size_t capacity = output.size() / sizeof(char16_t);
        TextCodec::Progress progress;
        if (reinterpret_cast<std::uintptr_t>(output.data()) % alignof(char16_t) == 0) {
            progress = decoder_->decode(input, reinterpret_cast<char16_t*>(output.data()), capacity);
        } else {
            std::u16string units(std::min(capacity, input.size() * decoder_->mostUnitsPerByte() + 64), u'\0');
            progress = decoder_->decode(input, units.data(), units.size());
            std::memcpy(output.data(), units.data(), progress.unitsWritten * sizeof(char16_t));
        }
        read = progress.bytesRead;
        written = progress.unitsWritten * sizeof(char16_t);
        if (progress.isOutputFull)
            return kTECOutputBufferFullStatus;
        clear();
        return noErr;
    }

    OSStatus convertThroughUnits(std::span<const std::uint8_t> input, std::size_t& read,
                                 std::span<std::uint8_t> output, std::size_t& written) {
        for (;;) {
            const auto room = [&] { return output.size() - written; };
            if (bytes_.size() > room())
                return kTECOutputBufferFullStatus;
            if (!bytes_.empty())
                std::memcpy(output.data() + written, bytes_.data(), bytes_.size());
            written += bytes_.size();
            bytes_.clear();
            if (!units_.empty()) {
                std::u16string_view next(units_);
                if (next.size() * mostBytesPerUnit > room())
                    next = next.substr(0, lengthOfFirstCharacter(next));
                encodeLossily(*encoder_, next, bytes_, false);
                units_.erase(0, next.size());
                continue;
            }
            if (isDecoded_) {
                if (isEncoded_)
                    break;
                encoder_->encode({}, bytes_, true);
                isEncoded_ = true;
                continue;
            }
            char16_t piece[1024];
            // The last piece before the room ends is short, as its rest has to be moved up for each
            // character.
            const std::size_t length =
                std::clamp<std::size_t>(room() / mostBytesPerUnit, 16, std::size(piece));
            const TextCodec::Progress progress = decoder_->decode(input.subspan(read), piece, length);
            read += progress.bytesRead;
            units_.assign(piece, progress.unitsWritten);
            isDecoded_ = !progress.isOutputFull;
        }
        clear();
        return noErr;
    }

    std::unique_ptr<TextCodec> decoder_;
    std::unique_ptr<TextCodec> encoder_; // null when the destination is 16-bit units
    std::u16string units_;               // decoded and not encoded yet
    std::string bytes_;                  // encoded and not written yet
    bool isDecoded_ = false;
    bool isEncoded_ = false;
};

TextEncoding CreateTextEncoding(std::uint32_t base, std::uint32_t variant, std::uint32_t format) {
    return (base & 0xFFFF) | (variant & 0x3FF) << 16 | (format & 0xF) << 26;
}

OSStatus TECCreateConverter(TECObjectRef* converter, TextEncoding source, TextEncoding destination) {
    if (!converter)
        return paramErr;
    *converter = nullptr;
    const bool givesUnits = destination == kCFStringEncodingUTF16;
    if (source == kCFStringEncodingUTF16 && !givesUnits)
        source = unitsOfThisMachine();
    auto decoder = makeTextCodec(source);
    auto encoder = givesUnits ? nullptr : makeTextCodec(destination);
    if (!decoder || (!encoder && !givesUnits))
        return kTextUnsupportedEncodingErr;
    *converter = new TECConverter(std::move(decoder), std::move(encoder));
    return noErr;
}

OSStatus TECDisposeConverter(TECObjectRef converter) {
    delete converter;
    return converter ? noErr : paramErr;
}

OSStatus TECClearConverterContextInfo(TECObjectRef converter) {
    if (!converter)
        return paramErr;
    converter->clear();
    return noErr;
}

OSStatus TECConvertText(TECObjectRef converter, const std::uint8_t* input, std::size_t inputLength,
                        std::size_t* inputRead, std::uint8_t* output, std::size_t outputCapacity,
                        std::size_t* outputWritten) {
    std::size_t read = 0;
    std::size_t written = 0;
    const bool isUsable = converter && (input || inputLength == 0) && (output || outputCapacity == 0);
    const OSStatus status =
        isUsable ? converter->convert({input, inputLength}, read, {output, outputCapacity}, written)
                 : paramErr;
    if (inputRead)
        *inputRead = read;
    if (outputWritten)
        *outputWritten = written;
    return status;
}

} // namespace kelvo
