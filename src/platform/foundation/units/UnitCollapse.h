#pragma once

#include "platform/foundation/units/UnitScan.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// What the vector form may read and write past the text.
inline constexpr std::size_t unitCollapseSlack = 16;

namespace unitCollapsePlain {

inline char16_t* collapse(const char16_t* units, std::size_t count, char16_t* to, const std::uint8_t* bitmap,
                          bool stopsAtAmpersand, bool afterMember = false) {
    for (const char16_t* end = units + count; units < end; ++units) {
        if (unitIsInBitmap(bitmap, *units)) {
            if (!afterMember)
                *to++ = u' ';
            afterMember = true;
        } else {
            if (*units == u'&' && stopsAtAmpersand)
                return nullptr;
            *to++ = *units;
            afterMember = false;
        }
    }
    return to;
}

} // namespace unitCollapsePlain

namespace unitCollapseVector {

char16_t* collapse(const char16_t* units, std::size_t count, std::size_t readable, char16_t* to,
                   const std::uint8_t* bitmap, bool stopsAtAmpersand);

} // namespace unitCollapseVector

/// Copies the units, each stretch of members of the bitmap (8,192 bytes, as unitIsInBitmap reads it) as one
/// U+0020, and returns the end of the copy. With `stopsAtAmpersand` null as soon as "&" is met; what has been
/// written by then does not matter.
///
/// `readable` units from `units` on may be read, `count` of them or more. `to` has room for `count` units and
/// unitCollapseSlack more, and is apart from all of them, or it is a place at or before `units` in the same
/// array, from which nothing past the text is changed.
inline char16_t* collapseUnits(const char16_t* units, std::size_t count, std::size_t readable, char16_t* to,
                               const std::uint8_t* bitmap, bool stopsAtAmpersand) {
    return readable < unitCollapseSlack
               ? unitCollapsePlain::collapse(units, count, to, bitmap, stopsAtAmpersand)
               : unitCollapseVector::collapse(units, count, readable, to, bitmap, stopsAtAmpersand);
}

} // namespace kelvo
