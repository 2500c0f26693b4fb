#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kelvo {

// Characters (code points) of UTF-16 and UTF-8.

constexpr bool isLeadSurrogate(char32_t unit) {
    return (unit & 0xFFFFFC00) == 0xD800;
}
constexpr bool isTrailSurrogate(char32_t unit) {
    return (unit & 0xFFFFFC00) == 0xDC00;
}
constexpr bool isSurrogate(char32_t unit) {
    return (unit & 0xFFFFF800) == 0xD800;
}

/// Stands in for what is not well-formed.
inline constexpr char32_t replacementCharacter = 0xFFFD;
/// No character has this number.
inline constexpr char32_t notACharacter = 0xFFFFFFFF;

/// The character at the index, which moves past it. A surrogate without its other half comes as it is.
char32_t nextCharacter(std::u16string_view units, std::size_t& index);
/// The same in UTF-8: notACharacter for bytes that are not well-formed. The index then moves past the longest
/// beginning of a sequence among them (the maximal subpart of Unicode's chapter 3), and past one byte at least.
char32_t nextUTF8Character(std::span<const std::uint8_t> bytes, std::size_t& index);

/// A character of at most 0x10FFFF as one or two units, or as one to four bytes; past the last of them.
char16_t* writeCharacter(char32_t character, char16_t* units);
std::uint8_t* writeUTF8Character(char32_t character, std::uint8_t* bytes);
void appendUTF8Character(std::string& bytes, char32_t character);

struct UTF8Decoding {
    std::size_t bytesRead = 0;
    std::size_t unitsWritten = 0;
    /// Something was not well-formed and became U+FFFD, one for each maximal subpart.
    bool hadErrors = false;
};
/// Decodes as much as fits into `capacity` units; room for as many units as there are bytes always suffices.
/// Never writes half a pair. Units past the result but within the capacity may have been overwritten.
UTF8Decoding decodeUTF8(std::span<const std::uint8_t> bytes, char16_t* units, std::size_t capacity);

struct UTF8Encoding {
    /// Less than all: the next unit is a surrogate without its other half.
    std::size_t unitsRead = 0;
    std::size_t bytesWritten = 0;
};
/// `bytes` has room for three times as many bytes as there are units.
UTF8Encoding encodeUTF8(std::u16string_view units, std::uint8_t* bytes);

} // namespace kelvo
