#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/appkit/rtfreader/RTFColorTable.h"
#include "platform/appkit/rtfreader/RTFFontTable.h"
#include "platform/appkit/rtfreader/RTFListTable.h"
#include "platform/appkit/rtfreader/RTFStory.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace kelvo {

/// What the formats of a document refer to by number.
struct RTFDefinitions {
    RTFFontTable fonts;
    RTFColorTable colors;
    RTFListTable lists;
    std::vector<std::shared_ptr<const NSTextList>> oldLists;
    std::vector<NSString> links;
    std::vector<std::shared_ptr<const NSTextAttachment>> attachments;
    RTFFormatPool<RTFCharacterFormat> characterFormats;
    RTFFormatPool<RTFParagraphFormat> paragraphFormats;
    RTFCells cells;
};

/// Makes attributed text of a story once everything that it refers to is known. Equal formats share one
/// object.
class RTFAssembler {
public:
    explicit RTFAssembler(RTFDefinitions& definitions) : definitions_(definitions) {}

    NSAttributedString textOf(const RTFStory& story);

private:
    using Style = std::shared_ptr<const NSParagraphStyle>;

    /// Which of the spaces around a paragraph its neighbours leave it.
    struct Spaces {
        bool hasBefore = true;
        bool hasAfter = true;
    };
    bool areSpacedByContext(const RTFParagraph& paragraph, const RTFParagraph* neighbour) const;
    std::uint32_t styleOf(const RTFParagraph& paragraph, Spaces spaces);
    Style makeStyle(std::uint32_t format, RTFCellIndex cell, Spaces spaces);
    const NSAttributedString::Attributes& attributesOf(std::uint32_t format, std::uint32_t style);
    NSTextAttributes makeAttributes(const RTFCharacterFormat& format) const;

    RTFDefinitions& definitions_;
    struct StyleOnGround {
        Style style;
        /// What the paragraph is painted with.
        std::optional<NSColor> ground;
    };
    std::vector<StyleOnGround> styles_;
    std::unordered_map<std::uint64_t, std::uint32_t> styleIndices_;
    std::unordered_map<std::uint64_t, NSAttributedString::Attributes> attributes_;
};

} // namespace kelvo
