#pragma once

// What all files of vector code agree on. Included before Highway's foreach_target.h, because each of them is
// compiled once for each kind of vector that the processor may have.

// AVX-512 stays out: the scans are bound by memory long before they would need it, and it costs build time and
// clock rate.
#define HWY_DISABLED_TARGETS (HWY_AVX3 | HWY_AVX3_DL)

#include <cstdint>

namespace kelvo {

/// The standard lets no pointer to char16_t be read as uint16_t; both compilers are told that these may be.
using AliasedUnit [[gnu::may_alias]] = std::uint16_t;

inline const AliasedUnit* asNumbers(const char16_t* units) {
    return reinterpret_cast<const AliasedUnit*>(units);
}
inline AliasedUnit* asNumbers(char16_t* units) {
    return reinterpret_cast<AliasedUnit*>(units);
}

} // namespace kelvo
