#include "platform/appkit/rtfreader/RTFTableBuilder.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

/// Edges that are nearer than this, in twips, are the edge of one column: word processors round them in each
/// row anew, so that the columns of one table are a few twips apart.
constexpr std::int32_t edgeTolerance = 20;

/// The distinct edges, in ascending order.
std::vector<std::int32_t> gridOf(std::vector<std::int32_t> edges) {
    std::ranges::sort(edges);
    std::vector<std::int32_t> grid;
    for (const std::int32_t edge : edges)
        if (grid.empty() || edge - grid.back() >= edgeTolerance)
            grid.push_back(edge);
    return grid;
}

int columnAt(const std::vector<std::int32_t>& grid, std::int32_t edge) {
    const auto next = std::ranges::upper_bound(grid, edge);
    return next == grid.begin() ? 0 : static_cast<int>(next - grid.begin()) - 1;
}

} // namespace

RTFCellIndex RTFCells::add(RTFCellIndex parent) {
    if (!free_.empty()) {
        const RTFCellIndex cell = free_.back();
        free_.pop_back();
        cells_[static_cast<std::size_t>(cell)].parent = parent;
        return cell;
    }
    if (cells_.size() >= maximumCells)
        return -1;
    cells_.push_back({parent, std::make_shared<NSTextTableBlock>()});
    return static_cast<RTFCellIndex>(cells_.size() - 1);
}

RTFCells::Blocks RTFCells::blocksOf(RTFCellIndex cell) const {
    Blocks blocks;
    for (; cell >= 0; cell = cells_[static_cast<std::size_t>(cell)].parent)
        blocks.push_back(cells_[static_cast<std::size_t>(cell)].block);
    std::ranges::reverse(blocks);
    return blocks;
}

RTFTableBuilder::Level& RTFTableBuilder::level(std::int32_t number) {
    const auto index = static_cast<std::size_t>(std::clamp(number, 1, maximumLevel) - 1);
    while (levels_.size() <= index)
        levels_.push_back(std::make_unique<Level>());
    return *levels_[index];
}

RTFRowDefinition& RTFTableBuilder::definition(std::int32_t number) {
    return level(number).definition;
}

void RTFTableBuilder::openCellAt(std::int32_t number, std::size_t paragraph) {
    Level& own = level(number);
    depth_ = std::max(depth_, number);
    if (own.isCellOpen)
        return;
    own.isCellOpen = true;
    if (own.cells.size() >= RTFRowDefinition::maximumColumns)
        return;
    const RTFCellIndex parent = number > 1 ? level(number - 1).cells.back().index : -1;
    own.cells.push_back({.index = cells_->add(parent), .firstParagraph = paragraph});
}

RTFCellIndex RTFTableBuilder::paragraphEnded(std::int32_t number, std::size_t paragraph, bool isEmpty) {
    number = std::clamp(number, 0, maximumLevel);
    closeDeeperThan(number);
    for (std::int32_t outer = 1; outer <= number; ++outer) {
        openCellAt(outer, paragraph);
        Cell& cell = level(outer).cells.back();
        ++cell.paragraphs;
        cell.isEmpty = cell.isEmpty && isEmpty;
    }
    while (number > 0 && level(number).cells.back().index < 0)
        --number;
    return number > 0 ? level(number).cells.back().index : -1;
}

void RTFTableBuilder::cellEnded(std::int32_t number) {
    level(number).isCellOpen = false;
}

void RTFTableBuilder::rowEnded(std::int32_t number) {
    number = std::clamp(number, 1, maximumLevel);
    closeDeeperThan(number);
    Level& own = level(number);
    if (!own.cells.empty())
        endRow(own);
}

void RTFTableBuilder::closeDeeperThan(std::int32_t number) {
    for (; depth_ > number; --depth_) {
        Level& inner = level(depth_);
        if (!inner.cells.empty())
            endRow(inner);
        endTable(inner);
    }
}

