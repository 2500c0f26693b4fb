#include "platform/foundation/encodings/HostNames.h"

#include <unicode/uidna.h>

#include <cstdint>
#include <memory>

namespace kelvo {

std::string ASCIIHostName(const std::string& nameUTF8) {
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UIDNA, decltype(&uidna_close)> converter(
        uidna_openUTS46(UIDNA_NONTRANSITIONAL_TO_ASCII, &status), uidna_close);
    char ascii[1024];
    UIDNAInfo information = UIDNA_INFO_INITIALIZER;
    if (U_FAILURE(status))
        return {};
    const std::int32_t length =
        uidna_nameToASCII_UTF8(converter.get(), nameUTF8.data(), static_cast<std::int32_t>(nameUTF8.size()),
                               ascii, sizeof ascii, &information, &status);
    if (U_FAILURE(status) || information.errors != 0)
        return {};
    return {ascii, static_cast<std::size_t>(length)};
}

} // namespace kelvo
