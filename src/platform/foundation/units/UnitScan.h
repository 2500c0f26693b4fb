#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace kelvo {

// Scans over arrays of UTF-16 code units (and, where named so, bytes), written for the widest vectors of the
// machine that runs them. They read nothing past the count, allocate nothing, and need no alignment. Counts
// and indices are in units; "not found" is the count itself. With count 0 the pointers may be null.
//
// unitScanPlain has the same operations as the obvious loops. They serve what is too short for a vector, and
// they are what the vector forms are tested against.

/// Up to four code units that one scan looks for at once; unused places repeat the first. `count` tells how
/// many differ.
struct UnitsToFind {
    char16_t units[4];
    unsigned count;

    bool contains(char16_t unit) const {
        return unit == units[0] || unit == units[1] || unit == units[2] || unit == units[3];
    }
};

/// A bitmap of 8,192 bytes: code unit c is a member when bit (c mod 8) of byte (c div 8) is set, bit 0 being
/// the least significant.
inline bool unitIsInBitmap(const std::uint8_t* bitmap, char16_t unit) {
    return bitmap[unit >> 3] >> (unit & 7) & 1;
}

namespace unitScanPlain {

inline std::size_t firstUnitEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted) {
    std::size_t index = 0;
    while (index < count && !wanted.contains(units[index]))
        ++index;
    return index;
}

/// The first index at which `first` stands, followed by `second`.
inline std::size_t firstPairOfUnits(const char16_t* units, std::size_t count, char16_t first,
                                    char16_t second) {
    for (std::size_t index = 0; index + 1 < count; ++index) {
        if (units[index] == first && units[index + 1] == second)
            return index;
    }
    return count;
}

inline std::size_t countUnitsEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted) {
    std::size_t found = 0;
    for (std::size_t index = 0; index < count; ++index)
        found += wanted.contains(units[index]);
    return found;
}

/// `member` true: the first unit in the bitmap; false: the first that is not.
inline std::size_t firstUnitByMembership(const char16_t* units, std::size_t count, const std::uint8_t* bitmap,
                                         bool member) {
    std::size_t index = 0;
    while (index < count && unitIsInBitmap(bitmap, units[index]) != member)
        ++index;
    return index;
}

/// The first unit of 128 or above.
inline std::size_t firstNonAsciiUnit(const char16_t* units, std::size_t count) {
    std::size_t index = 0;
    while (index < count && units[index] < 128)
        ++index;
    return index;
}

inline std::size_t firstNonAsciiByte(const std::uint8_t* bytes, std::size_t count) {
    std::size_t index = 0;
    while (index < count && bytes[index] < 128)
        ++index;
    return index;
}

/// The first index at which the two arrays differ.
inline std::size_t firstDifference(const char16_t* left, const char16_t* right, std::size_t count) {
    std::size_t index = 0;
    while (index < count && left[index] == right[index])
        ++index;
    return index;
}

} // namespace unitScanPlain

namespace unitScanVector {

std::size_t firstUnitEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted);
std::size_t firstPairOfUnits(const char16_t* units, std::size_t count, char16_t first, char16_t second);
std::size_t countUnitsEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted);
std::size_t firstUnitByMembership(const char16_t* units, std::size_t count, const std::uint8_t* bitmap,
                                  bool member);
std::size_t firstNonAsciiUnit(const char16_t* units, std::size_t count);
std::size_t firstNonAsciiByte(const std::uint8_t* bytes, std::size_t count);
std::size_t firstDifference(const char16_t* left, const char16_t* right, std::size_t count);

} // namespace unitScanVector

/// Below this many units (or bytes) the plain loop is done before a vector would have started.
inline constexpr std::size_t unitScanShortCount = 16;

inline std::size_t firstUnitEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted) {
    return count < unitScanShortCount ? unitScanPlain::firstUnitEqualTo(units, count, wanted)
                                      : unitScanVector::firstUnitEqualTo(units, count, wanted);
}

inline std::size_t firstPairOfUnits(const char16_t* units, std::size_t count, char16_t first,
                                    char16_t second) {
    return count < unitScanShortCount ? unitScanPlain::firstPairOfUnits(units, count, first, second)
                                      : unitScanVector::firstPairOfUnits(units, count, first, second);
}

inline std::size_t countUnitsEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted) {
    return count < unitScanShortCount ? unitScanPlain::countUnitsEqualTo(units, count, wanted)
                                      : unitScanVector::countUnitsEqualTo(units, count, wanted);
}

inline std::size_t firstUnitInBitmap(const char16_t* units, std::size_t count, const std::uint8_t* bitmap) {
    return count < unitScanShortCount ? unitScanPlain::firstUnitByMembership(units, count, bitmap, true)
                                      : unitScanVector::firstUnitByMembership(units, count, bitmap, true);
}

inline std::size_t firstUnitNotInBitmap(const char16_t* units, std::size_t count,
                                        const std::uint8_t* bitmap) {
    return count < unitScanShortCount ? unitScanPlain::firstUnitByMembership(units, count, bitmap, false)
                                      : unitScanVector::firstUnitByMembership(units, count, bitmap, false);
}

inline std::size_t firstNonAsciiUnit(const char16_t* units, std::size_t count) {
    return count < unitScanShortCount ? unitScanPlain::firstNonAsciiUnit(units, count)
                                      : unitScanVector::firstNonAsciiUnit(units, count);
}

inline std::size_t firstNonAsciiByte(const std::uint8_t* bytes, std::size_t count) {
    return count < unitScanShortCount ? unitScanPlain::firstNonAsciiByte(bytes, count)
                                      : unitScanVector::firstNonAsciiByte(bytes, count);
}

/// Texts that are compared are short or differ early, so this looks at a few machine words before it calls on
/// the vectors.
inline std::size_t firstDifference(const char16_t* left, const char16_t* right, std::size_t count) {
    constexpr std::size_t unitsInWord = sizeof(std::uint64_t) / sizeof(char16_t);
    // Too little would be left for the vectors of a text of up to twice that length.
    constexpr std::size_t looked = 8 * unitsInWord;
    const std::size_t limit = count <= 2 * looked ? count : looked;
    if (count < unitsInWord)
        return unitScanPlain::firstDifference(left, right, count);
    const std::size_t lastStart = count - unitsInWord;
    for (std::size_t start = 0; start < limit; start += unitsInWord) {
        start = start < lastStart ? start : lastStart;
        std::uint64_t leftWord, rightWord;
        std::memcpy(&leftWord, left + start, sizeof leftWord);
        std::memcpy(&rightWord, right + start, sizeof rightWord);
        if (const std::uint64_t differing = leftWord ^ rightWord) {
            const int bitsBefore = std::endian::native == std::endian::little ? std::countr_zero(differing)
                                                                              : std::countl_zero(differing);
            return start + static_cast<std::size_t>(bitsBefore) / (8 * sizeof(char16_t));
        }
        if (start == lastStart)
            return count;
    }
    return looked + unitScanVector::firstDifference(left + looked, right + looked, count - looked);
}

} // namespace kelvo
