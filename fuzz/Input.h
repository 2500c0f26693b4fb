#pragma once

#include "platform/foundation/NSString.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace kelvo {

/// An invariant that does not hold is a crash.
inline void require(bool holds) {
    if (!holds)
        std::abort();
}

/// The text that an input stands for: bit 0 of the first byte says whether the rest are Latin 1 or UTF-16.
/// The other bits are free for flags. `size` is at least 1.
inline NSString textOfInput(const std::uint8_t* bytes, std::size_t size) {
    if ((bytes[0] & 1) == 0)
        return NSString::stringWithLatin1Bytes({reinterpret_cast<const char*>(bytes) + 1, size - 1});
    std::u16string units((size - 1) / 2, u'\0');
    std::memcpy(units.data(), bytes + 1, units.size() * sizeof(char16_t));
    return NSString(std::u16string_view(units));
}

} // namespace kelvo
