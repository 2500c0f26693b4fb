#pragma once

#include "platform/foundation/NSString.h"

#include <array>
#include <cstdint>
#include <optional>

namespace kelvo {

/// A universally unique identifier: that of a type of plug-in, of a factory, or of an interface.
struct CFUUID {
    std::array<std::uint8_t, 16> bytes{};

    friend bool operator==(const CFUUID& left, const CFUUID& right) = default;
};

/// Of 32 hexadecimal digits of either case in groups of 8, 4, 4, 4 and 12 with hyphens between them; absent for
/// anything else.
std::optional<CFUUID> CFUUIDCreateFromString(const NSString& string);

} // namespace kelvo
