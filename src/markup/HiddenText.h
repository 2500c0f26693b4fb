#pragma once

#include <cstdint>
#include <string_view>

namespace kelvo {

// How the plain-text handler tells text that is meant for readers from text that they never see. Tags are
// given from "<" to ">".

/// Whether the text after a div tag is junk up to the next div tag: its class is "hidden", it holds
/// "visibility" and then "hidden" or "display:" and then "none" (in lower case, anywhere), or its style
/// places it absolutely with top or left at -1001 or less. Tags shorter than 16 units are never junk.
bool isJunkDivision(std::u16string_view tag);

struct FontEffect {
    bool hidesText;
    bool isFeedDate;
};

/// What a font tag does. It hides text in the colour of the body (which may be empty: unknown), and of 1 to 4
/// points, without a decimal point, by the first "pt" of a style that speaks of "font-size". Class
/// "feed_date" is compared exactly.
FontEffect effectOfFontTag(std::u16string_view tag, std::u16string_view bodyColor);

/// The marker bits (PlainTextContext.h) after a comment. The names that follow "googleon:" are set, then
/// those that follow "googleoff:" are cleared; case does not matter. Names may be separated by anything but
/// letters and digits, and end at the first word that is not one of them.
std::uint32_t googleBits(std::u16string_view comment, std::uint32_t bits);

/// Whether a decoded run reads like text of some length: without white space at its end at least 100 units,
/// with more than 4 stretches of characters that are neither letters nor digits, and more than 5 units for
/// each.
bool readsLikeText(std::u16string_view run);

} // namespace kelvo
