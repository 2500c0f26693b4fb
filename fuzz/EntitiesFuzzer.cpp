#include "Input.h"
#include "markup/Entities.h"
#include "support/ReferenceMarkup.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kelvo;
    // The first byte holds the flags, and says whether the rest are Latin 1 or UTF-16.
    if (size == 0)
        return 0;
    const bool standard = bytes[0] & 2, onlyNumeric = bytes[0] & 4, nonUmlauted = bytes[0] & 8;
    const NSString string = textOfInput(bytes, size);
    const std::u16string expected = reference::decode(string, standard, onlyNumeric, nonUmlauted);
    std::u16string inPlace(string.characters());
    inPlace.resize(convertEntities2Characters(inPlace.data(), inPlace.data(), 0, inPlace.size(), standard,
                                              onlyNumeric, nonUmlauted));
    require(inPlace == expected);
    if (string.length() >= 4)
        require(stringByConvertingEntitiesToCharacters_onlyNumericEntities_nonUmlauted(
                    string, standard, onlyNumeric, nonUmlauted)
                    .characters() == expected);
    // What was escaped is found again.
    const NSString escaped = stringByConvertingCharactersToStandardEntities(string);
    if (escaped.length() >= 4)
        require(stringByConvertingStandardEntitiesToCharacters(escaped) == string);
    for (const NSString& result : {stringByConvertingCharactersToEntities(string),
                                   stringByConvertingHighCharactersToEntities(string)}) {
        for (const char16_t unit : result.characters())
            require(unit < 128);
    }
    return 0;
}
