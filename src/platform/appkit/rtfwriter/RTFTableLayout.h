#pragma once

#include "platform/appkit/NSTextTable.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace kelvo {

class RTFColorNumbers;
class RTFOutput;

/// The rows of one table as RTF has them. RTF cannot skip a column: every row has a place for each, in order,
/// with an end of a cell in the text, and places that a cell further left or further up covers are marked as
/// merged into it.
///
/// The text decides about the order of the cells, whatever rows and columns they state: text is never moved,
/// so a cell that does not come after the one before it begins a new row.
class RTFTableLayout {
public:
    /// Word's limit. Cells further right get the next free place, so that none is lost.
    static constexpr std::size_t maximumColumns = 63;

    struct Place {
        /// Index of the cell whose text stands here, or -1.
        std::int32_t cell = -1;
        /// Null for a place that no cell claims.
        const NSTextTableBlock* block = nullptr;
        bool beginsRowSpan = false;
        bool continuesRowSpan = false;
        bool beginsColumnSpan = false;
        bool continuesColumnSpan = false;
    };
    using Row = std::vector<Place>;

    /// The blocks of the cells in their order, which are of one table; at least one. `available` is the width
    /// of what surrounds the table, in twips.
    RTFTableLayout(std::span<const NSTextTableBlock* const> cells, std::int32_t available);

    std::span<const Row> rows() const noexcept { return rows_; }
    /// From \trowd to the last \cellx.
    void writeDefinition(std::size_t row, RTFColorNumbers& colors, RTFOutput& output) const;
    /// The width of the place and of the columns that its cell spans, without the padding, in twips: what a
    /// table inside the cell can have.
    std::int32_t widthInside(std::size_t row, std::size_t place) const;

private:
    void placeCells(std::span<const NSTextTableBlock* const> cells);
    void measureColumns(std::int32_t available);
    void writePlace(const Place& place, RTFColorNumbers& colors, RTFOutput& output) const;

    const NSTextTable& table_;
    std::vector<Row> rows_;
    /// Right edge of each column, in twips.
    std::vector<std::int32_t> edges_;
};

} // namespace kelvo
