#pragma once

#include <cstddef>

namespace kelvo {

// Three-way compares of raw arrays: negative, zero or positive. The result is the difference (operand 1 minus
// operand 2) of the first two code units that differ, and when none differs within the shorter array the
// difference of the counts, held to the range of int. Counts are in units or bytes; a pointer may be null
// when its count is 0.
//
// Bytes are meant to be ASCII. They are widened as signed values, so that 0x80 to 0xFF compare as the code
// units 0xFF80 to 0xFFFF. The case-insensitive forms compare entries of the upper-case table.

/// The general form behind fastCompareUnichars, which decides by the first unit where that differs.
int fastCompareUnicharsFromStart(const char16_t* first, std::size_t firstCount, const char16_t* second,
                                 std::size_t secondCount);

inline int fastCompareUnichars(const char16_t* first, std::size_t firstCount, const char16_t* second,
                               std::size_t secondCount) {
    if (firstCount != 0 && secondCount != 0 && *first != *second)
        return *first - *second;
    return fastCompareUnicharsFromStart(first, firstCount, second, secondCount);
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
