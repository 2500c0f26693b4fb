#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kelvo {

/// What units are to the order of marks in a text. Bitmaps as in UnitScan.h; everything below U+0300 must be plain.
struct OrderOfUnits {
    /// Stands wherever it likes, and begins anew.
    const std::uint8_t* plain;
    /// Stands where it is after a plain unit. Holds the plain ones too.
    const std::uint8_t* allowed;
    /// Asked about what is not allowed, and about what is not plain and follows what is not plain.
    bool (*isInOrder)(char16_t previous, char16_t unit);
};

/// From U+3000 on there are more units than a scan by blocks of scripts pays for.
inline constexpr char16_t endOfOrderScan = 0x3000;

/// The first index from `from` on at which a unit is out of order, or not below endOfOrderScan; else the size. The unit
/// before `from` is looked at, U+0000 where there is none. Text of few scripts is scanned fastest.
std::size_t firstOutOfOrder(std::u16string_view units, std::size_t from, const OrderOfUnits& order);

} // namespace kelvo
