#include "platform/foundation/units/UnitScan.h"

#include "platform/foundation/units/Vectors.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "UnitScan.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {
namespace {

namespace hn = hwy::HWY_NAMESPACE;
using Units = hn::ScalableTag<std::uint16_t>;
using Bytes = hn::ScalableTag<std::uint8_t>;

template <class V, class... Vs>
HWY_INLINE auto equalsAny(V units, V wanted, Vs... others) {
    if constexpr (sizeof...(others) == 0)
        return hn::Eq(units, wanted);
    else
        return hn::Or(hn::Eq(units, wanted), equalsAny(units, others...));
}

/// The first index in [0, count) at which `test` holds, where test(i) gives the mask for the vector at i, and
/// any(i) one that is empty where it holds for none of the four vectors from there on. Four vectors share one
/// branch; the last vector overlaps the one before it, so nothing past the end is read. Needs count >= Lanes(d).
template <class D, class Test, class Any>
HWY_INLINE std::size_t firstWhere(D d, std::size_t count, Test test, Any any) {
    const std::size_t lanes = hn::Lanes(d);
    std::size_t index = 0;
    while (index + 4 * lanes <= count && HWY_LIKELY(hn::AllFalse(d, any(index))))
        index += 4 * lanes;
    for (; index < count; index += lanes) {
        const std::size_t start = std::min(index, count - lanes);
        const auto mask = test(start);
        if (!hn::AllFalse(d, mask))
            return start + hn::FindKnownFirstTrue(d, mask);
    }
    return count;
}

template <class D, class Test>
HWY_INLINE std::size_t firstWhere(D d, std::size_t count, Test test) {
    const std::size_t lanes = hn::Lanes(d);
    return firstWhere(d, count, test, [&](std::size_t i) HWY_ATTR {
        return hn::Or(hn::Or(test(i), test(i + lanes)), hn::Or(test(i + 2 * lanes), test(i + 3 * lanes)));
    });
}

/// The bit in which two wanted units differ, as the cases of most letters do, or 0 when it is not just one: without it
/// they are one unit.
std::uint16_t onlyDifference(const UnitsToFind& wanted) {
    const auto bits = static_cast<std::uint16_t>(wanted.units[0] ^ wanted.units[1]);
    return wanted.count == 2 && std::has_single_bit(bits) ? bits : 0;
}

std::size_t FirstUnitEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted) {
    const Units d;
    if (count < hn::Lanes(d))
        return unitScanPlain::firstUnitEqualTo(units, count, wanted);
    const AliasedUnit* p = asNumbers(units);
    const auto w0 = hn::Set(d, wanted.units[0]), w1 = hn::Set(d, wanted.units[1]),
               w2 = hn::Set(d, wanted.units[2]), w3 = hn::Set(d, wanted.units[3]);
    if (wanted.count <= 1)
        return firstWhere(d, count,
                          [&](std::size_t i) HWY_ATTR { return equalsAny(hn::LoadU(d, p + i), w0); });
    if (const std::uint16_t bit = onlyDifference(wanted)) {
        const auto others = hn::Set(d, static_cast<std::uint16_t>(~bit));
        const auto common = hn::And(w0, others);
        // 0 where the unit is one of the two. The least of four vectors costs less than as many comparisons.
        const auto difference = [&](std::size_t i) HWY_ATTR {
            return hn::Xor(hn::And(hn::LoadU(d, p + i), others), common);
        };
        const std::size_t lanes = hn::Lanes(d);
        return firstWhere(
            d, count, [&](std::size_t i) HWY_ATTR { return hn::Eq(difference(i), hn::Zero(d)); },
            [&](std::size_t i) HWY_ATTR {
                const auto least = hn::Min(hn::Min(difference(i), difference(i + lanes)),
                                           hn::Min(difference(i + 2 * lanes), difference(i + 3 * lanes)));
                return hn::Eq(least, hn::Zero(d));
            });
    }
    if (wanted.count == 2)
        return firstWhere(d, count,
                          [&](std::size_t i) HWY_ATTR { return equalsAny(hn::LoadU(d, p + i), w0, w1); });
    return firstWhere(d, count,
                      [&](std::size_t i) HWY_ATTR { return equalsAny(hn::LoadU(d, p + i), w0, w1, w2, w3); });
}

