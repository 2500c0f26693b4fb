#include "text/EncodingConverters.h"

#include <mutex>

namespace kelvo {

namespace {

TextEncoding ucs2Encoding, utf8Encoding;
TECObjectRef UTF8ToUnicodeConverter, UnicodeToUTF8Converter;
std::once_flag initialized;

TextEncoding sixteenBitUnicode() {
    return CreateTextEncoding(kTextEncodingUnicodeDefault, kTextEncodingDefaultVariant, kUnicode16BitFormat);
}

OSStatus convertFromStart(TECObjectRef converter, const void* source, std::size_t sourceLengthInBytes,
                          void* destination, std::size_t destinationCapacityInBytes) {
    if (!converter)
        return paramErr;
    std::size_t bytesRead = 0, bytesWritten = 0;
    TECClearConverterContextInfo(converter);
    return TECConvertText(converter, static_cast<const std::uint8_t*>(source), sourceLengthInBytes,
                          &bytesRead, static_cast<std::uint8_t*>(destination), destinationCapacityInBytes,
                          &bytesWritten);
}

} // namespace

void initUnicodeConverters() {
    std::call_once(initialized, [] {
        ucs2Encoding = sixteenBitUnicode();
        utf8Encoding =
            CreateTextEncoding(kTextEncodingUnicodeDefault, kTextEncodingDefaultVariant, kUnicodeUTF8Format);
        TECCreateConverter(&UTF8ToUnicodeConverter, utf8Encoding, ucs2Encoding);
        TECCreateConverter(&UnicodeToUTF8Converter, ucs2Encoding, utf8Encoding);
    });
}

OSStatus convertUTF8ToUnicode(const std::uint8_t* source, std::size_t sourceLengthInBytes,
                              char16_t* destination, std::size_t destinationCapacityInUnits) {
    return convertFromStart(UTF8ToUnicodeConverter, source, sourceLengthInBytes, destination,
                            destinationCapacityInUnits * sizeof(char16_t));
}

OSStatus convertUnicodeToUTF8(const char16_t* source, std::size_t sourceLengthInUnits,
                              std::uint8_t* destination, std::size_t destinationCapacityInBytes) {
    return convertFromStart(UnicodeToUTF8Converter, source, sourceLengthInUnits * sizeof(char16_t),
                            destination, destinationCapacityInBytes);
}

std::int32_t convertEncodingToUnicode(const std::uint8_t* source, std::size_t sourceLengthInBytes,
                                      TextEncoding encoding, char16_t* destination,
                                      std::size_t destinationCapacityInUnits, std::size_t* unitsWritten) {
    *unitsWritten = 0;
    TECObjectRef converter = nullptr;
    if (const OSStatus status = TECCreateConverter(&converter, encoding, sixteenBitUnicode());
        status != noErr)
        return status;
    if (!converter)
        return 0;
    std::size_t bytesRead = 0, bytesWritten = 0;
    const OSStatus status = TECConvertText(converter, source, sourceLengthInBytes, &bytesRead,
                                           reinterpret_cast<std::uint8_t*>(destination),
                                           destinationCapacityInUnits * sizeof(char16_t), &bytesWritten);
    TECDisposeConverter(converter);
    *unitsWritten = bytesWritten / sizeof(char16_t);
    return status == noErr ? 1 : 0;
}

} // namespace kelvo
