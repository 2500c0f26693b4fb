#include "platform/foundation/units/UnitMasks.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

TEST(UnitMasksTest, bitsOfEveryLength) {
    const std::array<std::uint8_t, unitMaskKinds> characters = {'<', '>', '=', 'z', 0x7F};
    // Units that a careless narrowing would take for one of the characters.
    const std::u16string_view choices = u"<>=z\x007F\x013C\x3C00\x803C\xFF3C\xFFFF\x0000 a";
    std::mt19937 random(5);
    for (std::size_t count = 0; count <= 300; ++count) {
        // Exactly as large as the text, so that a sanitizer sees any read past it.
        std::vector<char16_t> units(count);
        for (char16_t& unit : units)
            unit = choices[random() % choices.size()];
        constexpr std::size_t stride = 7, untouched = 0xABCDEF;
        std::vector<std::uint64_t> masks(unitMaskKinds * stride, untouched);
        makeUnitMasks(units.data(), count, characters, masks.data(), stride);
        for (std::size_t bit = 0; bit < stride * unitsPerMask; ++bit) {
            for (std::size_t kind = 0; kind < unitMaskKinds; ++kind) {
                const std::uint64_t mask = masks[kind * stride + bit / unitsPerMask];
                if (bit / unitsPerMask * unitsPerMask >= count)
                    ASSERT_EQ(mask, untouched);
                else
                    ASSERT_EQ(mask >> bit % unitsPerMask & 1, bit < count && units[bit] == characters[kind])
                        << count << ' ' << bit << ' ' << kind;
            }
        }
    }
}

} // namespace
} // namespace kelvo