std::size_t FirstPairOfUnits(const char16_t* units, std::size_t count, char16_t first, char16_t second) {
    const Units d;
    if (count <= hn::Lanes(d))
        return unitScanPlain::firstPairOfUnits(units, count, first, second);
    const AliasedUnit* p = asNumbers(units);
    const auto w0 = hn::Set(d, first), w1 = hn::Set(d, second);
    const std::size_t found = firstWhere(d, count - 1, [&](std::size_t i) HWY_ATTR {
        return hn::And(hn::Eq(hn::LoadU(d, p + i), w0), hn::Eq(hn::LoadU(d, p + i + 1), w1));
    });
    return found == count - 1 ? count : found;
}

/// `matches(v)` gives the mask of one loaded vector.
template <class Matches>
HWY_INLINE std::size_t countWhere(const AliasedUnit* p, std::size_t count, std::size_t* rest,
                                  Matches matches) {
    const Units d;
    const std::size_t lanes = hn::Lanes(d), block = 4 * lanes;
    const auto at = [&](std::size_t i) HWY_ATTR { return matches(hn::LoadU(d, p + i)); };
    std::size_t found = 0, index = 0;
    // Where a comparison gives bits, those are counted; a vector would have to be made of them first.
    if constexpr (HWY_TARGET <= HWY_AVX3) {
        for (; index + block <= count; index += block)
            found += hn::CountTrue(d, at(index)) + hn::CountTrue(d, at(index + lanes)) +
                     hn::CountTrue(d, at(index + 2 * lanes)) + hn::CountTrue(d, at(index + 3 * lanes));
        *rest = index;
        return found;
    }
    const auto minusOne = [&](std::size_t i) HWY_ATTR { return hn::VecFromMask(d, at(i)); };
    HWY_ALIGN std::array<std::uint16_t, hn::MaxLanes(Units())> counts;
    while (index + block <= count) {
        // Each lane counts at most 65,535 matches before it is emptied.
        const std::size_t end = index + std::min((count - index) / block, std::size_t{65535}) * block;
        auto a = hn::Zero(d), b = a, c = a, e = a;
        for (; index < end; index += block) {
            a = hn::Sub(a, minusOne(index));
            b = hn::Sub(b, minusOne(index + lanes));
            c = hn::Sub(c, minusOne(index + 2 * lanes));
            e = hn::Sub(e, minusOne(index + 3 * lanes));
        }
        for (const auto& lane : {a, b, c, e}) {
            hn::Store(lane, d, counts.data());
            for (std::size_t k = 0; k < lanes; ++k)
                found += counts[k];
        }
    }
    *rest = index;
    return found;
}

std::size_t CountUnitsEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted) {
    const Units d;
    const AliasedUnit* p = asNumbers(units);
    const auto w0 = hn::Set(d, wanted.units[0]), w1 = hn::Set(d, wanted.units[1]),
               w2 = hn::Set(d, wanted.units[2]), w3 = hn::Set(d, wanted.units[3]);
    using V = hn::Vec<Units>;
    std::size_t rest = 0, found = 0;
    const std::uint16_t bit = onlyDifference(wanted);
    const auto others = hn::Set(d, static_cast<std::uint16_t>(~bit));
    const auto common = hn::And(w0, others);
    if (wanted.count <= 1)
        found = countWhere(p, count, &rest, [&](V v) HWY_ATTR { return hn::Eq(v, w0); });
    else if (bit != 0)
        found = countWhere(p, count, &rest, [&](V v) HWY_ATTR { return hn::Eq(hn::And(v, others), common); });
    else if (wanted.count == 2)
        found = countWhere(p, count, &rest, [&](V v) HWY_ATTR { return equalsAny(v, w0, w1); });
    else
        found = countWhere(p, count, &rest, [&](V v) HWY_ATTR { return equalsAny(v, w0, w1, w2, w3); });
    return found + unitScanPlain::countUnitsEqualTo(units + rest, count - rest, wanted);
}

