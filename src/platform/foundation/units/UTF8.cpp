#include "platform/foundation/units/UTF8.h"

#include "platform/foundation/units/VectorScan.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace kelvo {
namespace {

bool isContinuation(std::uint8_t byte) {
    return (byte & 0xC0) == 0x80;
}

// Widens eight bytes; returns how many of the first are ASCII.
std::size_t widenEight(const std::uint8_t* bytes, char16_t* units) {
    using Eight [[gnu::vector_size(8)]] = std::uint8_t;
    using WideEight [[gnu::vector_size(16)]] = std::uint16_t;
    Eight narrow;
    std::memcpy(&narrow, bytes, sizeof(narrow));
    const auto wide = __builtin_convertvector(narrow, WideEight);
    std::memcpy(units, &wide, sizeof(wide));
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof(word));
    const std::uint64_t high = word & 0x8080808080808080;
    if (high == 0)
        return 8;
    return static_cast<std::size_t>(std::endian::native == std::endian::little ? std::countr_zero(high)
                                                                               : std::countl_zero(high)) /
           8;
}

// Leading sequences of two bytes, up to `most` of them.
std::size_t decodePairs(const std::uint8_t* bytes, std::size_t most, char16_t* units) {
    std::size_t count = 0;
    for (; count < most; ++count, bytes += 2) {
        if (bytes[0] < 0xC2 || bytes[0] >= 0xE0 || !isContinuation(bytes[1]))
            break;
        units[count] = static_cast<char16_t>((bytes[0] & 0x1F) << 6 | (bytes[1] & 0x3F));
    }
    return count;
}

// The same with three bytes.
std::size_t decodeTriples(const std::uint8_t* bytes, std::size_t most, char16_t* units) {
    std::size_t count = 0;
    for (; count < most; ++count, bytes += 3) {
        const unsigned unit = (bytes[0] & 0x0Fu) << 12 | (bytes[1] & 0x3Fu) << 6 | (bytes[2] & 0x3Fu);
        if ((bytes[0] & 0xF0) != 0xE0 || !isContinuation(bytes[1]) || !isContinuation(bytes[2]) ||
            unit < 0x800 || isSurrogate(unit))
            break;
        units[count] = static_cast<char16_t>(unit);
    }
    return count;
}

/// What the first byte of a sequence says: how many follow, and between what the second one has to lie.
struct Lead {
    unsigned count;
    std::uint8_t least;
    std::uint8_t most;
};

Lead leadOfSequence(std::uint8_t byte) {
    if (byte < 0xC2 || byte > 0xF4)
        return {0, 0, 0};
    if (byte < 0xE0)
        return {1, 0x80, 0xBF};
    // No longer forms than needed, no surrogates, nothing past 0x10FFFF.
    if (byte < 0xF0)
        return {2, static_cast<std::uint8_t>(byte == 0xE0 ? 0xA0 : 0x80),
                static_cast<std::uint8_t>(byte == 0xED ? 0x9F : 0xBF)};
    return {3, static_cast<std::uint8_t>(byte == 0xF0 ? 0x90 : 0x80),
            static_cast<std::uint8_t>(byte == 0xF4 ? 0x8F : 0xBF)};
}

} // namespace

char32_t nextCharacter(std::u16string_view units, std::size_t& index) {
    const char32_t unit = units[index++];
    if (!isLeadSurrogate(unit) || index == units.size() || !isTrailSurrogate(units[index]))
        return unit;
    return 0x10000 + ((unit & 0x3FF) << 10 | (units[index++] & 0x3FF));
}

char32_t nextUTF8Character(std::span<const std::uint8_t> bytes, std::size_t& index) {
    const std::uint8_t first = bytes[index++];
    if (first < 0x80)
        return first;
    const Lead lead = leadOfSequence(first);
    if (lead.count == 0)
        return notACharacter;
    char32_t character = first & (0x3F >> lead.count);
    for (unsigned place = 0; place < lead.count; ++place) {
        const bool isIn =
            index < bytes.size() && (place == 0 ? bytes[index] >= lead.least && bytes[index] <= lead.most
                                                : isContinuation(bytes[index]));
        if (!isIn)
            return notACharacter;
        character = character << 6 | (bytes[index++] & 0x3F);
    }
    return character;
}

