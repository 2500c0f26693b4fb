#pragma once

#include "platform/appkit/NSParagraphStyle.h"
#include "platform/appkit/NSTextAttributes.h"
#include "platform/appkit/rtfreader/RTFBorder.h"

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kelvo {

struct RTFToken;
template <typename State>
struct RTFWord;

// Formats as RTF states them: twips (1/20 point), indices into the document's tables.

inline constexpr float pointsFromTwips(std::int32_t twips) {
    return static_cast<float>(twips) / 20;
}

/// What a run of characters shows, whatever its script.
struct RTFCharacterFormat {
    std::int32_t font = 0;
    /// In 1/1000 points.
    std::int32_t size = 12000;
    /// Indices of colours; -1 is none.
    std::int32_t foreground = -1;
    std::int32_t background = -1;
    std::int32_t kernTwips = 0;
    std::int32_t baselineHalfPoints = 0;
    std::int32_t superscript = 0;
    /// Indices into the reader's links and attachments; -1 is none.
    std::int32_t link = -1;
    std::int32_t attachment = -1;
    NSUnderlineStyle underline = NSUnderlineStyleNone;
    NSUnderlineStyle strikethrough = NSUnderlineStyleNone;
    bool isBold = false;
    bool isItalic = false;

    friend bool operator==(const RTFCharacterFormat&, const RTFCharacterFormat&) = default;
    struct Hash {
        std::size_t operator()(const RTFCharacterFormat& format) const noexcept;
    };
};

/// The character formats in force: writers state them twice, for scripts that run left to right and for those
/// that run right to left, and say which of them counts.
class RTFCharacterState {
public:
    RTFCharacterState() = default;
    /// Plain text, as it is after \plain.
    explicit RTFCharacterState(std::int32_t defaultFont) { format_.font = defaultFont; }

    static std::span<const RTFWord<RTFCharacterState>> words();
    RTFCharacterFormat effective() const;
    std::int32_t effectiveFont() const {
        return isRightToLeft_ && otherFont_ >= 0 ? otherFont_ : format_.font;
    }
    enum class Capitals : std::uint8_t { asWritten, all, small };
    Capitals capitals() const { return capitals_; }
    /// Hidden or deleted.
    bool isInvisible() const { return isHidden_ || isDeleted_; }

private:
    template <NSUnderlineStyle style>
    static void setUnderline(RTFCharacterState& state, const RTFToken& token);
    static void setBackground(RTFCharacterState& state, const RTFToken& token);
    template <Capitals capitals>
    static void setCapitals(RTFCharacterState& state, const RTFToken& token);
    static void endRightToLeft(RTFCharacterState& state, const RTFToken& token);

    RTFCharacterFormat format_;
    // Right to left; negative is not stated.
    std::int32_t otherFont_ = -1;
    std::int32_t otherSize_ = -1;
    std::int8_t otherBold_ = -1;
    std::int8_t otherItalic_ = -1;
    bool isRightToLeft_ = false;
    Capitals capitals_ = Capitals::asWritten;
    bool isHidden_ = false;
    bool isDeleted_ = false;
};

/// How a paragraph is set, except for the cell it is in.
struct RTFParagraphFormat {
    NSTextAlignment alignment = NSTextAlignment::natural;
    NSWritingDirection direction = NSWritingDirection::natural;
    bool isInTable = false;
    /// \slmult1: `lineHeight` is in 240ths of the font's.
    bool isLineHeightMultiple = false;
    /// There is no space between it and neighbours of the same style that say so too.
    bool isSpacingContextual = false;
    std::int8_t headerLevel = 0;
    /// -1 when the paragraph does not state its own level.
    std::int8_t outlineLevel = -1;
    std::int8_t listLevel = 0;
    std::int32_t nesting = 0;
    std::int32_t style = 0;
    std::int32_t list = 0;
    /// Index of a list of the old kind, which paragraphs describe themselves; -1 is none.
    std::int32_t oldList = -1;
    std::int32_t leftIndent = 0;
    std::int32_t firstLineIndent = 0;
    std::int32_t rightIndent = 0;
    std::int32_t spaceBefore = 0;
    std::int32_t spaceAfter = 0;
    std::int32_t lineHeight = 0;
    std::int32_t lineSpacing = 0;
    std::int32_t minimumLineHeight = 0;
    std::int32_t maximumLineHeight = 0;
    std::int32_t tabInterval = 0;
    /// Index of a colour; 0 is none.
    std::int32_t background = 0;
    NSTextTabType nextTabType = NSTextTabType::left;
    /// Null: none.
    std::shared_ptr<const std::vector<NSTextTab>> tabs;
    using Borders = NSTextTableBlock::Edges<RTFBorder>;
    /// Null: none.
    std::shared_ptr<const Borders> borders;
    /// The borders of which words speak now, as bits by their index.
    unsigned openBorders = 0;

    static std::span<const RTFWord<RTFParagraphFormat>> words();
    /// A word that says more of the open borders.
    void applyToBorders(const RTFWord<RTFBorder>& word, const RTFToken& token);
    /// 0 outside of tables.
    std::int32_t tableLevel() const;
    /// The style that it asks for, without lists and cells.
    NSParagraphStyle paragraphStyle() const;

    friend bool operator==(const RTFParagraphFormat& left, const RTFParagraphFormat& right);
    struct Hash {
        std::size_t operator()(const RTFParagraphFormat& format) const noexcept;
    };
};

} // namespace kelvo
