#include "Input.h"
#include "markup/Html2Text.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

using namespace kelvo;

// The first byte chooses the options, the second how the rest becomes characters.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2 || size > 65536)
        return 0;
    const unsigned flags = data[0];
    const auto flag = [flags](unsigned bit) { return (flags >> bit & 1) != 0; };
    const std::string_view bytes(reinterpret_cast<const char*>(data + 2), size - 2);
    NSString html;
    if (data[1] & 1) {
        std::u16string units(bytes.size() / 2, u'\0');
        if (!units.empty())
            std::memcpy(units.data(), bytes.data(), units.size() * 2);
        html = NSString(units);
    } else {
        html = NSString::stringByRepairingUTF8String(bytes);
    }
    const auto convert = [&](bool removeJunk, bool* junkFound) {
        return stringByConvertingHtml2PlainTextEntities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
            html, flag(0), flag(1), flag(2), flag(3), flag(4), removeJunk, junkFound, flag(6));
    };
    bool junkFound = false, again = false;
    const NSString text = convert(flag(5), &junkFound);
    require(text.isNil() == html.isNil() && text.length() <= 2 * html.length());
    require(convert(flag(5), &again) == text && again == junkFound);
    if (flag(5))
        require(convert(false, nullptr).length() >= text.length() || text.isIdenticalTo(html));
    require(stringByConvertingHtml2SimplifiedPlainText(html).length() <= 2 * html.length());
    return 0;
}
