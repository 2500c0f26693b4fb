#pragma once

#include "platform/appkit/NSTextTable.h"
#include "platform/appkit/rtfreader/RTFRowDefinition.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

namespace kelvo {

class RTFColorTable;

/// Index of a cell; -1 is none.
using RTFCellIndex = std::int32_t;

/// All cells of a document.
class RTFCells {
public:
    /// Text after so many is in no cell. A cell costs a few hundred bytes, and the source of one may be six
    /// bytes long.
    static constexpr std::size_t maximumCells = 250000;
    using Blocks = std::vector<std::shared_ptr<const NSTextTableBlock>>;

    /// -1 when there are too many.
    RTFCellIndex add(RTFCellIndex parent);
    /// No paragraph is in the cell any more; add() may use it again.
    void release(RTFCellIndex cell) { free_.push_back(cell); }
    NSTextTableBlock& block(RTFCellIndex cell) { return *cells_[static_cast<std::size_t>(cell)].block; }
    /// From the outermost to the innermost; empty for -1.
    Blocks blocksOf(RTFCellIndex cell) const;

private:
    struct Cell {
        RTFCellIndex parent;
        std::shared_ptr<NSTextTableBlock> block;
    };

    std::vector<Cell> cells_;
    std::vector<RTFCellIndex> free_;
};

/// Makes tables of the rows and cells of one story, as its paragraphs end.
///
/// RTF has no tables, only rows: each defines its own cells by the positions of their right edges, may do so
/// after its text, and nothing says where a table ends. So paragraphs are put into cells as they come; a row
/// gets its looks and spans when it ends; and the columns, which are the distinct edges of all rows, are
/// counted when something other than a row follows. Cells are shared with the paragraphs that are in them, so
/// that filling them in later is enough.
class RTFTableBuilder {
public:
    /// Tables within tables.
    static constexpr std::int32_t maximumLevel = 32;
    /// Numbers of paragraphs: the empty ones that stand for cells which another cell covers.
    using Dropped = std::vector<std::size_t>;

    RTFTableBuilder(RTFCells& cells, const RTFColorTable& colors) : cells_(&cells), colors_(&colors) {}

    /// A paragraph inside `level` tables has ended; 0 ends all tables. `paragraph` is its number in the
    /// story.
    RTFCellIndex paragraphEnded(std::int32_t level, std::size_t paragraph, bool isEmpty);
    void cellEnded(std::int32_t level);
    void rowEnded(std::int32_t level);
    /// The definition of the row at that level, for words to change.
    RTFRowDefinition& definition(std::int32_t level);
    void finish() { closeDeeperThan(0); }
    /// The paragraphs to leave out, in no order; empties the list.
    Dropped takeDropped() { return std::move(dropped_); }

private:
    struct Cell {
        RTFCellIndex index;
        std::size_t firstParagraph;
        std::size_t paragraphs = 0;
        bool isEmpty = true;
        std::int32_t leftEdge = 0;
        std::int32_t rightEdge = 0;
        RTFRowDefinition::Length width{};
    };
    struct Row {
        bool hasEdges = false;
        std::vector<Cell> cells;
    };
    /// The place of a cell that may go on in the row below.
    struct Span {
        std::int32_t leftEdge;
        std::int32_t rightEdge;
        RTFCellIndex cell;
    };
    /// A row while its cells are merged.
    struct RowMerge {
        Row row;
        /// From left to right.
        std::vector<Span> spans;
        /// The previous cell is covered from above, so that cells merged into it are too.
        bool isCovered = false;
    };
    struct Level {
        RTFRowDefinition definition;
        NSTextTable attributes;
        std::vector<Row> rows;
        std::vector<Cell> cells;
        bool isCellOpen = false;
        std::int32_t lastRowNumber = -1;
        /// The cells that the next row may continue, from left to right.
        std::vector<Span> spans;
    };

    Level& level(std::int32_t number);
    void openCellAt(std::int32_t number, std::size_t paragraph);
    void closeDeeperThan(std::int32_t number);
    void endRow(Level& level);
    bool isCovered(const Level& level, const Cell& cell, const RTFRowDefinition::Cell& stated,
                   RowMerge& merge);
    void endTable(Level& level);

    RTFCells* cells_;
    const RTFColorTable* colors_;
    /// The outermost table first; index 0 is level 1.
    std::vector<std::unique_ptr<Level>> levels_;
    /// How many of the levels are in a table now.
    std::int32_t depth_ = 0;
    Dropped dropped_;
};

} // namespace kelvo
