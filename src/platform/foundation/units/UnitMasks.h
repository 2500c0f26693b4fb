#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace kelvo {

// Bit masks of where a handful of characters occur, for scanners whose next steps depend on which of them
// comes next: one vector pass looks at the text, and what follows are shifts of 64-bit words.

/// The number of UTF-16 code units that one mask covers.
inline constexpr std::size_t unitsPerMask = 64;
/// How many characters are looked for.
inline constexpr std::size_t unitMaskKinds = 5;

/// For `count` units, one mask for each character and each 64 units begun: bit n of masks[k * stride + block]
/// tells whether unit n of the block is character k; bits past the count are 0. The characters must be ASCII
/// and not U+0000. Nothing past the count is read, and nothing needs to be aligned.
void makeUnitMasks(const char16_t* units, std::size_t count,
                   const std::array<std::uint8_t, unitMaskKinds>& characters, std::uint64_t* masks,
                   std::size_t stride);

} // namespace kelvo
