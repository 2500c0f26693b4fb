#include "platform/ledger/ByteHash.h"

#include <bit>
#include <cstddef>
#include <cstring>

namespace kelvo {
namespace {

constexpr std::uint64_t prime1 = 0x9E3779B185EBCA87;
constexpr std::uint64_t prime2 = 0xC2B2AE3D27D4EB4F;
constexpr std::uint64_t prime3 = 0x165667B19E3779F9;
constexpr std::uint64_t prime4 = 0x85EBCA77C2B2AE63;
constexpr std::uint64_t prime5 = 0x27D4EB2F165667C5;

static_assert(std::endian::native == std::endian::little, "words are read as they stand");

template <typename Word>
std::uint64_t wordAt(const std::uint8_t* place) {
    Word word;
    std::memcpy(&word, place, sizeof word);
    return word;
}

std::uint64_t round(std::uint64_t lane, std::uint64_t input) {
    return std::rotl(lane + input * prime2, 31) * prime1;
}

std::uint64_t merge(std::uint64_t hash, std::uint64_t lane) {
    return (hash ^ round(0, lane)) * prime1 + prime4;
}

} // namespace

std::uint64_t hashOfBytes(std::span<const std::uint8_t> bytes) {
    const std::uint8_t* place = bytes.data();
    std::size_t left = bytes.size();
    std::uint64_t hash = prime5;
    if (left >= 32) {
        std::uint64_t lanes[] = {prime1 + prime2, prime2, 0, 0 - prime1};
        for (; left >= 32; left -= 32) {
            for (std::uint64_t& lane : lanes) {
                lane = round(lane, wordAt<std::uint64_t>(place));
                place += 8;
            }
        }
        hash = std::rotl(lanes[0], 1) + std::rotl(lanes[1], 7) + std::rotl(lanes[2], 12) +
               std::rotl(lanes[3], 18);
        for (const std::uint64_t lane : lanes)
            hash = merge(hash, lane);
    }
    hash += bytes.size();
    for (; left >= 8; left -= 8, place += 8)
        hash = std::rotl(hash ^ round(0, wordAt<std::uint64_t>(place)), 27) * prime1 + prime4;
    if (left >= 4) {
        hash = std::rotl(hash ^ wordAt<std::uint32_t>(place) * prime1, 23) * prime2 + prime3;
        left -= 4;
        place += 4;
    }
    for (; left > 0; --left, ++place)
        hash = std::rotl(hash ^ *place * prime5, 11) * prime1;
    hash = (hash ^ hash >> 33) * prime2;
    hash = (hash ^ hash >> 29) * prime3;
    return hash ^ hash >> 32;
}

} // namespace kelvo
