#include "platform/appkit/rtfwriter/RTFTableLayout.h"

#include "platform/appkit/rtfwriter/RTFHeadTables.h"
#include "platform/appkit/rtfwriter/RTFOutput.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace kelvo {
namespace {

constexpr std::int32_t minimumColumnWidth = 100;
constexpr std::int32_t maximumTableWidth = 31680;

std::int32_t twipsOfLength(const NSTextBlockLength& length, std::int32_t whole) {
    return length.unit == NSTextBlockLength::Unit::percent ? rtfNumber(length.value, whole / 100.0)
                                                           : rtfTwips(length.value);
}

void writeLength(std::string_view unitWord, std::string_view word,
                 const std::optional<NSTextBlockLength>& length, RTFOutput& output) {
    if (!length) {
        output.word(unitWord, 1);
        return;
    }
    const bool isPercent = length->unit == NSTextBlockLength::Unit::percent;
    output.word(unitWord, isPercent ? 2 : 3);
    output.word(word, isPercent ? rtfNumber(length->value, 50) : rtfTwips(length->value));
}

/// The cells further up that reach into the present row, by column.
struct RowSpan {
    const NSTextTableBlock* block = nullptr;
    /// The first row that it does not reach.
    std::int64_t end = 0;
    bool isFirstColumn = false;
    bool spansColumns = false;
};

std::int64_t endRowOf(const NSTextTableBlock& block) {
    return std::int64_t{block.startingRow} + std::max(block.rowSpan, 1);
}

} // namespace

RTFTableLayout::RTFTableLayout(std::span<const NSTextTableBlock* const> cells, std::int32_t available)
    : table_(*cells.front()->table) {
    placeCells(cells);
    measureColumns(available);
}

void RTFTableLayout::placeCells(std::span<const NSTextTableBlock* const> cells) {
    std::array<RowSpan, maximumColumns> spans{};
    for (std::size_t first = 0; first < cells.size();) {
        const std::int64_t number = cells[first]->startingRow;
        std::size_t end = first + 1;
        while (end < cells.size() && cells[end]->startingRow == number &&
               cells[end]->startingColumn > cells[end - 1]->startingColumn)
            ++end;
        const bool hasNext = end < cells.size() && cells[end]->startingRow > number;
        const std::int64_t nextNumber = hasNext ? cells[end]->startingRow : number;
        Row row;
        const auto reaches = [&](std::size_t column) {
            return column < maximumColumns && spans[column].block && spans[column].end > number;
        };
        const auto takeSpan = [&] {
            const RowSpan& span = spans[row.size()];
            row.push_back(
                {-1, span.block, false, true, span.isFirstColumn && span.spansColumns, !span.isFirstColumn});
        };
        for (std::size_t index = first; index < end; ++index) {
            const NSTextTableBlock& block = *cells[index];
            const auto column = static_cast<std::size_t>(std::max(block.startingColumn, 0));
            while (row.size() < std::min(column, maximumColumns - 1)) {
                if (reaches(row.size()))
                    takeSpan();
                else
                    row.emplace_back();
            }
            const std::size_t room = row.size() < maximumColumns ? maximumColumns - row.size() : 1;
            const std::size_t count =
                std::clamp<std::size_t>(static_cast<std::size_t>(std::max(block.columnSpan, 1)), 1, room);
            // A span that no row follows is not marked: readers would look for the rows.
            const bool beginsRowSpan = hasNext && endRowOf(block) > nextNumber;
            for (std::size_t offset = 0; offset < count; ++offset) {
                if (row.size() < maximumColumns)
                    spans[row.size()] = {beginsRowSpan ? &block : nullptr, endRowOf(block), offset == 0,
                                         count > 1};
                row.push_back({offset == 0 ? static_cast<std::int32_t>(index) : -1, &block, beginsRowSpan,
                               false, offset == 0 && count > 1, offset > 0});
            }
        }
        std::size_t last = maximumColumns;
        while (last > row.size() && !reaches(last - 1))
            --last;
        while (row.size() < last) {
            if (reaches(row.size()))
                takeSpan();
            else
                row.emplace_back();
        }
        // Where a cell has taken the first column of a span from above, the span's other columns have nothing
        // to be merged into.
        for (std::size_t column = 0; column < row.size(); ++column) {
            Place& place = row[column];
            const bool isAttached = column > 0 && row[column - 1].block == place.block &&
                                    (row[column - 1].beginsColumnSpan || row[column - 1].continuesColumnSpan);
            if (place.continuesColumnSpan && !isAttached)
                place.continuesColumnSpan = false;
        }
        // The next row begins anew, and spans say nothing about its columns.
        if (!hasNext)
            spans = {};
        rows_.push_back(std::move(row));
        first = end;
    }
}

