#include "platform/foundation/encodings/NSStringNumbers.h"

#include "platform/foundation/encodings/NSCharacterSet.h"
#include "platform/foundation/units/ASCII.h"

#include <limits>

namespace kelvo {

std::int32_t intValue(std::u16string_view text) {
    const NSCharacterSet& white = NSCharacterSet::whitespaceAndNewlineCharacterSet();
    std::size_t index = 0;
    while (index < text.size() && white.characterIsMember(text[index]))
        ++index;
    const bool isNegative = index < text.size() && text[index] == u'-';
    if (index < text.size() && (text[index] == u'-' || text[index] == u'+'))
        ++index;
    const std::int64_t limit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + isNegative;
    std::int64_t magnitude = 0;
    for (; index < text.size() && isASCIIDigit(text[index]) && magnitude < limit; ++index)
        magnitude = magnitude * 10 + (text[index] - u'0');
    if (magnitude > limit)
        magnitude = limit;
    return static_cast<std::int32_t>(isNegative ? -magnitude : magnitude);
}

} // namespace kelvo
