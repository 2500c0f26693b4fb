#include "platform/appkit/rtfreader/RTFRowDefinition.h"

#include "platform/appkit/rtfreader/RTFColorTable.h"
#include "platform/appkit/rtfreader/RTFFormats.h"
#include "platform/appkit/rtfreader/RTFWords.h"

#include <algorithm>

namespace kelvo {
namespace {

enum Edge : std::size_t { left, top, right, bottom, betweenRows, betweenColumns };

/// 1584 points, the widest page there is.
constexpr std::int32_t widest = 31680;

std::int32_t length(const RTFToken& token) {
    return std::clamp(token.parameter, 0, widest);
}

std::int32_t position(std::int32_t number) {
    return std::clamp(number, -widest, widest);
}

} // namespace

std::optional<NSTextBlockLength> RTFRowDefinition::Length::length() const {
    if (unit == 2)
        return NSTextBlockLength{static_cast<float>(value) / 50, NSTextBlockLength::Unit::percent};
    if (unit == 3)
        return NSTextBlockLength{pointsFromTwips(value), NSTextBlockLength::Unit::points};
    return std::nullopt;
}

void RTFRowDefinition::begin() {
    cells_.clear();
    next_ = Cell();
    border_ = nullptr;
    isFresh_ = true;
    isLastRow_ = false;
    rowNumber_ = -1;
    leftEdge_ = 0;
    gap_ = 0;
    background_ = -1;
    width_ = Length();
    tableBorders_ = {};
    padding_ = {-1, -1, -1, -1};
}

void RTFRowDefinition::beginBorder(RTFBorder& border) {
    border = {.isStated = true};
    border_ = &border;
}

void RTFRowDefinition::forgetBorder(RTFRowDefinition& row, const RTFToken&) {
    row.border_ = nullptr;
}

void RTFRowDefinition::turnPadding(RTFRowDefinition& row, const RTFToken&) {
    row.next_.isPaddingTurned = true;
}

void RTFRowDefinition::endCell(std::int32_t rightEdge) {
    next_.rightEdge = rightEdge;
    if (cells_.size() < maximumColumns)
        cells_.push_back(next_);
    next_ = Cell();
    border_ = nullptr;
}

std::span<const RTFWord<RTFRowDefinition>> RTFRowDefinition::words() {
    using Row = RTFRowDefinition;
    using Token = RTFToken;
    static constexpr RTFWord<Row> words[] = {
        {"trowd", [](Row& row, const Token&) { row.begin(); }},
        {"irow", [](Row& row, const Token& token) { row.rowNumber_ = token.parameter; }},
        {"lastrow", [](Row& row, const Token&) { row.isLastRow_ = true; }},
        {"trleft", [](Row& row, const Token& token) { row.leftEdge_ = position(token.parameter); }},
        {"trgaph", [](Row& row, const Token& token) { row.gap_ = length(token); }},
        {"trftsWidth", [](Row& row, const Token& token) { row.width_.unit = token.parameter; }},
        {"trwWidth", [](Row& row, const Token& token) { row.width_.value = token.parameter; }},
        {"trcbpat", [](Row& row, const Token& token) { row.background_ = token.parameter; }},
        {"trpaddl", [](Row& row, const Token& token) { row.padding_[left] = length(token); }},
        {"trpaddt", [](Row& row, const Token& token) { row.padding_[top] = length(token); }},
        {"trpaddr", [](Row& row, const Token& token) { row.padding_[right] = length(token); }},
        {"trpaddb", [](Row& row, const Token& token) { row.padding_[bottom] = length(token); }},
        {"trbrdrl", [](Row& row, const Token&) { row.beginBorder(row.tableBorders_[left]); }},
        {"trbrdrt", [](Row& row, const Token&) { row.beginBorder(row.tableBorders_[top]); }},
        {"trbrdrr", [](Row& row, const Token&) { row.beginBorder(row.tableBorders_[right]); }},
        {"trbrdrb", [](Row& row, const Token&) { row.beginBorder(row.tableBorders_[bottom]); }},
        {"trbrdrh", [](Row& row, const Token&) { row.beginBorder(row.tableBorders_[betweenRows]); }},
        {"trbrdrv", [](Row& row, const Token&) { row.beginBorder(row.tableBorders_[betweenColumns]); }},
        {"clbrdrl", [](Row& row, const Token&) { row.beginBorder(row.next_.borders[left]); }},
        {"clbrdrt", [](Row& row, const Token&) { row.beginBorder(row.next_.borders[top]); }},
        {"clbrdrr", [](Row& row, const Token&) { row.beginBorder(row.next_.borders[right]); }},
        {"clbrdrb", [](Row& row, const Token&) { row.beginBorder(row.next_.borders[bottom]); }},
        // Borders of characters, across a cell and beside or between paragraphs are not kept.
        {"brdrbar", forgetBorder},
        {"brdrbtw", forgetBorder},
        {"chbrdr", forgetBorder},
        {"cldglu", forgetBorder},
        {"cldgll", forgetBorder},
        {"clpadl", [](Row& row, const Token& token) { row.next_.padding[left] = length(token); }},
        {"clpadt", [](Row& row, const Token& token) { row.next_.padding[top] = length(token); }},
        {"clpadr", [](Row& row, const Token& token) { row.next_.padding[right] = length(token); }},
        {"clpadb", [](Row& row, const Token& token) { row.next_.padding[bottom] = length(token); }},
        {"clpadfl", turnPadding},
        {"clpadft", turnPadding},
        {"clcbpat", [](Row& row, const Token& token) { row.next_.background = token.parameter; }},
        {"clvertalt",
         [](Row& row, const Token&) { row.next_.verticalAlignment = NSTextBlockVerticalAlignment::top; }},
        {"clvertalc",
         [](Row& row, const Token&) { row.next_.verticalAlignment = NSTextBlockVerticalAlignment::middle; }},
        {"clvertalb",
         [](Row& row, const Token&) { row.next_.verticalAlignment = NSTextBlockVerticalAlignment::bottom; }},
        {"clmgf", [](Row& row, const Token&) { row.next_.horizontal = Merge::first; }},
        {"clmrg", [](Row& row, const Token&) { row.next_.horizontal = Merge::continued; }},
        {"clvmgf", [](Row& row, const Token&) { row.next_.vertical = Merge::first; }},
        {"clvmrg", [](Row& row, const Token&) { row.next_.vertical = Merge::continued; }},
        {"clftsWidth", [](Row& row, const Token& token) { row.next_.width.unit = token.parameter; }},
        {"clwWidth", [](Row& row, const Token& token) { row.next_.width.value = token.parameter; }},
        {"cellx", [](Row& row, const Token& token) { row.endCell(position(token.parameter)); }},
    };
    return words;
}

NSTextBlockBorder RTFRowDefinition::borderOf(std::size_t index, std::size_t edge,
                                             const RTFColorTable& colors) const {
    // The table's borders hold for cells that state none. There is a word for those between columns; whether
    // this is an outer row is not known yet, so every row gets the top and bottom of the table.
    const bool isInner = (edge == left && index > 0) || (edge == right && index + 1 < cells_.size());
    const RTFBorder& own = cells_[index].borders[edge];
    return (own.isStated ? own : tableBorders_[isInner ? betweenColumns : edge]).border(colors);
}

float RTFRowDefinition::paddingOf(const Cell& cell, std::size_t edge) const {
    const bool isTurned = cell.isPaddingTurned && edge <= top;
    const std::int32_t own = cell.padding[isTurned ? left + top - edge : edge];
    if (own >= 0)
        return pointsFromTwips(own);
    if (padding_[edge] >= 0)
        return pointsFromTwips(padding_[edge]);
    return edge == left || edge == right ? pointsFromTwips(gap_) : 0;
}

NSTextTableBlock RTFRowDefinition::blockForCell(std::size_t index, const RTFColorTable& colors) const {
    const Cell& cell = cells_[index];
    NSTextTableBlock block;
    for (std::size_t edge = left; edge <= bottom; ++edge) {
        block.borders[edge] = borderOf(index, edge, colors);
        block.padding[edge] = paddingOf(cell, edge);
    }
    block.backgroundColor = cell.background > 0 ? colors.colorOf(cell.background) : std::nullopt;
    block.verticalAlignment = cell.verticalAlignment;
    return block;
}

NSTextTable RTFRowDefinition::tableAttributes(const RTFColorTable& colors) const {
    NSTextTable table;
    table.width = width_.length();
    table.backgroundColor = background_ > 0 ? colors.colorOf(background_) : std::nullopt;
    return table;
}

} // namespace kelvo