void RTFTableLayout::measureColumns(std::int32_t available) {
    // No table is without a cell.
    std::size_t columns = 1;
    for (const Row& row : rows_)
        columns = std::max(columns, row.size());
    const std::int32_t whole = table_.width ? std::clamp(twipsOfLength(*table_.width, available),
                                                         minimumColumnWidth, maximumTableWidth)
                                            : available;
    std::vector<std::int32_t> widths(columns, 0);
    for (const Row& row : rows_) {
        for (std::size_t column = 0; column < row.size(); ++column) {
            const Place& place = row[column];
            if (widths[column] == 0 && place.block && place.block->width && !place.beginsColumnSpan &&
                !place.continuesColumnSpan)
                widths[column] = std::clamp(twipsOfLength(*place.block->width, whole), minimumColumnWidth,
                                            maximumTableWidth);
        }
    }
    const auto columnCount = static_cast<std::int64_t>(columns);
    const std::int64_t least = std::min<std::int64_t>(minimumColumnWidth, maximumTableWidth / columnCount);
    std::int64_t stated = 0;
    std::int64_t unstatedCount = 0;
    for (const std::int32_t width : widths) {
        stated += width;
        unstatedCount += width == 0;
    }
    std::int64_t left = std::max<std::int64_t>(whole - stated, unstatedCount * least);
    // A table wider than any page shrinks in proportion.
    const std::int64_t total = stated + left * (unstatedCount > 0);
    std::int64_t edge = 0;
    for (const std::int32_t width : widths) {
        const std::int64_t share = width != 0 ? width : left / unstatedCount;
        if (width == 0) {
            left -= share;
            --unstatedCount;
        }
        edge += share;
        const std::int64_t drawn = total > maximumTableWidth ? edge * maximumTableWidth / total : edge;
        edges_.push_back(static_cast<std::int32_t>(drawn));
    }
}

std::int32_t RTFTableLayout::widthInside(std::size_t row, std::size_t place) const {
    const Row& places = rows_[row];
    std::size_t last = place;
    while (last + 1 < places.size() && places[last + 1].continuesColumnSpan)
        ++last;
    std::int32_t width = edges_[last] - (place == 0 ? 0 : edges_[place - 1]);
    if (const NSTextTableBlock* const block = places[place].block)
        width -= rtfTwips(block->padding[0]) + rtfTwips(block->padding[2]);
    return std::max(width, minimumColumnWidth);
}

void RTFTableLayout::writePlace(const Place& place, RTFColorNumbers& colors, RTFOutput& output) const {
    if (place.beginsColumnSpan)
        output.word("clmgf");
    if (place.continuesColumnSpan)
        output.word("clmrg");
    if (place.beginsRowSpan)
        output.word("clvmgf");
    if (place.continuesRowSpan)
        output.word("clvmrg");
    if (!place.block)
        return;
    const NSTextTableBlock& block = *place.block;
    constexpr std::array<std::string_view, 3> alignments{"clvertalt", "clvertalc", "clvertalb"};
    output.word(alignments[static_cast<std::size_t>(block.verticalAlignment)]);
    if (block.backgroundColor)
        output.word("clcbpat", colors.numberOfColor(block.backgroundColor));
    constexpr std::array<std::string_view, 4> sides{"l", "t", "r", "b"};
    for (std::size_t side = 0; side < sides.size(); ++side) {
        const NSTextBlockBorder& border = block.borders[side];
        if (rtfTwips(border.width) <= 0)
            continue;
        output.word("clbrdr" + std::string(sides[side]));
        output.word("brdrs");
        output.word("brdrw", rtfTwips(border.width));
        if (border.color)
            output.word("brdrcf", colors.numberOfColor(border.color));
    }
    for (std::size_t side = 0; side < sides.size(); ++side) {
        if (rtfTwips(block.padding[side]) == 0)
            continue;
        output.word("clpad" + std::string(sides[side]), rtfTwips(block.padding[side]));
        output.word("clpadf" + std::string(sides[side]), 3);
    }
    writeLength("clftsWidth", "clwWidth", block.width, output);
}

void RTFTableLayout::writeDefinition(std::size_t row, RTFColorNumbers& colors, RTFOutput& output) const {
    const auto number = static_cast<std::int32_t>(row);
    output.word("trowd");
    output.word("irow", number);
    output.word("irowband", number);
    if (row + 1 == rows_.size())
        output.word("lastrow");
    if (table_.backgroundColor)
        output.word("trcbpat", colors.numberOfColor(table_.backgroundColor));
    writeLength("trftsWidth", "trwWidth", table_.width, output);
    for (std::size_t column = 0; column < rows_[row].size(); ++column) {
        output.raw("\n");
        writePlace(rows_[row][column], colors, output);
        output.word("cellx", edges_[column]);
    }
    output.raw("\n");
}

} // namespace kelvo