/// Whether the cell is only a place that another one covers.
bool RTFTableBuilder::isCovered(const Level& own, const Cell& cell, const RTFRowDefinition::Cell& stated,
                                RowMerge& merge) {
    // A cell with text stays although it is covered: nothing else would hold the text.
    const bool isBare = cell.isEmpty && cell.paragraphs == 1;
    using Merge = RTFRowDefinition::Merge;
    if (isBare && stated.horizontal == Merge::continued && (merge.isCovered || !merge.row.cells.empty())) {
        if (!merge.isCovered) {
            Cell& first = merge.row.cells.back();
            first.rightEdge = cell.rightEdge;
            if (!merge.spans.empty() && merge.spans.back().cell == first.index)
                merge.spans.back().rightEdge = cell.rightEdge;
        }
        return true;
    }
    merge.isCovered = false;
    if (!isBare || stated.vertical != Merge::continued)
        return false;
    // The span that begins at or before the cell's left edge.
    auto span = std::ranges::upper_bound(own.spans, cell.leftEdge + edgeTolerance - 1, {}, &Span::leftEdge);
    if (span == own.spans.begin())
        return false;
    --span;
    const bool isContinued = !merge.spans.empty() && merge.spans.back().cell == span->cell;
    // The first cell under a span has to begin where it does. Further ones are under it as long as they begin
    // before its end, because a span that is several columns wide may be continued by one cell or by one for
    // each column.
    const bool isSameEdge = cell.leftEdge - span->leftEdge < edgeTolerance;
    if (isContinued ? cell.leftEdge >= span->rightEdge : !isSameEdge)
        return false;
    if (!isContinued) {
        ++cells_->block(span->cell).rowSpan;
        merge.spans.push_back(*span);
    }
    merge.isCovered = true;
    return true;
}

void RTFTableBuilder::endRow(Level& own) {
    RTFRowDefinition& definition = own.definition;
    const std::int32_t rowNumber = definition.rowNumber();
    // A first row after a later one begins a new table. After another first row it does not: a number that
    // never changes says nothing.
    if (rowNumber == 0 && own.lastRowNumber > 0)
        endTable(own);
    own.lastRowNumber = rowNumber;
    if (own.rows.empty())
        own.attributes = definition.tableAttributes(*colors_);

    RowMerge merge;
    merge.row.hasEdges = definition.isStated();
    std::int32_t edge = definition.leftEdge();
    for (std::size_t index = 0; index < own.cells.size(); ++index) {
        Cell& cell = own.cells[index];
        if (cell.index < 0)
            break;
        cell.leftEdge = cell.rightEdge = edge;
        if (index < definition.cells().size()) {
            const RTFRowDefinition::Cell& stated = definition.cells()[index];
            edge = cell.rightEdge = std::max(edge, stated.rightEdge);
            if (isCovered(own, cell, stated, merge)) {
                dropped_.push_back(cell.firstParagraph);
                cells_->release(cell.index);
                continue;
            }
            cells_->block(cell.index) = definition.blockForCell(index, *colors_);
            cell.width = stated.width;
            if (stated.vertical == RTFRowDefinition::Merge::first)
                merge.spans.push_back({cell.leftEdge, cell.rightEdge, cell.index});
        }
        merge.row.cells.push_back(cell);
    }
    for (const Cell& cell : merge.row.cells) {
        NSTextTableBlock& block = cells_->block(cell.index);
        if (cell.width.unit >= 1 && cell.width.unit <= 3)
            block.width = cell.width.length();
        else if (cell.rightEdge > cell.leftEdge)
            block.width = NSTextBlockLength{static_cast<float>(cell.rightEdge - cell.leftEdge) / 20,
                                            NSTextBlockLength::Unit::points};
    }
    own.rows.push_back(std::move(merge.row));
    own.spans = std::move(merge.spans);
    own.cells.clear();
    own.isCellOpen = false;
    const bool isLast = definition.isLastRow();
    definition.endRow();
    if (isLast)
        endTable(own);
}

void RTFTableBuilder::endTable(Level& own) {
    own.spans.clear();
    own.lastRowNumber = -1;
    if (own.rows.empty())
        return;
    std::vector<std::int32_t> edges;
    for (const Row& row : own.rows)
        if (row.hasEdges)
            for (const Cell& cell : row.cells) {
                edges.push_back(cell.leftEdge);
                edges.push_back(cell.rightEdge);
            }
    // A row without a definition has no edges: its cells are the first columns.
    const std::vector<std::int32_t> grid = gridOf(std::move(edges));
    const auto table = std::make_shared<NSTextTable>(own.attributes);
    for (std::size_t number = 0; number < own.rows.size(); ++number) {
        int column = 0;
        for (const Cell& cell : own.rows[number].cells) {
            NSTextTableBlock& block = cells_->block(cell.index);
            block.table = table;
            block.startingRow = static_cast<int>(number);
            block.startingColumn = column;
            if (own.rows[number].hasEdges) {
                block.startingColumn = std::max(column, columnAt(grid, cell.leftEdge));
                block.columnSpan = std::max(1, columnAt(grid, cell.rightEdge) - block.startingColumn);
            }
            column = block.startingColumn + block.columnSpan;
        }
        table->numberOfColumns = std::max(table->numberOfColumns, column);
    }
    own.rows.clear();
}

} // namespace kelvo
