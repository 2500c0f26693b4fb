#pragma once

// What all files of vector code agree on. Included before Highway's foreach_target.h, because each of them is
// compiled once for each kind of vector that the processor may have.

// Nothing here uses what this adds to AVX-512, and each kind costs build time.
#define HWY_DISABLED_TARGETS HWY_AVX3_DL

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
