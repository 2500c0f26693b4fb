#pragma once

#include <span>
#include <string_view>

namespace kelvo {

/// A word that stands for a character.
struct RTFCharacterWord {
    std::string_view name;
    char16_t unit;
};
std::span<const RTFCharacterWord> rtfCharacterWords();

/// The character that a backslash and a sign stand for; 0 for signs that stand for none.
char16_t rtfCharacterOfSymbol(char symbol);

} // namespace kelvo