char16_t* writeCharacter(char32_t character, char16_t* units) {
    if (character < 0x10000) {
        *units++ = static_cast<char16_t>(character);
        return units;
    }
    *units++ = static_cast<char16_t>(0xD7C0 + (character >> 10));
    *units++ = static_cast<char16_t>(0xDC00 | (character & 0x3FF));
    return units;
}

std::uint8_t* writeUTF8Character(char32_t character, std::uint8_t* bytes) {
    if (character < 0x80) {
        *bytes++ = static_cast<std::uint8_t>(character);
        return bytes;
    }
    const unsigned following = character < 0x800 ? 1 : character < 0x10000 ? 2 : 3;
    *bytes++ = static_cast<std::uint8_t>((0xF80 >> following & 0xFF) | character >> 6 * following);
    for (unsigned left = following; left-- > 0;)
        *bytes++ = static_cast<std::uint8_t>(0x80 | (character >> 6 * left & 0x3F));
    return bytes;
}

void appendUTF8Character(std::string& bytes, char32_t character) {
    std::uint8_t sequence[4];
    bytes.append(reinterpret_cast<const char*>(sequence),
                 static_cast<std::size_t>(writeUTF8Character(character, sequence) - sequence));
}

UTF8Decoding decodeUTF8(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity) {
    // Eights of ASCII in a row before a vector scan is worth its entry.
    constexpr int longRun = 4;
    UTF8Decoding decoding;
    const std::uint8_t* source = bytes.data();
    const std::size_t length = bytes.size();
    std::size_t read = 0;
    std::size_t written = 0;
    int run = longRun;
    while (read < length && written < capacity) {
        if (run >= longRun) {
            const std::size_t ascii =
                widenASCIIPrefix(source + read, std::min(length - read, capacity - written), units + written);
            read += ascii;
            written += ascii;
            run = 0;
            continue;
        }
        const std::uint8_t byte = source[read];
        if (byte < 0x80) {
            if (length - read < 8 || capacity - written < 8 || source[read + 1] >= 0x80) {
                units[written++] = byte;
                ++read;
                continue;
            }
            const std::size_t ascii = widenEight(source + read, units + written);
            read += ascii;
            written += ascii;
            run = ascii == 8 ? run + 1 : 0;
            continue;
        }
        run = 0;
        // Letters of one script follow each other: stay with sequences of the same length.
        const std::size_t size = byte < 0xE0 ? 2 : 3;
        const std::size_t most = std::min((length - read) / size, capacity - written);
        if (const std::size_t count = size == 2 ? decodePairs(source + read, most, units + written)
                                                : decodeTriples(source + read, most, units + written)) {
            read += count * size;
            written += count;
            continue;
        }
        std::size_t next = read;
        char32_t character = nextUTF8Character(bytes, next);
        if (character == notACharacter) {
            character = replacementCharacter;
            decoding.hadErrors = true;
        } else if (character > 0xFFFF && capacity - written < 2) {
            break;
        }
        written = static_cast<std::size_t>(writeCharacter(character, units + written) - units);
        read = next;
    }
    decoding.bytesRead = read;
    decoding.unitsWritten = written;
    return decoding;
}

UTF8Encoding encodeUTF8(std::u16string_view units, std::uint8_t* bytes) {
    constexpr int longRun = 16;
    int run = longRun;
    std::uint8_t* const target = bytes;
    std::size_t read = 0;
    std::size_t written = 0;
    while (read < units.size()) {
        if (units[read] < 0x80) {
            if (run >= longRun) {
                const std::size_t ascii =
                    narrowASCIIPrefix(units.data() + read, units.size() - read, target + written);
                read += ascii;
                written += ascii;
                run = 0;
            } else {
                target[written++] = static_cast<std::uint8_t>(units[read++]);
                ++run;
            }
            continue;
        }
        run = 0;
        if (units[read] < 0x800) {
            target[written++] = static_cast<std::uint8_t>(0xC0 | units[read] >> 6);
            target[written++] = static_cast<std::uint8_t>(0x80 | (units[read++] & 0x3F));
            continue;
        }
        std::size_t next = read;
        const char32_t character = nextCharacter(units, next);
        if (isSurrogate(character))
            break;
        written = static_cast<std::size_t>(writeUTF8Character(character, target + written) - target);
        read = next;
    }
    return {read, written};
}

} // namespace kelvo
