#include "platform/foundation/units/VectorScan.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

TEST(VectorScan, AgreesWithTheObviousLoops) {
    constexpr UnitRange ranges[] = {{0, 0x300}, {0x4E00, 0x5000}, {0xFFFF, 1}};
    std::mt19937 random(3);
    for (std::size_t length = 0; length < 300; ++length)
        for (int round = 0; round < 8; ++round) {
            std::u16string units(length, u'y');
            for (char16_t& unit : units)
                if (random() % 4 == 0)
                    unit = random() % 2 ? 0x4E00 : 0xFFFF;
            const std::size_t odd = random() % (length + 1);
            if (odd < length)
                units[odd] = random() % 2 ? 0x300 : 0x9E00;
            EXPECT_EQ(lengthOfPrefixInRanges(units, ranges), odd);
            for (char16_t& unit : units)
                unit &= 0x7F;
            std::string bytes(units.begin(), units.end());
            if (odd < length) {
                units[odd] = random() % 2 ? 0x80 : 0x0100;
                bytes[odd] = static_cast<char>(0x80 + random() % 128);
            }
            std::u16string wide(length, u'#');
            const auto* source = reinterpret_cast<const std::uint8_t*>(bytes.data());
            EXPECT_EQ(widenASCIIPrefix(source, length, wide.data()), odd);
            EXPECT_EQ(wide.substr(0, odd), units.substr(0, odd));
            std::string narrow(length, '#');
            EXPECT_EQ(narrowASCIIPrefix(units.data(), length, reinterpret_cast<std::uint8_t*>(narrow.data())),
                      odd);
            EXPECT_EQ(narrow.substr(0, odd), bytes.substr(0, odd));
            widenBytes(source, length, wide.data());
            for (std::size_t index = 0; index < length; ++index)
                EXPECT_EQ(wide[index], source[index]);
        }
}

} // namespace
} // namespace kelvo
