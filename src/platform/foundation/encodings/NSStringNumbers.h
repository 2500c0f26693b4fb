#pragma once

#include <cstdint>
#include <string_view>

namespace kelvo {

// The decimal number that the text begins with: after any white space (White_Space) an optional sign, "+" or
// "-", and then ASCII digits. What follows does not matter. 0 when there is no number there.

/// Held at the ends of the range when it does not fit.
std::int32_t intValue(std::u16string_view text);
std::int64_t longLongValue(std::u16string_view text);
/// With a fraction after a dot and an exponent after "e" or "E", if they are there, in whatever locale.
/// Infinite when it does not fit.
double doubleValue(std::u16string_view text);

} // namespace kelvo
