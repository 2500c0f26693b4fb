#include "platform/foundation/units/UnitMasks.h"

#include "platform/foundation/units/Vectors.h"

#include <bit>
#include <cstring>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "UnitMasks.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {
namespace {

#if HWY_TARGET == HWY_SCALAR

struct Wanted {
    explicit Wanted(const std::uint8_t* bytes) : characters(bytes) {}
    const std::uint8_t* characters;
};

void makeMasks(const AliasedUnit* block, const Wanted& wanted, std::uint64_t* masks, std::size_t stride) {
    for (std::size_t kind = 0; kind < unitMaskKinds; ++kind) {
        std::uint64_t bits = 0;
        for (std::size_t index = 0; index < unitsPerMask; ++index)
            bits |= std::uint64_t{block[index] == wanted.characters[kind]} << index;
        masks[kind * stride] = bits;
    }
}

#else

namespace hn = hwy::HWY_NAMESPACE;
// Mask bits are stored as bytes, lowest first.
static_assert(std::endian::native == std::endian::little);
// Vectors of more than 64 bytes would pass a block.
using Bytes = hn::CappedTag<std::uint8_t, unitsPerMask>;

/// The units as bytes. What passes 0xFF becomes 0 or 0xFF, which no wanted character is.
HWY_INLINE hn::Vec<Bytes> narrowed(const AliasedUnit* units) {
    const Bytes d8;
    const hn::Half<Bytes> half;
    const hn::RepartitionToWide<Bytes> d16;
    const hn::RebindToSigned<decltype(d16)> asSigned;
    const auto low = hn::BitCast(asSigned, hn::LoadU(d16, units));
    const auto high = hn::BitCast(asSigned, hn::LoadU(d16, units + hn::Lanes(d16)));
    return hn::Combine(d8, hn::DemoteTo(half, high), hn::DemoteTo(half, low));
}

struct Wanted {
    explicit Wanted(const std::uint8_t* characters) {
        for (std::size_t kind = 0; kind < unitMaskKinds; ++kind)
            hn::Store(hn::Set(Bytes(), characters[kind]), Bytes(), vectors[kind]);
    }
    HWY_ALIGN std::uint8_t vectors[unitMaskKinds][hn::MaxLanes(Bytes())];
};

HWY_INLINE void makeMasks(const AliasedUnit* block, const Wanted& wanted, std::uint64_t* masks,
                          std::size_t stride) {
    const Bytes d8;
    const std::size_t lanes = hn::Lanes(d8);
    for (std::size_t start = 0; start < unitsPerMask; start += lanes) {
        const auto bytes = narrowed(block + start);
        for (std::size_t kind = 0; kind < unitMaskKinds; ++kind) {
            auto* bits = reinterpret_cast<std::uint8_t*>(masks + kind * stride);
            hn::StoreMaskBits(d8, hn::Eq(bytes, hn::Load(d8, wanted.vectors[kind])), bits + start / 8);
        }
    }
}

#endif

void MakeUnitMasks(const char16_t* units, std::size_t count, const std::uint8_t* characters,
                   std::uint64_t* masks, std::size_t stride) {
    const Wanted wanted(characters);
    const AliasedUnit* block = asNumbers(units);
    for (; count >= unitsPerMask; count -= unitsPerMask, block += unitsPerMask)
        makeMasks(block, wanted, masks++, stride);
    if (count > 0) {
        std::uint16_t last[unitsPerMask] = {};
        std::memcpy(last, block, count * sizeof(std::uint16_t));
        makeMasks(last, wanted, masks, stride);
    }
}

} // namespace
} // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {
namespace {
HWY_EXPORT(MakeUnitMasks);
} // namespace

void makeUnitMasks(const char16_t* units, std::size_t count,
                   const std::array<std::uint8_t, unitMaskKinds>& characters, std::uint64_t* masks,
                   std::size_t stride) {
    HWY_DYNAMIC_DISPATCH(MakeUnitMasks)(units, count, characters.data(), masks, stride);
}

} // namespace kelvo
#endif