std::size_t FirstNonAsciiUnit(const char16_t* units, std::size_t count) {
    const Units d;
    if (count < hn::Lanes(d))
        return unitScanPlain::firstNonAsciiUnit(units, count);
    const AliasedUnit* p = asNumbers(units);
    const auto others = hn::Set(d, 0xFF80);
    const std::size_t lanes = hn::Lanes(d);
    const auto at = [&](std::size_t i) HWY_ATTR { return hn::LoadU(d, p + i); };
    const auto anyBit = [&](auto v) HWY_ATTR { return hn::Ne(hn::And(v, others), hn::Zero(d)); };
    return firstWhere(
        d, count, [&](std::size_t i) HWY_ATTR { return anyBit(at(i)); },
        [&](std::size_t i) HWY_ATTR {
            return anyBit(hn::Or(hn::Or(at(i), at(i + lanes)), hn::Or(at(i + 2 * lanes), at(i + 3 * lanes))));
        });
}

std::size_t FirstNonAsciiByte(const std::uint8_t* bytes, std::size_t count) {
    const Bytes d;
    if (count < hn::Lanes(d))
        return unitScanPlain::firstNonAsciiByte(bytes, count);
    const auto high = hn::Set(d, 0x80);
    return firstWhere(d, count,
                      [&](std::size_t i) HWY_ATTR { return hn::TestBit(hn::LoadU(d, bytes + i), high); });
}

std::size_t FirstDifference(const char16_t* left, const char16_t* right, std::size_t count) {
    const Units d;
    if (count < hn::Lanes(d))
        return unitScanPlain::firstDifference(left, right, count);
    const AliasedUnit *l = asNumbers(left), *r = asNumbers(right);
    return firstWhere(
        d, count, [&](std::size_t i) HWY_ATTR { return hn::Ne(hn::LoadU(d, l + i), hn::LoadU(d, r + i)); });
}

/// The membership of the unit in the lowest bit; the others are rubbish. On a little-endian machine four
/// bytes of the bitmap are a word in which the unit's lowest five bits number the bit, which saves masking
/// them.
HWY_INLINE unsigned membership(const std::uint8_t* bitmap, char16_t unit) {
    if constexpr (std::endian::native == std::endian::little) {
        std::uint32_t word;
        std::memcpy(&word, bitmap + (unit >> 5) * sizeof word, sizeof word);
        return word >> (unit & 31);
    } else {
        return bitmap[unit >> 3] >> (unit & 7);
    }
}

/// Whether one of these eight is a member, or with `member` false whether one is not.
template <bool member>
HWY_INLINE bool anyOfEight(const char16_t* units, const std::uint8_t* bitmap) {
    unsigned any = 0, all = 1;
    for (std::size_t k = 0; k < 8; ++k) {
        const unsigned bit = membership(bitmap, units[k]);
        if constexpr (member)
            any |= bit;
        else
            all &= bit;
    }
    return member ? any & 1 : !(all & 1);
}

