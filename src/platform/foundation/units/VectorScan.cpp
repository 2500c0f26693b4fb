#include "platform/foundation/units/VectorScan.h"

#include "platform/foundation/units/Vectors.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "VectorScan.cpp"
#include <hwy/foreach_target.h> // IWYU pragma: keep

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvo {
namespace HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

using Units = hn::ScalableTag<std::uint16_t>;
using HalfBytes = hn::Rebind<std::uint8_t, Units>;

HWY_ATTR std::size_t PrefixInRanges(const char16_t* text, std::size_t length, const UnitRange* ranges,
                                    std::size_t rangeCount) {
    const Units tag;
    const std::size_t lanes = hn::Lanes(tag);
    const auto* units = asNumbers(text);
    const auto isIn = [&](auto vector, auto first, auto count)
                          HWY_ATTR { return hn::Lt(hn::Sub(vector, first), count); };
    // Most text stays within few ranges for long, such as letters and punctuation: those that were last needed are tried
    // first, two and two, the others only where they do not suffice.
    auto first = hn::Set(tag, ranges[0].first), count = hn::Set(tag, ranges[0].count);
    auto otherFirst = first, otherCount = count, thirdFirst = first, thirdCount = count, fourthFirst = first,
         fourthCount = count;
    std::size_t index = 0;
    for (; index + 2 * lanes <= length; index += 2 * lanes) {
        const auto left = hn::LoadU(tag, units + index);
        const auto right = hn::LoadU(tag, units + index + lanes);
        auto isLeftIn = hn::Or(isIn(left, first, count), isIn(left, otherFirst, otherCount));
        auto isRightIn = hn::Or(isIn(right, first, count), isIn(right, otherFirst, otherCount));
        bool isWhollyIn = hn::AllTrue(tag, hn::And(isLeftIn, isRightIn));
        if (isWhollyIn)
            continue;
        isLeftIn = hn::Or(isLeftIn,
                          hn::Or(isIn(left, thirdFirst, thirdCount), isIn(left, fourthFirst, fourthCount)));
        isRightIn = hn::Or(
            isRightIn, hn::Or(isIn(right, thirdFirst, thirdCount), isIn(right, fourthFirst, fourthCount)));
        isWhollyIn = hn::AllTrue(tag, hn::And(isLeftIn, isRightIn));
        for (std::size_t range = 0; HWY_UNLIKELY(!isWhollyIn) && range < rangeCount; ++range) {
            const auto nextFirst = hn::Set(tag, ranges[range].first);
            const auto nextCount = hn::Set(tag, ranges[range].count);
            isLeftIn = hn::Or(isLeftIn, isIn(left, nextFirst, nextCount));
            isRightIn = hn::Or(isRightIn, isIn(right, nextFirst, nextCount));
            isWhollyIn = hn::AllTrue(tag, hn::And(isLeftIn, isRightIn));
            if (isWhollyIn) {
                fourthFirst = thirdFirst;
                fourthCount = thirdCount;
                thirdFirst = first;
                thirdCount = count;
                first = otherFirst;
                count = otherCount;
                otherFirst = nextFirst;
                otherCount = nextCount;
            }
        }
        if (!isWhollyIn)
            break;
    }
    for (; index < length; ++index) {
        std::size_t range = 0;
        while (range < rangeCount &&
               static_cast<std::uint16_t>(units[index] - ranges[range].first) >= ranges[range].count)
            ++range;
        if (range == rangeCount)
            break;
    }
    return index;
}

HWY_ATTR std::size_t WidenASCII(const std::uint8_t* HWY_RESTRICT bytes, std::size_t length,
                                char16_t* HWY_RESTRICT text) {
    const Units tag;
    const HalfBytes half;
    const std::size_t lanes = hn::Lanes(tag);
    auto* units = asNumbers(text);
    std::size_t index = 0;
    for (; index + 2 * lanes <= length; index += 2 * lanes) {
        const auto left = hn::PromoteTo(tag, hn::LoadU(half, bytes + index));
        const auto right = hn::PromoteTo(tag, hn::LoadU(half, bytes + index + lanes));
        hn::StoreU(left, tag, units + index);
        hn::StoreU(right, tag, units + index + lanes);
        if (!hn::AllTrue(tag, hn::Lt(hn::Or(left, right), hn::Set(tag, 0x80))))
            break;
    }
    for (; index < length && bytes[index] < 0x80; ++index)
        units[index] = bytes[index];
    return index;
}

HWY_ATTR std::size_t NarrowASCII(const char16_t* HWY_RESTRICT text, std::size_t length,
                                 std::uint8_t* HWY_RESTRICT bytes) {
    const Units tag;
    const HalfBytes half;
    const hn::RebindToSigned<Units> signedTag;
    const std::size_t lanes = hn::Lanes(tag);
    const auto* units = asNumbers(text);
    std::size_t index = 0;
    for (; index + lanes <= length; index += lanes) {
        const auto vector = hn::LoadU(tag, units + index);
        if (!hn::AllTrue(tag, hn::Lt(vector, hn::Set(tag, 0x80))))
            break;
        hn::StoreU(hn::DemoteTo(half, hn::BitCast(signedTag, vector)), half, bytes + index);
    }
    for (; index < length && units[index] < 0x80; ++index)
        bytes[index] = static_cast<std::uint8_t>(units[index]);
    return index;
}

HWY_ATTR void Widen(const std::uint8_t* HWY_RESTRICT bytes, std::size_t length, char16_t* HWY_RESTRICT text) {
    const Units tag;
    const HalfBytes half;
    const std::size_t lanes = hn::Lanes(tag);
    auto* units = asNumbers(text);
    std::size_t index = 0;
    for (; index + lanes <= length; index += lanes)
        hn::StoreU(hn::PromoteTo(tag, hn::LoadU(half, bytes + index)), tag, units + index);
    for (; index < length; ++index)
        units[index] = bytes[index];
}

} // namespace HWY_NAMESPACE
} // namespace kelvo
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {

HWY_EXPORT(PrefixInRanges);
HWY_EXPORT(WidenASCII);
HWY_EXPORT(NarrowASCII);
HWY_EXPORT(Widen);

std::size_t lengthOfPrefixInRanges(std::u16string_view units, std::span<const UnitRange> ranges) {
    return HWY_DYNAMIC_DISPATCH(PrefixInRanges)(units.data(), units.size(), ranges.data(), ranges.size());
}

std::size_t widenASCIIPrefix(const std::uint8_t* bytes, std::size_t length, char16_t* units) {
    return HWY_DYNAMIC_DISPATCH(WidenASCII)(bytes, length, units);
}

std::size_t narrowASCIIPrefix(const char16_t* units, std::size_t length, std::uint8_t* bytes) {
    return HWY_DYNAMIC_DISPATCH(NarrowASCII)(units, length, bytes);
}

void widenBytes(const std::uint8_t* bytes, std::size_t length, char16_t* units) {
    HWY_DYNAMIC_DISPATCH(Widen)(bytes, length, units);
}

} // namespace kelvo
#endif
