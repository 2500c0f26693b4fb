#include "platform/plugins/CFUUID.h"

#include "platform/foundation/units/ASCII.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

std::optional<CFUUID> CFUUIDCreateFromString(const NSString& string) {
    const std::u16string_view units = string;
    if (units.size() != 36)
        return std::nullopt;
    CFUUID uuid;
    std::size_t at = 0;
    for (std::size_t i = 0; i < uuid.bytes.size(); ++i) {
        if ((i == 4 || i == 6 || i == 8 || i == 10) && units[at++] != '-')
            return std::nullopt;
        const int high = hexDigitValue(units[at++]);
        const int low = hexDigitValue(units[at++]);
        if (high < 0 || low < 0)
            return std::nullopt;
        uuid.bytes[i] = static_cast<std::uint8_t>(high * 16 + low);
    }
    return uuid;
}

} // namespace kelvo