/// ASCII text never touches the bitmap in memory: its first 16 bytes, which cover the ASCII units, are the
/// table of a byte shuffle that is looked up with bits 3 to 6 of each unit, and a second shuffle makes the
/// mask from bits 0 to 2. Two vectors of units fill one vector of bytes.
template <bool member>
HWY_INLINE std::size_t firstByMembership(const char16_t* units, std::size_t count,
                                         const std::uint8_t* bitmap) {
    const Units d;
    const Bytes d8;
    HWY_ALIGN static constexpr std::uint8_t bitOfIndex[16] = {1, 2, 4, 8, 16, 32, 64, 128,
                                                              1, 2, 4, 8, 16, 32, 64, 128};
    const auto rows = hn::LoadDup128(d8, bitmap);
    const auto bits = hn::LoadDup128(d8, bitOfIndex);
    const auto rowIndex = hn::Set(d8, 0x0F), bitIndex = hn::Set(d8, 0x07);
    const auto notAscii = hn::Set(d, 0xFF80);
    const std::size_t lanes = hn::Lanes(d), block = 2 * lanes;
    const AliasedUnit* p = asNumbers(units);
    std::size_t index = 0;
    for (; index + block <= count; index += block) {
        const auto low = hn::LoadU(d, p + index), high = hn::LoadU(d, p + index + lanes);
        if (hn::AllTrue(d, hn::Eq(hn::And(hn::Or(low, high), notAscii), hn::Zero(d)))) {
            const auto bytes = hn::Or(low, hn::ShiftLeft<8>(high));
            const auto row =
                hn::TableLookupBytes(rows, hn::And(hn::BitCast(d8, hn::ShiftRight<3>(bytes)), rowIndex));
            const auto bit = hn::TableLookupBytes(bits, hn::And(hn::BitCast(d8, bytes), bitIndex));
            const auto wanted = member ? hn::Zero(d8) : bit;
            if (HWY_LIKELY(hn::AllTrue(d8, hn::Eq(hn::And(row, bit), wanted))))
                continue;
        } else {
            bool found = false;
            for (std::size_t k = 0; k < block && !found; k += 8)
                found = anyOfEight<member>(units + index + k, bitmap);
            if (!found)
                continue;
        }
        return index + unitScanPlain::firstUnitByMembership(units + index, block, bitmap, member);
    }
    return index + unitScanPlain::firstUnitByMembership(units + index, count - index, bitmap, member);
}

std::size_t FirstUnitByMembership(const char16_t* units, std::size_t count, const std::uint8_t* bitmap,
                                  bool member) {
    // The table of the shuffle is as wide as a vector of 16 bytes.
    if constexpr (HWY_TARGET == HWY_SCALAR)
        return unitScanPlain::firstUnitByMembership(units, count, bitmap, member);
    return member ? firstByMembership<true>(units, count, bitmap)
                  : firstByMembership<false>(units, count, bitmap);
}

} // namespace
} // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {
namespace {
HWY_EXPORT(FirstUnitEqualTo);
HWY_EXPORT(FirstPairOfUnits);
HWY_EXPORT(CountUnitsEqualTo);
HWY_EXPORT(FirstUnitByMembership);
HWY_EXPORT(FirstNonAsciiUnit);
HWY_EXPORT(FirstNonAsciiByte);
HWY_EXPORT(FirstDifference);
} // namespace

namespace unitScanVector {

std::size_t firstUnitEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted) {
    return HWY_DYNAMIC_DISPATCH(FirstUnitEqualTo)(units, count, wanted);
}

std::size_t firstPairOfUnits(const char16_t* units, std::size_t count, char16_t first, char16_t second) {
    return HWY_DYNAMIC_DISPATCH(FirstPairOfUnits)(units, count, first, second);
}

std::size_t countUnitsEqualTo(const char16_t* units, std::size_t count, const UnitsToFind& wanted) {
    return HWY_DYNAMIC_DISPATCH(CountUnitsEqualTo)(units, count, wanted);
}

std::size_t firstUnitByMembership(const char16_t* units, std::size_t count, const std::uint8_t* bitmap,
                                  bool member) {
    return HWY_DYNAMIC_DISPATCH(FirstUnitByMembership)(units, count, bitmap, member);
}

std::size_t firstNonAsciiUnit(const char16_t* units, std::size_t count) {
    return HWY_DYNAMIC_DISPATCH(FirstNonAsciiUnit)(units, count);
}

std::size_t firstNonAsciiByte(const std::uint8_t* bytes, std::size_t count) {
    return HWY_DYNAMIC_DISPATCH(FirstNonAsciiByte)(bytes, count);
}

std::size_t firstDifference(const char16_t* left, const char16_t* right, std::size_t count) {
    return HWY_DYNAMIC_DISPATCH(FirstDifference)(left, right, count);
}

} // namespace unitScanVector
} // namespace kelvo
#endif
