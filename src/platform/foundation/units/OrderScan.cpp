#include "platform/foundation/units/OrderScan.h"

#include "platform/foundation/units/UnitScan.h"
#include "platform/foundation/units/Vectors.h"

#include <array>
#include <bit>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "OrderScan.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {
namespace {

bool isOutOfOrder(const char16_t* units, std::size_t index, const OrderOfUnits& order) {
    const char16_t unit = units[index], previous = index > 0 ? units[index - 1] : u'\0';
    if (unitIsInBitmap(order.plain, unit))
        return false;
    const bool isAllowed = unitIsInBitmap(order.allowed, unit) && unitIsInBitmap(order.plain, previous);
    return !isAllowed && !order.isInOrder(previous, unit);
}

std::size_t scanUnits(const char16_t* units, std::size_t index, std::size_t count,
                      const OrderOfUnits& order) {
    while (index < count && units[index] < endOfOrderScan && !isOutOfOrder(units, index, order))
        ++index;
    return index;
}

#if HWY_TARGET == HWY_SCALAR

std::size_t FirstOutOfOrder(const char16_t* units, std::size_t from, std::size_t count,
                            const OrderOfUnits& order) {
    return scanUnits(units, from, count, order);
}

#else

namespace hn = hwy::HWY_NAMESPACE;
// Mask bits are one word, lowest first.
static_assert(std::endian::native == std::endian::little);
using Bytes = hn::CappedTag<std::uint8_t, 64>;
using Units = hn::RepartitionToWide<Bytes>;

// Scripts have their letters in blocks of 128, whose part of a bitmap, 16 bytes, is the table of a byte shuffle. A text
// is in few of them; these here, and Latin.
constexpr std::size_t mostBlocks = 4;
constexpr std::uint8_t endOfLatin = 0x300 >> 7;

struct Blocks {
    std::size_t count = 0;
    std::size_t oldest = 0;
    std::array<std::uint8_t, mostBlocks> numbers{};

