#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// A stretch of text, in UTF-16 units, and the number of its style.
struct StyleRun {
    std::uint32_t length = 0;
    std::uint32_t style = 0;

    friend bool operator==(const StyleRun&, const StyleRun&) = default;
};

/// The letters of a page in order, each with the number of its style, as whoever knows the styles has read them.
struct StyledLetters {
    /// Neither blanks nor direction marks.
    std::u32string letters;
    std::vector<std::uint32_t> styles;

    /// Leaves out what is no letter.
    void add(char32_t character, std::uint32_t style);
};

/// The character there; an unpaired surrogate is one. `place` moves behind it.
char32_t characterAt(std::u16string_view text, std::size_t* place);

/// How many letters there are in the text.
std::size_t letterCount(std::u16string_view text);

/// The styles of a text of the same page that somebody else has read: it may have letters that the other does not,
/// lack some, and have some of them in another order. What is not found has the style of the letter before it; all has
/// style 0 where nothing is found. The runs cover the text; neighbours differ. Takes time in proportion to the two.
std::vector<StyleRun> alignedStyles(std::u16string_view text, const StyledLetters& letters);

} // namespace kelvo
