#include "platform/appkit/rtfreader/RTFBorder.h"

#include "platform/appkit/rtfreader/RTFColorTable.h"
#include "platform/appkit/rtfreader/RTFFormats.h"
#include "platform/appkit/rtfreader/RTFWords.h"

#include <algorithm>

namespace kelvo {
namespace {

/// The width of borders that state a style and no width: a hair line.
constexpr std::int32_t thinnestBorder = 10;
/// 1584 points, the widest page there is.
constexpr std::int32_t widest = 31680;

template <bool isNone>
void setNone(RTFBorder& border, const RTFToken&) {
    border.isNone = isNone;
}

} // namespace

std::span<const RTFWord<RTFBorder>> RTFBorder::words() {
    static constexpr RTFWord<RTFBorder> words[] = {
        {"brdrnil", setNone<true>},
        {"brdrnone", setNone<true>},
        {"brdrtbl", setNone<true>},
        {"brdrdash", setNone<false>},
        {"brdrdashd", setNone<false>},
        {"brdrdashdd", setNone<false>},
        {"brdrdashsm", setNone<false>},
        {"brdrdb", setNone<false>},
        {"brdrdot", setNone<false>},
        {"brdremboss", setNone<false>},
        {"brdrengrave", setNone<false>},
        {"brdrhair", setNone<false>},
        {"brdrinset", setNone<false>},
        {"brdroutset", setNone<false>},
        {"brdrs", setNone<false>},
        {"brdrsh", setNone<false>},
        {"brdrth", setNone<false>},
        {"brdrtriple", setNone<false>},
        {"brdrwavy", setNone<false>},
        {"brdrwavydb", setNone<false>},
        {"brdrw", [](RTFBorder& border,
                     const RTFToken& token) { border.width = std::clamp(token.parameter, 0, widest); }},
        {"brdrcf", [](RTFBorder& border, const RTFToken& token) { border.color = token.parameter; }},
        {"brsp", [](RTFBorder& border,
                    const RTFToken& token) { border.space = std::clamp(token.parameter, 0, widest); }},
    };
    return words;
}

NSTextBlockBorder RTFBorder::border(const RTFColorTable& colors) const {
    if (!isStated || isNone)
        return {};
    return {pointsFromTwips(width < 0 ? thinnestBorder : width), colors.colorOf(color)};
}

} // namespace kelvo
