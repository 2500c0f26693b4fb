#pragma once

#include "platform/foundation/units/UnitScan.h"

#include <cstddef>
#include <limits>

namespace kelvo {

// Three-way compares of raw arrays: negative, zero or positive. The result is the difference (operand 1 minus
// operand 2) of the first two code units that differ, and when none differs within the shorter array the
// difference of the counts, held to the range of int. Counts are in units or bytes; a pointer may be null
// when its count is 0.
//
// Bytes are meant to be ASCII. They are widened as signed values, so that 0x80 to 0xFF compare as the code
// units 0xFF80 to 0xFFFF. The case-insensitive forms compare entries of the upper-case table.

/// What no unit decides: the difference of the counts.
inline int differenceOfCounts(std::size_t firstCount, std::size_t secondCount) {
    constexpr std::size_t most = std::numeric_limits<int>::max();
    const bool isFirstShorter = firstCount < secondCount;
    const std::size_t difference = isFirstShorter ? secondCount - firstCount : firstCount - secondCount;
    const int held = static_cast<int>(difference < most ? difference : most);
    return isFirstShorter ? -held : held;
}

// Inline, since most compares end within the first few units.
inline int fastCompareUnichars(const char16_t* first, std::size_t firstCount, const char16_t* second,
                               std::size_t secondCount) {
    const std::size_t common = firstCount < secondCount ? firstCount : secondCount;
    if (common != 0 && *first != *second)
        return *first - *second;
    const std::size_t index = firstDifference(first, second, common);
    return index < common ? first[index] - second[index] : differenceOfCounts(firstCount, secondCount);
}
int fastCompareUnicharsWithChars(const char16_t* first, std::size_t firstCount, const char* second,
                                 std::size_t secondCount);
int fastCompareChars(const char* first, std::size_t firstCount, const char* second, std::size_t secondCount);

int fastCaseInsensitiveCompareUnichars(const char16_t* first, std::size_t firstCount, const char16_t* second,
                                       std::size_t secondCount);
int fastCaseInsensitiveCompareUnicharsWithChars(const char16_t* first, std::size_t firstCount,
                                                const char* second, std::size_t secondCount);
int fastCaseInsensitiveCompareChars(const char* first, std::size_t firstCount, const char* second,
                                    std::size_t secondCount);

} // namespace kelvo
