#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSString.h"

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace kelvo {

/// A page as the web engine laid it out: its text in reading order between the boxes that it stands in, each
/// with the computed style that matters to rich text. All lengths are in points, of which
/// a CSS pixel is three quarters as it is on paper: a page that says nothing of its sizes is set in 12 points, and
/// one that says 16 pixels, which is the same in every browser, is as well. What is not displayed is not in it.
///
/// White space is as in the source; `TextStyle::whiteSpace` says what becomes of it.
struct RenderedPage {
    enum class WhiteSpace : unsigned char {
        /// Runs of white space are one blank.
        collapse,
        /// The same, but line feeds break lines.
        preserveBreaks,
        preserve
    };

    struct TextStyle {
        /// The list as the style sheet wrote it: names, quoted or not, between commas.
        NSString fontFamilies;
        float fontSize = 12;
        /// 400 is regular, 700 bold.
        int fontWeight = 400;
        bool isItalic = false;
        std::optional<NSColor> color;
        /// That of the nearest box with one, up to the cell, not counting the page's own.
        std::optional<NSColor> backgroundColor;
        bool isUnderlined = false;
        bool isDoublyUnderlined = false;
        bool isStruckThrough = false;
        /// Levels up (positive) or down.
        int superscript = 0;
        float letterSpacing = 0;
        WhiteSpace whiteSpace = WhiteSpace::collapse;
        /// Absolute where it could be resolved, else as written; empty without a link.
        NSString link;
    };

    enum class Alignment : unsigned char { start, end, left, right, center, justified };

    struct BlockStyle {
        Alignment alignment = Alignment::start;
        bool isRightToLeft = false;
        /// Only of boxes whose distance from the side is meant for the reader.
        float indentLeft = 0;
        float indentRight = 0;
        /// Moves the first line only.
        float textIndent = 0;
        float marginTop = 0;
        /// Padding and border: margins do not collapse across.
        float paddingTop = 0;
        float marginBottom = 0;
        float paddingBottom = 0;
        /// 0 is the font's own.
        float lineHeight = 0;
        /// 1 to 6, or 0 for what is no heading.
        int headingLevel = 0;
        /// Margins of what is inside do not reach out of it.
        bool keepsMargins = false;
    };

    struct List {
        /// As in CSS: "disc", "decimal", "none", …
        NSString styleType;
        int start = 1;
        bool isReversed = false;
    };

    struct Item {
        NSString styleType;
        /// The style of the marker, in textStyles.
        std::uint32_t textStyle = 0;
        /// What the item says about its own number.
        std::optional<int> value;
    };

    struct Table {
        bool collapsesBorders = false;
        float width = 0;
        /// The width of the box around it.
        float availableWidth = 0;
        std::optional<NSColor> backgroundColor;
    };

    enum class VerticalAlignment : unsigned char { top, middle, bottom };

    struct Border {
        float width = 0;
        std::optional<NSColor> color;
    };

    struct Cell {
        int columnSpan = 1;
        /// 0 reaches to the end of the table.
        int rowSpan = 1;
        /// Measured by the table's width.
        float widthPercent = 0;
        std::optional<NSColor> backgroundColor;
        VerticalAlignment verticalAlignment = VerticalAlignment::top;
        /// Left, top, right, bottom.
        std::array<float, 4> padding{};
        std::array<Border, 4> borders{};
    };

    struct Image {
        /// Empty for a drawing that stands in the page itself.
        NSString url;
        NSString alternative;
        NSSize size;
        /// Nil when it could not be loaded.
        NSData data;
        NSString mimeType;
    };

    enum class EventKind : unsigned char {
        /// `text` in the style textStyles[index].
        text,
        /// `<br>`; index as for text.
        lineBreak,
        // What opens is closed by its own `end`.
        /// blockStyles[index].
        block,
        end,
        /// items[index], lists[index], tables[index], cells[index].
        item,
        list,
        table,
        row,
        cell,
        /// images[index] in the style textStyles[style].
        image,
        /// A horizontal line.
        rule
    };

    struct Event {
        EventKind kind = EventKind::text;
        std::uint32_t index = 0;
        std::uint32_t style = 0;
        NSString text;
    };

    NSString title;
    /// What was too deep or too much for the walk, or took too long, is not there.
    bool isCut = false;
    std::vector<Event> events;
    std::vector<TextStyle> textStyles;
    std::vector<BlockStyle> blockStyles;
    std::vector<List> lists;
    std::vector<Item> items;
    std::vector<Table> tables;
    std::vector<Cell> cells;
    std::vector<Image> images;
};

/// Reads what the walk through the page wrote: indices are checked against the tables they point into. Absent
/// when it is not that.
std::optional<RenderedPage> renderedPageWithFields(const NSData& fields);

} // namespace kelvo
