#pragma once

#include "platform/appkit/NSParagraphStyle.h"
#include "platform/webkit/RenderedPage.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kelvo {

/// The text of a rendered page in paragraphs, white space collapsed and markers written out, before it is
/// given attributes.
struct HTMLParagraphs {
    struct Run {
        std::size_t length = 0;
        /// Index into the page's text styles, or noStyle.
        std::uint32_t textStyle = noStyle;
        /// Index into the page's images for the run of an attachment, or noImage.
        std::uint32_t image = noImage;
    };
    static constexpr std::uint32_t noStyle = 0xFFFFFFFF;
    static constexpr std::uint32_t noImage = 0xFFFFFFFF;

    struct Paragraph {
        /// With the line feed that ends it; the last one may have none.
        std::size_t length = 0;
        NSParagraphStyle style;
    };

    std::u16string text;
    /// Consecutive, like the paragraphs; a run never passes the end of a paragraph.
    std::vector<Run> runs;
    std::vector<Paragraph> paragraphs;
};

/// Lines are broken where the reader of the page sees them broken: paragraphs at the edges of boxes and at
/// the line feeds of preformatted text, U+2028 for `<br>`.
HTMLParagraphs paragraphsOfPage(const RenderedPage& page);

} // namespace kelvo
