#pragma once

#include <cstddef>
#include <string_view>

namespace kelvo {

// The named character references of HTML 4.01 but "quot", "amp", "lt" and "gt", which are decoded only on
// request, and "cedil" and "fnof", which are not known here. All characters are below U+2667.

inline constexpr std::size_t entityCount = 246;

/// The names in the table's order. Case matters: "Prime" and "prime" differ.
extern const char* const entityNames[entityCount];
/// The characters of the names, in the same order, and a 0 at the end.
extern const char16_t entityCharacters[entityCount + 1];

/// Makes the table from characters to names; from any thread, as often as one likes. The look-ups below make
/// it themselves.
void initConversionTables();

/// The name of the character's reference, or null when it has none.
const char* entityNameOfCharacter(char16_t unit);
/// The character of a name, or 0 when the table does not hold it. No name of more than 8 units is known.
char16_t characterOfEntityName(std::u16string_view name);

} // namespace kelvo
