#include "platform/foundation/units/UnitCollapse.h"

#include "platform/foundation/units/Vectors.h"

#include <algorithm>
#include <array>
#include <bit>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "UnitCollapse.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {
namespace {

#if HWY_TARGET != HWY_SCALAR

namespace hn = hwy::HWY_NAMESPACE;
// Words are short: wider vectors would only meet more reasons to stop.
using Units = hn::FixedTag<std::uint16_t, 8>;
using Bytes = hn::FixedTag<std::uint8_t, 16>;

constexpr std::size_t block = 16;
static_assert(block == unitCollapseSlack);

template <class D, class M>
HWY_INLINE unsigned bitsOf(D d, M mask) {
    std::array<std::uint8_t, 8> bits{};
    hn::StoreMaskBits(d, mask, bits.data());
    return bits[0] | static_cast<unsigned>(bits[1]) << 8;
}

/// `writesWholeBlocks`: what lies past the copied part of a block may be overwritten.
template <bool writesWholeBlocks>
HWY_INLINE char16_t* collapse(const char16_t* units, std::size_t count, std::size_t readable, char16_t* to,
                              const std::uint8_t* bitmap, bool stopsAtAmpersand) {
    const Units d;
    const Bytes d8;
    const hn::Half<Bytes> d8Half;
    HWY_ALIGN static constexpr std::uint8_t bitOfIndex[16] = {1, 2, 4, 8, 16, 32, 64, 128,
                                                              1, 2, 4, 8, 16, 32, 64, 128};
    const auto rows = hn::LoadU(d8, bitmap), bits = hn::Load(d8, bitOfIndex);
    const auto rowIndex = hn::Set(d8, 0x0F), bitIndex = hn::Set(d8, 0x07);
    const auto space = hn::Set(d8, ' ');
    const auto ampersand = hn::Set(d8, stopsAtAmpersand ? '&' : 0xFF);
    const AliasedUnit* const from = asNumbers(units);
    bool afterMember = false;
    std::size_t index = 0;
    while (index < count) {
        if (readable - index < block)
            return unitCollapsePlain::collapse(units + index, count - index, to, bitmap, stopsAtAmpersand,
                                               afterMember);
        const auto low = hn::LoadU(d, from + index), high = hn::LoadU(d, from + index + 8);
        const std::size_t here = std::min(block, count - index);
        const unsigned lanes = (1u << here) - 1;
        if (HWY_UNLIKELY(
                !hn::AllTrue(d, hn::Eq(hn::And(hn::Or(low, high), hn::Set(d, 0xFF80)), hn::Zero(d))))) {
            unsigned members = 0;
            unsigned ampersands = 0;
            for (std::size_t k = 0; k < block; ++k) {
                const unsigned unit = from[index + k];
                members |= (bitmap[unit >> 3] >> (unit & 7) & 1u) << k;
                ampersands |= static_cast<unsigned>(unit == u'&') << k;
            }
            // What stays as it is in all of the block is copied at once; the rest is rare enough.
            if ((members & lanes) == 0 && (!stopsAtAmpersand || (ampersands & lanes) == 0) && here == block) {
                AliasedUnit* const out = asNumbers(to);
                hn::StoreU(low, d, out);
                hn::StoreU(high, d, out + 8);
                to += block;
                afterMember = false;
            } else {
                to = unitCollapsePlain::collapse(units + index, here, to, bitmap, stopsAtAmpersand,
                                                 afterMember);
                if (!to)
                    return nullptr;
                afterMember = members >> (here - 1) & 1;
            }
            index += here;
            continue;
        }
        const auto bytes = hn::Combine(d8, hn::TruncateTo(d8Half, high), hn::TruncateTo(d8Half, low));
        const auto row = hn::TableLookupBytes(
            rows, hn::And(hn::BitCast(d8, hn::ShiftRight<3>(hn::BitCast(d, bytes))), rowIndex));
        const auto bit = hn::TableLookupBytes(bits, hn::And(bytes, bitIndex));
        const auto isMember = hn::Eq(hn::And(row, bit), bit);
        const unsigned members = bitsOf(d8, isMember);
        const unsigned ampersands = bitsOf(d8, hn::Eq(bytes, ampersand)) & lanes;
        if (HWY_UNLIKELY(ampersands != 0))
            return nullptr;
        const unsigned repeated = members & (members << 1 | static_cast<unsigned>(afterMember)) & lanes;
        const std::size_t copied =
            repeated == 0 ? here : static_cast<std::size_t>(std::countr_zero(repeated));
        const auto result = hn::IfThenElse(isMember, space, bytes);
        AliasedUnit* const out = asNumbers(to);
        if (writesWholeBlocks || copied == block) {
            hn::StoreU(hn::PromoteTo(d, hn::LowerHalf(d8Half, result)), d, out);
            hn::StoreU(hn::PromoteTo(d, hn::UpperHalf(d8Half, result)), d, out + 8);
        } else {
            HWY_ALIGN std::uint8_t rest[block];
            hn::Store(result, d8, rest);
            for (std::size_t k = 0; k < copied; ++k)
                out[k] = rest[k];
        }
        to += copied;
        index += copied;
        if (repeated == 0) {
            afterMember = members >> (here - 1) & 1;
            continue;
        }
        index += firstUnitNotInBitmap(units + index, count - index, bitmap);
        afterMember = true;
    }
    return to;
}

char16_t* Collapse(const char16_t* units, std::size_t count, std::size_t readable, char16_t* to,
                   const std::uint8_t* bitmap, bool stopsAtAmpersand) {
    const bool isInPlace = to <= units && units < to + count + block;
    return isInPlace ? collapse<false>(units, count, readable, to, bitmap, stopsAtAmpersand)
                     : collapse<true>(units, count, readable, to, bitmap, stopsAtAmpersand);
}

#else

char16_t* Collapse(const char16_t* units, std::size_t count, std::size_t, char16_t* to,
                   const std::uint8_t* bitmap, bool stopsAtAmpersand) {
    return unitCollapsePlain::collapse(units, count, to, bitmap, stopsAtAmpersand);
}

#endif

} // namespace
} // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {
namespace {
HWY_EXPORT(Collapse);
} // namespace

namespace unitCollapseVector {

char16_t* collapse(const char16_t* units, std::size_t count, std::size_t readable, char16_t* to,
                   const std::uint8_t* bitmap, bool stopsAtAmpersand) {
    return HWY_DYNAMIC_DISPATCH(Collapse)(units, count, readable, to, bitmap, stopsAtAmpersand);
}

} // namespace unitCollapseVector
} // namespace kelvo
#endif
