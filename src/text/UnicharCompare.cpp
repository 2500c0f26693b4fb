#include "text/UnicharCompare.h"

#include "text/FoldingTables.h"

#include <algorithm>
#include <cstdint>
#include <cstring>

namespace kelvo {

namespace {

char16_t unitOf(char16_t unit) {
    return unit;
}
char16_t unitOf(char byte) {
    return static_cast<char16_t>(static_cast<signed char>(byte));
}

template <class First, class Second, class Map>
int compareMapped(const First* first, std::size_t firstCount, const Second* second, std::size_t secondCount,
                  std::size_t index, Map map) {
    for (const std::size_t common = std::min(firstCount, secondCount); index < common; ++index)
        if (const int difference = map(unitOf(first[index])) - map(unitOf(second[index])); difference != 0)
            return difference;
    return differenceOfCounts(firstCount, secondCount);
}

/// Both case tables stand after any of the compares that ignore case.
const char16_t* upperTableWithLowerBuilt() {
    initLowerCharsTable();
    return initUpperCharsTable();
}

constexpr auto unmapped = [](char16_t unit) -> int { return unit; };

} // namespace

int fastCompareUnicharsWithChars(const char16_t* first, std::size_t firstCount, const char* second,
                                 std::size_t secondCount) {
    return compareMapped(first, firstCount, second, secondCount, 0, unmapped);
}

int fastCompareChars(const char* first, std::size_t firstCount, const char* second, std::size_t secondCount) {
    return compareMapped(first, firstCount, second, secondCount, 0, unmapped);
}

int fastCaseInsensitiveCompareUnichars(const char16_t* first, std::size_t firstCount, const char16_t* second,
                                       std::size_t secondCount) {
    const char16_t* upper = upperTableWithLowerBuilt();
    // Text compared without regard to case is mostly the same in case as well: four units at a time need no
    // table where they are equal.
    const std::size_t common = std::min(firstCount, secondCount);
    std::size_t index = 0;
    for (; index + 4 <= common; index += 4) {
        std::uint64_t firstUnits, secondUnits;
        std::memcpy(&firstUnits, first + index, sizeof firstUnits);
        std::memcpy(&secondUnits, second + index, sizeof secondUnits);
        if (firstUnits == secondUnits)
            continue;
        unsigned differs = 0;
        for (std::size_t k = index; k < index + 4; ++k)
            differs |= static_cast<unsigned>(upper[first[k]] ^ upper[second[k]]);
        if (differs)
            break;
    }
    return compareMapped(first, firstCount, second, secondCount, index,
                         [upper](char16_t unit) -> int { return upper[unit]; });
}

int fastCaseInsensitiveCompareUnicharsWithChars(const char16_t* first, std::size_t firstCount,
                                                const char* second, std::size_t secondCount) {
    const char16_t* upper = upperTableWithLowerBuilt();
    return compareMapped(first, firstCount, second, secondCount, 0,
                         [upper](char16_t unit) -> int { return upper[unit]; });
}

int fastCaseInsensitiveCompareChars(const char* first, std::size_t firstCount, const char* second,
                                    std::size_t secondCount) {
    const char16_t* upper = upperTableWithLowerBuilt();
    return compareMapped(first, firstCount, second, secondCount, 0,
                         [upper](char16_t unit) -> int { return upper[unit]; });
}

} // namespace kelvo
