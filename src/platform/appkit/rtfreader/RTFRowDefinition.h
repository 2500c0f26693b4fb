#pragma once

#include "platform/appkit/NSTextTable.h"
#include "platform/appkit/rtfreader/RTFBorder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace kelvo {

class RTFColorTable;
struct RTFToken;
template <typename State>
struct RTFWord;

/// What RTF says of the cells of a row; lengths are in twips.
class RTFRowDefinition {
public:
    /// More columns than any table has. Text past them goes into the last cell.
    static constexpr std::size_t maximumColumns = 1024;

    struct Length {
        std::int32_t value = 0;
        /// 0: not stated, 1: automatic, 2: in 50ths of a percent, 3: in twips.
        std::int32_t unit = 0;

        std::optional<NSTextBlockLength> length() const;
    };
    enum class Merge : std::uint8_t { none, first, continued };
    struct Cell {
        std::int32_t rightEdge = 0;
        Length width;
        Merge horizontal = Merge::none;
        Merge vertical = Merge::none;
        NSTextBlockVerticalAlignment verticalAlignment = NSTextBlockVerticalAlignment::top;
        std::int32_t background = -1;
        NSTextTableBlock::Edges<RTFBorder> borders;
        NSTextTableBlock::Edges<std::int32_t> padding{-1, -1, -1, -1};
        /// What is said of the left means the top, and the other way round: a fault of Word that became the
        /// custom of all who state the unit of the padding.
        bool isPaddingTurned = false;
    };

    RTFRowDefinition() = default;
    RTFRowDefinition(const RTFRowDefinition&) = delete;
    RTFRowDefinition& operator=(const RTFRowDefinition&) = delete;

    static std::span<const RTFWord<RTFRowDefinition>> words();
    /// The row is over; what was said of this one row alone does not hold for the next. A definition may come
    /// before the cells or after them, and rows that look like the last one may have none.
    void endRow() { isFresh_ = false; }

    /// The border of which words speak now; null: none of the row's.
    RTFBorder* border() { return border_; }

    bool isFresh() const { return isFresh_; }
    bool isStated() const { return !cells_.empty(); }
    /// The number of the row in its table; -1 when it is not stated.
    std::int32_t rowNumber() const { return isFresh_ ? rowNumber_ : -1; }
    bool isLastRow() const { return isFresh_ && isLastRow_; }
    std::int32_t leftEdge() const { return leftEdge_; }
    const std::vector<Cell>& cells() const { return cells_; }
    /// How a cell looks, without its place and width; `index` is below the count of cells.
    NSTextTableBlock blockForCell(std::size_t index, const RTFColorTable& colors) const;
    NSTextTable tableAttributes(const RTFColorTable& colors) const;

private:
    NSTextBlockBorder borderOf(std::size_t index, std::size_t edge, const RTFColorTable& colors) const;
    float paddingOf(const Cell& cell, std::size_t edge) const;
    void begin();
    void beginBorder(RTFBorder& border);
    void endCell(std::int32_t rightEdge);
    static void forgetBorder(RTFRowDefinition& row, const RTFToken& token);
    static void turnPadding(RTFRowDefinition& row, const RTFToken& token);

    std::vector<Cell> cells_;
    Cell next_;
    RTFBorder* border_ = nullptr;
    bool isFresh_ = false;
    bool isLastRow_ = false;
    std::int32_t rowNumber_ = -1;
    std::int32_t leftEdge_ = 0;
    std::int32_t gap_ = 0;
    std::int32_t background_ = -1;
    Length width_;
    /// Left, top, right, bottom of the table, and between rows and between columns of it.
    std::array<RTFBorder, 6> tableBorders_;
    NSTextTableBlock::Edges<std::int32_t> padding_{-1, -1, -1, -1};
};

} // namespace kelvo
