#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

// Numbers of formats that have the most significant byte first. Reading: the caller has seen to it that the
// bytes are there.

constexpr std::uint32_t bigEndian16(std::span<const std::uint8_t> bytes, std::size_t at) {
    return std::uint32_t{bytes[at]} << 8 | bytes[at + 1];
}

constexpr std::uint32_t bigEndian24(std::span<const std::uint8_t> bytes, std::size_t at) {
    return bigEndian16(bytes, at) << 8 | bytes[at + 2];
}

constexpr std::uint32_t bigEndian32(std::span<const std::uint8_t> bytes, std::size_t at) {
    return bigEndian16(bytes, at) << 16 | bigEndian16(bytes, at + 2);
}

/// Appends the lowest `sizeInBytes` bytes of the number.
inline void appendBigEndian(std::vector<std::uint8_t>& bytes, std::uint64_t number, std::size_t sizeInBytes) {
    for (std::size_t left = sizeInBytes; left > 0; --left)
        bytes.push_back(static_cast<std::uint8_t>(number >> (8 * (left - 1))));
}

} // namespace kelvo
