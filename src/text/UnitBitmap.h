#pragma once

#include "text/CharacterSetReps.h"

#include <array>
#include <cstdint>
#include <string_view>

namespace kelvo {

/// A character-set rep of one's own, made from a list of its members. 8,192 bytes.
class UnitBitmap {
public:
    constexpr UnitBitmap() = default;
    constexpr explicit UnitBitmap(std::u16string_view members) {
        for (const char16_t unit : members)
            add(unit);
    }
    constexpr void add(char16_t unit) {
        bytes_[unit >> 3] = static_cast<std::uint8_t>(bytes_[unit >> 3] | 1u << (unit & 7));
    }
    constexpr CharacterSetRep rep() const { return bytes_.data(); }

private:
    std::array<std::uint8_t, characterSetRepSizeInBytes> bytes_{};
};

} // namespace kelvo
