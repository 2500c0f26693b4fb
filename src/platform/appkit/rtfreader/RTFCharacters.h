#pragma once

#include <cstdint>

namespace kelvo {

enum class RTFWord : std::uint16_t;

/// The character that a word stands for; 0 for words that stand for none.
char16_t rtfCharacterOf(RTFWord word);
/// The same of a backslash and a sign.
char16_t rtfCharacterOfSymbol(char symbol);

} // namespace kelvo
