#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

namespace kelvo {

struct RTFToken;

/// What the styles of a document say beyond the formats that writers repeat in the text: which of them are
/// headings.
class RTFStyleSheet {
public:
    void apply(const RTFToken& token);
    /// Text of the sheet: a name up to the semicolon that ends an entry.
    void append(std::u16string_view units);
    /// From 1; 0 when the style is not that of a heading.
    int headerLevelOf(std::int32_t style) const;

private:
    void finishEntry();

    /// 0 when the entry states none: that is the style of paragraphs that name no style.
    std::int32_t number_ = 0;
    bool isOfParagraphs_ = true;
    std::int32_t outlineLevel_ = -1;
    std::u16string name_;
    std::unordered_map<std::int32_t, int> headerLevels_;
};

/// The level of a heading from the level of an outline, which is from 0; body text is the outline's 9.
int headerLevelOfOutlineLevel(std::int32_t outlineLevel);

} // namespace kelvo
