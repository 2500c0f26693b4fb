#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

// The codecs of TIFF, the writing half. Each appends to `out`.

/// All that is handed over, as one strip.
void compressWithLZW(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& out);
/// One row: runs do not go on from one to the next.
void compressRowWithPackBits(std::span<const std::uint8_t> bytes, std::vector<std::uint8_t>& out);

} // namespace kelvo
