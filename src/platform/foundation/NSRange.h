#pragma once

#include "platform/foundation/Visibility.h"

#include <cstddef>

namespace KELVO_PUBLIC kelvo {

/// The absent location: the largest signed 32-bit integer, on every machine.
inline constexpr std::size_t NSNotFound = 0x7FFFFFFF;

/// The most bytes that the contents of one string or data object may take. Whatever would pass it is refused.
inline constexpr std::size_t maximumSizeInBytes = 0x7FFFFFFE;

/// Locations and lengths count UTF-16 code units in strings, bytes in data, elements in arrays.
struct NSRange {
    std::size_t location = 0;
    std::size_t length = 0;

    friend bool operator==(const NSRange&, const NSRange&) = default;
};

/// True when the whole range lies inside something of the given length; never overflows.
constexpr bool rangeFits(NSRange range, std::size_t length) {
    return range.location <= length && range.length <= length - range.location;
}

} // namespace kelvo
