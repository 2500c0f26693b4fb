#include "platform/appkit/html/HTMLTableGrid.h"

#include <algorithm>
#include <limits>

namespace kelvo {
namespace {

constexpr std::size_t mostColumns = 256;
/// As HTML has it.
constexpr int mostRowsOfCell = 65534;
/// A table as wide as the lines of an ordinary page, in points, is as wide as what surrounds it.
constexpr float widthOfLines = 440;
constexpr float shareOfFullWidth = 0.9F;

} // namespace

HTMLTableGrid::HTMLTableGrid(const RenderedPage::Table& table) {
    table_->collapsesBorders = table.collapsesBorders;
    table_->backgroundColor = table.backgroundColor;
    if (table.width > widthOfLines || table.width > table.availableWidth * shareOfFullWidth)
        table_->width = NSTextBlockLength{100, NSTextBlockLength::Unit::percent};
    else if (table.width > 0)
        table_->width = NSTextBlockLength{table.width, NSTextBlockLength::Unit::points};
}

void HTMLTableGrid::addRow() {
    // Rows that nobody has a cell for are no rows.
    if (row_ >= 0) {
        for (int& rows : taken_)
            rows = std::max(0, rows - 1);
    }
    ++row_;
    column_ = 0;
}

std::shared_ptr<const NSTextTableBlock> HTMLTableGrid::addCell(const RenderedPage::Cell& cell) {
    if (row_ < 0)
        addRow();
    while (column_ < taken_.size() && taken_[column_] > 0)
        ++column_;
    column_ = std::min(column_, mostColumns - 1);
    const auto span = std::min(static_cast<std::size_t>(std::max(cell.columnSpan, 1)), mostColumns - column_);
    const int rows = cell.rowSpan == 0 ? mostRowsOfCell : std::clamp(cell.rowSpan, 1, mostRowsOfCell);
    taken_.resize(std::max(taken_.size(), column_ + span));
    std::fill_n(taken_.begin() + static_cast<std::ptrdiff_t>(column_), span, rows);

    auto block = std::make_shared<NSTextTableBlock>();
    block->table = table_;
    block->startingRow = row_;
    block->startingColumn = static_cast<int>(column_);
    block->columnSpan = static_cast<int>(span);
    block->rowSpan = rows;
    if (cell.widthPercent > 0)
        block->width =
            NSTextBlockLength{std::min(cell.widthPercent, 100.0F), NSTextBlockLength::Unit::percent};
    for (std::size_t side = 0; side < block->borders.size(); ++side) {
        block->borders[side] = {cell.borders[side].width, cell.borders[side].color};
        block->padding[side] = std::max(0.0F, cell.padding[side]);
    }
    block->backgroundColor = cell.backgroundColor;
    switch (cell.verticalAlignment) {
    case RenderedPage::VerticalAlignment::top:
        break;
    case RenderedPage::VerticalAlignment::middle:
        block->verticalAlignment = NSTextBlockVerticalAlignment::middle;
        break;
    case RenderedPage::VerticalAlignment::bottom:
        block->verticalAlignment = NSTextBlockVerticalAlignment::bottom;
        break;
    }
    column_ += span;
    cells_.push_back(block);
    return block;
}

void HTMLTableGrid::finish() {
    table_->numberOfColumns = std::max(1, static_cast<int>(taken_.size()));
    for (const auto& cell : cells_)
        cell->rowSpan = std::min(cell->rowSpan, row_ + 1 - cell->startingRow);
}

} // namespace kelvo