    template <std::size_t blockCount>
    bool hold(char16_t unit) const {
        bool isHeld = unit >> 7 < endOfLatin;
        for (std::size_t index = 0; index < blockCount; ++index)
            isHeld = isHeld || unit >> 7 == numbers[index];
        return isHeld;
    }
    void add(char16_t unit) {
        const std::size_t place = count < mostBlocks ? count++ : oldest++ % mostBlocks;
        numbers[place] = static_cast<std::uint8_t>(unit >> 7);
    }
};

/// A bit for each byte: whether its unit is in the bitmap. `rows` and `bits` are what the shuffles go by.
template <std::size_t blockCount, class V>
HWY_INLINE std::uint64_t members(V numbers, V rows, V bits, const Blocks& blocks,
                                 const std::uint8_t* bitmap) {
    const Bytes d8;
    auto found = hn::VecFromMask(d8, hn::Lt(numbers, hn::Set(d8, endOfLatin)));
    for (std::size_t index = 0; index < blockCount; ++index) {
        const auto table = hn::LoadDup128(d8, bitmap + blocks.numbers[index] * std::size_t{16});
        const auto isIn = hn::Eq(numbers, hn::Set(d8, blocks.numbers[index]));
        found = hn::Or(found, hn::IfThenElseZero(isIn, hn::TableLookupBytes(table, rows)));
    }
    std::uint64_t mask = 0;
    hn::StoreMaskBits(d8, hn::Ne(hn::And(found, bits), hn::Zero(d8)), reinterpret_cast<std::uint8_t*>(&mask));
    return mask;
}

/// Stops as well at the first step with a unit of another block, which `other` is set to.
template <std::size_t blockCount>
std::size_t scanBlocks(const char16_t* units, std::size_t index, std::size_t count, const OrderOfUnits& order,
                       const Blocks& blocks, char16_t* other) {
    const Bytes d8;
    const Units d16;
    HWY_ALIGN static constexpr std::uint8_t bitOfIndex[16] = {1, 2, 4, 8, 16, 32, 64, 128,
                                                              1, 2, 4, 8, 16, 32, 64, 128};
    const auto bitTable = hn::LoadDup128(d8, bitOfIndex);
    const std::size_t lanes = hn::Lanes(d16), step = 2 * lanes;
    const std::uint64_t all = ~std::uint64_t{0} >> (64 - step);
    const AliasedUnit* p = asNumbers(units);
    bool followsMark = index > 0 && !unitIsInBitmap(order.plain, units[index - 1]);
    for (; index + step <= count; index += step) {
        // The first half stands in the even bytes, the second in the odd ones.
        const auto first = hn::LoadU(d16, p + index), second = hn::LoadU(d16, p + index + lanes);
        if (!hn::AllTrue(d16, hn::Lt(hn::Or(first, second), hn::Set(d16, std::uint16_t{0x8000}))))
            return index;
        const auto numbers =
            hn::BitCast(d8, hn::Or(hn::ShiftRight<7>(first), hn::ShiftLeft<8>(hn::ShiftRight<7>(second))));
        const auto low = hn::BitCast(
            d8, hn::Or(hn::And(first, hn::Set(d16, std::uint16_t{0x7F})), hn::ShiftLeft<8>(second)));
        const auto rows =
            hn::And(hn::BitCast(d8, hn::ShiftRight<3>(hn::BitCast(d16, low))), hn::Set(d8, 0x0F));
        const auto bits = hn::TableLookupBytes(bitTable, hn::And(low, hn::Set(d8, 0x07)));
        const std::uint64_t marks = ~members<blockCount>(numbers, rows, bits, blocks, order.plain) & all;
        if (marks == 0) {
            followsMark = false;
            continue;
        }
        const std::uint64_t refused = ~members<blockCount>(numbers, rows, bits, blocks, order.allowed) & all;
        if (refused != 0) {
            auto isKnown = hn::Lt(numbers, hn::Set(d8, endOfLatin));
            for (std::size_t block = 0; block < blockCount; ++block)
                isKnown = hn::Or(isKnown, hn::Eq(numbers, hn::Set(d8, blocks.numbers[block])));
            if (!hn::AllTrue(d8, isKnown)) {
                const char16_t* unit = units + index;
                while (blocks.hold<blockCount>(*unit))
                    ++unit;
                *other = *unit;
                return index;
            }
        }
        const std::uint64_t before =
            (marks << 2 | (marks >> (step - 2) & 1) << 1 | (followsMark ? 1 : 0)) & all;
        followsMark = marks >> (step - 1) & 1;
        if (const std::uint64_t doubtful = refused | (marks & before))
            for (const unsigned half : {0u, 1u})
                for (std::uint64_t left = doubtful >> half & 0x5555555555555555; left != 0;
                     left &= left - 1) {
                    const std::size_t place =
                        index + half * lanes + static_cast<std::size_t>(std::countr_zero(left)) / 2;
                    if (!order.isInOrder(place > 0 ? units[place - 1] : u'\0', units[place]))
                        return place;
                }
    }
    return index;
}

std::size_t FirstOutOfOrder(const char16_t* units, std::size_t from, std::size_t count,
                            const OrderOfUnits& order) {
    constexpr decltype(&scanBlocks<0>) scans[] = {scanBlocks<0>, scanBlocks<1>, scanBlocks<2>, scanBlocks<3>,
                                                  scanBlocks<4>};
    const std::size_t step = hn::Lanes(Bytes());
    Blocks blocks;
    std::size_t index = from, addedAtOnce = 0;
    while (count - index >= step) {
        char16_t other = 0;
        const std::size_t stop = scans[blocks.count](units, index, count, order, blocks, &other);
        addedAtOnce = stop == index ? addedAtOnce + 1 : 1;
        index = stop;
        if (other == 0 || other >= endOfOrderScan)
            break;
        // So many blocks in one step would take each other's place for ever.
        if (addedAtOnce > mostBlocks) {
            index = scanUnits(units, index, index + step, order);
            if (index < stop + step)
                return index;
            addedAtOnce = 0;
            continue;
        }
        blocks.add(other);
    }
    return scanUnits(units, index, count, order);
}

#endif

} // namespace
} // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {
namespace {
HWY_EXPORT(FirstOutOfOrder);
} // namespace

std::size_t firstOutOfOrder(std::u16string_view units, std::size_t from, const OrderOfUnits& order) {
    return HWY_DYNAMIC_DISPATCH(FirstOutOfOrder)(units.data(), from, units.size(), order);
}

} // namespace kelvo
#endif
