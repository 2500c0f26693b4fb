#pragma once

#include "platform/appkit/rtfreader/RTFFormats.h"
#include "platform/appkit/rtfreader/RTFScanner.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace kelvo {

/// What the styles of a document say beyond the formats that writers repeat in the text: which of them are
/// headings, and what they have from the styles that they are based on.
class RTFStyleSheet {
public:
    /// What text of a style looks like that says nothing of its own.
    struct Formats {
        RTFCharacterState characters;
        RTFParagraphFormat paragraph;
    };

    void apply(const RTFToken& token);
    /// A word of characters or of paragraphs in the present entry, by its row in the table of such words.
    void addCharacterWord(std::uint16_t row, const RTFToken& token) { addWord({row, false}, token); }
    void addParagraphWord(std::uint16_t row, const RTFToken& token) { addWord({row, true}, token); }
    /// Text of the sheet: a name up to the semicolon that ends an entry.
    void append(std::u16string_view units);
    /// From 1; 0 when the style is not that of a heading.
    int headerLevelOf(std::int32_t style) const;
    // With all that the style inherits. To be asked when the sheet is complete.

    /// Those of a style of paragraphs; null when the sheet lacks it.
    const Formats* formatsOf(std::int32_t style, std::int32_t defaultFont);
    /// Changes characters as a style of characters does.
    void applyCharacterStyle(std::int32_t style, RTFCharacterState& characters);

private:
    struct Word {
        std::uint16_t row;
        bool isOfParagraphs;
        RTFToken token{};
    };
    using Words = std::vector<Word>;
    struct Style {
        std::int32_t base = -1;
        Words words;
    };
    template <typename Resolved>
    struct Styles {
        std::unordered_map<std::int32_t, Style> stated;
        /// As far as somebody has asked.
        std::unordered_map<std::int32_t, Resolved> resolved;
    };
    /// `make` makes what a style resolves to of what its base does, or of `root`, and of its own words. Null
    /// when the sheet lacks the style.
    template <typename Resolved, typename Make>
    static const Resolved* resolve(Styles<Resolved>& styles, std::int32_t style, const Resolved& root,
                                   Make make);

    void addWord(Word word, const RTFToken& token);
    void finishEntry();

    /// 0 when the entry states none: that is the style of paragraphs that name no style.
    std::int32_t number_ = 0;
    bool isParagraphStyle_ = true;
    std::int32_t outlineLevel_ = -1;
    std::u16string name_;
    Style current_;
    std::unordered_map<std::int32_t, int> headerLevels_;
    Styles<Formats> ofParagraphs_;
    Styles<Words> ofCharacters_;
};

/// The level of a heading from the level of an outline, which is from 0; body text is the outline's 9.
int headerLevelOfOutlineLevel(std::int32_t outlineLevel);

} // namespace kelvo
