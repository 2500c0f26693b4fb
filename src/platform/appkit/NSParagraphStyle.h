#pragma once

#include "platform/appkit/NSTextList.h"
#include "platform/appkit/NSTextTable.h"
#include "platform/foundation/Visibility.h"

#include <memory>
#include <vector>

namespace KELVO_PUBLIC kelvo {

/// The numbers are the platform's own.
enum class NSTextAlignment : unsigned char { left = 0, right = 1, center = 2, justified = 3, natural = 4 };
enum class NSWritingDirection : signed char { natural = -1, leftToRight = 0, rightToLeft = 1 };
enum class NSTextTabType : unsigned char { left = 0, right = 1, center = 2, decimal = 3 };

struct NSTextTab {
    /// In points from the margin.
    float location = 0;
    NSTextTabType type = NSTextTabType::left;

    friend bool operator==(const NSTextTab&, const NSTextTab&) = default;
};

/// How one paragraph is set. All lengths are in points. Every unit of a paragraph, its end included, has the
/// same style.
struct NSParagraphStyle {
    NSTextAlignment alignment = NSTextAlignment::natural;
    NSWritingDirection baseWritingDirection = NSWritingDirection::natural;
    /// From the leading margin.
    float firstLineHeadIndent = 0;
    float headIndent = 0;
    /// From the trailing margin when negative or 0, from the leading margin when positive.
    float tailIndent = 0;
    float paragraphSpacingBefore = 0;
    float paragraphSpacing = 0;
    /// 0 says nothing, for each of the four.
    float lineHeightMultiple = 0;
    float minimumLineHeight = 0;
    float maximumLineHeight = 0;
    float lineSpacing = 0;
    /// 0 to 6: the level of a heading, 0 for body text.
    int headerLevel = 0;
    /// In ascending order of location.
    std::vector<NSTextTab> tabStops;
    /// Past the last tab stop; 0 is the document's.
    float defaultTabInterval = 0;
    /// Lines around the paragraph, in the order left, top, right, bottom; paragraphs in a row with the same
    /// ones share them.
    NSTextTableBlock::Edges<NSTextBlockBorder> borders{};
    /// Between those and the text.
    NSTextTableBlock::Edges<float> borderSpacing{};
    /// From the outermost to the innermost. The paragraphs of one list point to the same object.
    std::vector<std::shared_ptr<const NSTextList>> textLists;
    /// The cells that hold the paragraph, from the outermost to the innermost. The paragraphs of one cell
    /// point to the same object.
    std::vector<std::shared_ptr<const NSTextTableBlock>> textBlocks;

    /// What paragraphs without a style have.
    static const NSParagraphStyle& defaultParagraphStyle();

    /// Lists and cells are compared by what they say, not by identity.
    KELVO_PUBLIC_FRIEND bool operator==(const NSParagraphStyle& left, const NSParagraphStyle& right);
};

} // namespace kelvo
