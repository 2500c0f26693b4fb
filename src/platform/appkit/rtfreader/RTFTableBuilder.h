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
    /// Past so many the text goes on without them: each costs a few hundred bytes, and takes as few as six in
    /// the source.
    static constexpr std::size_t maximumCells = 250000;
    using Blocks = std::vector<std::shared_ptr<const NSTextTableBlock>>;

    /// -1 when there are too many.
    RTFCellIndex add(RTFCellIndex parent);
    /// Nothing speaks of the cell any more.
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

/// Makes tables of the rows and cells that one story says, as its paragraphs end. What a row looks like may
/// be said behind it, and how many columns a table has shows at its end.
class RTFTableBuilder {
public:
    /// Tables within tables.
    static constexpr std::int32_t maximumLevel = 32;
    /// Of a paragraph that says nothing and belongs to a cell that is merged into another.
    using Dropped = std::vector<std::size_t>;

    RTFTableBuilder(RTFCells& cells, const RTFColorTable& colors) : cells_(&cells), colors_(&colors) {}

    /// A paragraph of that level has ended; 0 ends all tables. `paragraph` is its number in the story.
    RTFCellIndex paragraphEnded(std::int32_t level, std::size_t paragraph, bool isEmpty);
    void cellEnded(std::int32_t level);
    void rowEnded(std::int32_t level);
    /// The definition that row words speak of.
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
    /// A cell that goes on in the rows below it.
    struct Span {
        std::int32_t leftEdge;
        std::int32_t rightEdge;
        RTFCellIndex cell;
    };
    /// A row while it is made.
    struct RowMerge {
        Row row;
        /// From left to right.
        std::vector<Span> spans;
        /// The cell before is covered from above.
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
    /// Of level 1 and further in.
    std::vector<std::unique_ptr<Level>> levels_;
    /// How many of them have begun a table.
    std::int32_t depth_ = 0;
    Dropped dropped_;
};

} // namespace kelvo
