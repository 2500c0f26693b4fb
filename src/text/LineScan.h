#pragma once

#include <cstddef>
#include <string_view>

namespace kelvo {

/// One line of a text.
struct LineSpan {
    std::u16string_view contents;
    /// Empty only in the last line.
    std::u16string_view ending;
    /// Where the next line begins.
    std::size_t end;
};

/// The line that begins at `start`, which must lie inside the text. It ends after U+000A, U+000C, U+000D
/// (U+000D U+000A is one end), U+2028, U+2029, U+0003 or U+FFFC, or with the text.
LineSpan lineFrom(std::u16string_view text, std::size_t start);

/// Calls `use` with the span of each line.
template <class Use>
void forEachLine(std::u16string_view text, Use use) {
    for (std::size_t next = 0; next < text.size();) {
        const LineSpan line = lineFrom(text, next);
        use(line);
        next = line.end;
    }
}

} // namespace kelvo
