#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

// Scans and copies that use the widest vectors of the processor they run on. Each costs a few nanoseconds to
// enter, so that loops over short runs should look at some elements themselves first.

/// The units from `first` on, `count` of them.
struct UnitRange {
    char16_t first;
    char16_t count;
};
/// The number of leading units that lie in one of the ranges; there must be at least one range. Text that stays
/// within two of them for long is skipped fastest.
std::size_t lengthOfPrefixInRanges(std::u16string_view units, std::span<const UnitRange> ranges);

/// Copies leading bytes below 0x80 as units, up to `length` of them; returns how many there were. Units past
/// those, but within `length`, may have been overwritten.
std::size_t widenASCIIPrefix(const std::uint8_t* bytes, std::size_t length, char16_t* units);
/// The same the other way: leading units below 0x80 as bytes.
std::size_t narrowASCIIPrefix(const char16_t* units, std::size_t length, std::uint8_t* bytes);
/// Each byte as the unit of the same number.
void widenBytes(const std::uint8_t* bytes, std::size_t length, char16_t* units);

} // namespace kelvo
