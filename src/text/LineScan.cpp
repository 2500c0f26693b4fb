#include "text/LineScan.h"

#include "platform/foundation/units/UnitScan.h"
#include "text/UnitBitmap.h"

namespace kelvo {

namespace {

constexpr UnitBitmap lineEnds(u"\n\f\r\u2028\u2029\u0003\uFFFC");

} // namespace

LineSpan lineFrom(std::u16string_view text, std::size_t start) {
    const std::u16string_view rest = text.substr(start);
    const std::size_t length = firstUnitInBitmap(rest.data(), rest.size(), lineEnds.rep());
    const std::u16string_view ending = rest.substr(length, rest.substr(length).starts_with(u"\r\n") ? 2 : 1);
    return {rest.substr(0, length), ending, start + length + ending.size()};
}

} // namespace kelvo
