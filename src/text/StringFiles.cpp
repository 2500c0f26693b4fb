#include "text/StringFiles.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/encodings/NSStringEncoding.h"
#include "text/StringEncodingSetting.h"

#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

struct Encoded {
    NSData data;
    NSStringEncoding encoding = kCFStringEncodingInvalidId;
};

Encoded encoded(const NSString& text, NSStringEncoding encoding) {
    try {
        NSData data = dataUsingEncoding(text, encoding);
        if (!data.isNil())
            return {std::move(data), encoding};
    } catch (const NSException&) {
    }
    return {};
}

template <class Encodings>
Encoded encodedInFirstOf(const NSString& text, const Encodings& encodings) {
    for (const NSStringEncoding encoding : encodings)
        if (Encoded result = encoded(text, encoding); !result.data.isNil())
            return result;
    return {};
}

std::size_t numberOfCharacters(std::u16string_view text) {
    std::size_t pairs = 0;
    for (std::size_t index = 1; index < text.size(); ++index)
        pairs += (text[index] & 0xFC00) == 0xDC00 && (text[index - 1] & 0xFC00) == 0xD800;
    return text.size() - pairs;
}

Encoded encodedSmallest(const NSString& text) {
    constexpr NSStringEncoding candidates[] = {
        NSASCIIStringEncoding,         NSUTF8StringEncoding,          NSISOLatin1StringEncoding,
        NSWindowsCP1252StringEncoding, NSMacOSRomanStringEncoding,    NSISOLatin2StringEncoding,
        NSWindowsCP1250StringEncoding, NSWindowsCP1251StringEncoding, NSWindowsCP1253StringEncoding,
        NSWindowsCP1254StringEncoding, NSShiftJISStringEncoding,      NSJapaneseEUCStringEncoding,
        NSUnicodeStringEncoding};
    const std::size_t fewestPossible = numberOfCharacters(text);
    Encoded best;
    for (const NSStringEncoding candidate : candidates) {
        Encoded next = encoded(text, candidate);
        if (!next.data.isNil() && (best.data.isNil() || next.data.length() < best.data.length()))
            best = std::move(next);
        if (!best.data.isNil() && best.data.length() <= fewestPossible)
            break;
    }
    return best;
}

bool write(const Encoded& file, const NSString& path, bool atomically, NSStringEncoding* usedEncoding) {
    const bool isWritten = !file.data.isNil() && file.data.writeToFile_atomically(path, atomically);
    if (usedEncoding)
        *usedEncoding = isWritten ? file.encoding : kCFStringEncodingInvalidId;
    return isWritten;
}

NSData contentsOfFile(const NSString& path) {
    try {
        return NSData::dataWithContentsOfFile(path);
    } catch (const NSException&) {
        return nullptr;
    }
}

} // namespace

namespace NSStringKelvoExtensions {

NSString stringWithCharacter(char16_t unit) {
    return NSString(std::u16string_view(&unit, 1));
}

NSString stringWithCString_length_encoding(const char* bytes, std::size_t lengthInBytes,
                                           NSStringEncoding encoding) {
    if (!bytes || lengthInBytes > maximumSizeInBytes)
        return nullptr;
    // The data lives no longer than this call and needs no owner.
    return NSStringKelvoExtensions::stringWithData_encoding(
        NSData::dataWithBytesNoCopy(std::span(reinterpret_cast<const std::uint8_t*>(bytes), lengthInBytes),
                                    nullptr),
        encoding);
}

NSString stringWithData_encoding(const NSData& data, NSStringEncoding encoding) {
    try {
        return kelvo::stringWithData_encoding(data, encoding);
    } catch (const NSException&) {
        return nullptr;
    }
}

NSString stringWithContentsOfFile_encoding(const NSString& path, NSStringEncoding encoding) {
    return NSStringKelvoExtensions::stringWithData_encoding(contentsOfFile(path), encoding);
}

NSString stringWithContentsOfFile_encoding_usedEncoding(const NSString& path, NSStringEncoding encoding,
                                                        NSStringEncoding* usedEncoding) {
    const NSData data = contentsOfFile(path);
    if (usedEncoding)
        *usedEncoding = kCFStringEncodingInvalidId;
    for (const NSStringEncoding candidate :
         {encodingOfByteOrderMark(data.characters()), encoding, NSUTF8StringEncoding,
          NSWindowsCP1252StringEncoding, NSISOLatin1StringEncoding})
        if (NSString text = NSStringKelvoExtensions::stringWithData_encoding(data, candidate);
            !text.isNil()) {
            if (usedEncoding)
                *usedEncoding = candidate;
            return text;
        }
    return nullptr;
}

} // namespace NSStringKelvoExtensions

bool writeToFile_atomically_encoding(const NSString& text, const NSString& path, bool atomically,
                                     NSStringEncoding encoding) {
    return write(encoded(text, encoding), path, atomically, nullptr);
}

bool writeToFileUsingDefaultEncoding_atomically_usedEncoding(const NSString& text, const NSString& path,
                                                             bool atomically,
                                                             NSStringEncoding* usedEncoding) {
    const NSStringEncoding encodings[] = {NSStringKelvoExtensions::defaultEncoding(), NSUTF8StringEncoding,
                                          NSUnicodeStringEncoding};
    return write(encodedInFirstOf(text, encodings), path, atomically, usedEncoding);
}

bool writeToFileUsingSmallestEncoding_atomically_usedEncoding(const NSString& text, const NSString& path,
                                                              bool atomically,
                                                              NSStringEncoding* usedEncoding) {
    return write(encodedSmallest(text), path, atomically, usedEncoding);
}

bool writeToFileUsingFastestEncoding_atomically_usedEncoding(const NSString& text, const NSString& path,
                                                             bool atomically,
                                                             NSStringEncoding* usedEncoding) {
    return write(encoded(text, NSUnicodeStringEncoding), path, atomically, usedEncoding);
}

} // namespace kelvo
