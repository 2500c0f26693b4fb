#include "MemoryReading.h"

#include "platform/foundation/units/Vectors.h"

#include <cstddef>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "memoryReading.cpp"
#include <hwy/foreach_target.h> // IWYU pragma: keep

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace kelvo::HWY_NAMESPACE {

namespace hn = hwy::HWY_NAMESPACE;

HWY_ATTR std::uint64_t ReadUnits(const char16_t* text, std::size_t length) {
    const hn::ScalableTag<std::uint16_t> tag;
    const std::size_t lanes = hn::Lanes(tag);
    const auto* units = asNumbers(text);
    auto a = hn::Zero(tag), b = a, c = a, d = a;
    std::size_t index = 0;
    for (; index + 4 * lanes <= length; index += 4 * lanes) {
        a = hn::Or(a, hn::LoadU(tag, units + index));
        b = hn::Or(b, hn::LoadU(tag, units + index + lanes));
        c = hn::Or(c, hn::LoadU(tag, units + index + 2 * lanes));
        d = hn::Or(d, hn::LoadU(tag, units + index + 3 * lanes));
    }
    HWY_ALIGN std::uint16_t seen[hn::MaxLanes(tag)];
    hn::Store(hn::Or(hn::Or(a, b), hn::Or(c, d)), tag, seen);
    std::uint64_t all = 0;
    for (std::size_t lane = 0; lane < lanes; ++lane)
        all |= seen[lane];
    for (; index < length; ++index)
        all |= units[index];
    return all;
}

} // namespace kelvo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace kelvo {
HWY_EXPORT(ReadUnits);

std::uint64_t bench::readUnits(std::u16string_view text) {
    return HWY_DYNAMIC_DISPATCH(ReadUnits)(text.data(), text.size());
}

} // namespace kelvo
#endif
