#include "platform/foundation/units/OrderScan.h"
#include "platform/foundation/units/UnitScan.h"
#include "platform/foundation/units/Vectors.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <random>
#include <string>
#include <vector>

namespace kelvo {
namespace {

// Every fifth unit from U+0300 on is no plain one, and every 35th is not allowed.
bool isPlain(char16_t unit) {
    return unit < 0x300 || unit % 5 != 0;
}
bool isAllowed(char16_t unit) {
    return isPlain(unit) || unit % 7 != 0;
}
bool isInOrder(char16_t previous, char16_t unit) {
    return (previous + unit) % 3 != 0;
}

std::size_t firstByRules(const std::u16string& units, std::size_t from) {
    for (std::size_t index = from; index < units.size(); ++index) {
        const char16_t previous = index > 0 ? units[index - 1] : u'\0';
        const bool isDoubtful = !isPlain(units[index]) && (!isAllowed(units[index]) || !isPlain(previous));
        if (units[index] >= endOfOrderScan || (isDoubtful && !isInOrder(previous, units[index])))
            return index;
    }
    return units.size();
}

TEST(OrderScanTest, byTheRulesWithEachKindOfVectors) {
    std::vector<std::uint8_t> plain(8192), allowed(8192);
    for (unsigned unit = 0; unit <= 0xFFFF; ++unit) {
        const auto bit = static_cast<std::uint8_t>(1u << (unit & 7));
        plain[unit >> 3] |= isPlain(static_cast<char16_t>(unit)) ? bit : 0;
        allowed[unit >> 3] |= isAllowed(static_cast<char16_t>(unit)) ? bit : 0;
    }
    const OrderOfUnits order{plain.data(), allowed.data(), isInOrder};
    std::mt19937 random(9);
    for (std::uint64_t kinds = hwy::SupportedTargets() & HWY_TARGETS; kinds != 0; kinds &= kinds - 1) {
        hwy::GetChosenTarget().Update(static_cast<std::int64_t>(kinds & (~kinds + 1)));
        for (int round = 0; round < 3000; ++round) {
            // One script or many, few marks or many, and now and then something from further up.
            const unsigned blocks = 1 + random() % (round % 4 == 0 ? 90 : 3), rare = 2 + random() % 300;
            std::u16string units(random() % 400, u' ');
            for (char16_t& unit : units) {
                do
                    unit = static_cast<char16_t>(0x280 + random() % blocks * 0x80 + random() % 128);
                while (!isPlain(unit) && random() % rare != 0);
                if (random() % (rare * 8) == 0)
                    unit = static_cast<char16_t>(random());
            }
            const std::size_t from = units.empty() ? 0 : random() % units.size();
            SCOPED_TRACE(round);
            ASSERT_EQ(firstOutOfOrder(units, from, order), firstByRules(units, from));
        }
    }
    hwy::GetChosenTarget().DeInit();
}

} // namespace
} // namespace kelvo
