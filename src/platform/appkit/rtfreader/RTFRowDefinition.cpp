#include "platform/appkit/rtfreader/RTFRowDefinition.h"

#include "platform/appkit/rtfreader/RTFColorTable.h"
#include "platform/appkit/rtfreader/RTFFormats.h"
#include "platform/appkit/rtfreader/RTFScanner.h"
#include "platform/appkit/rtfreader/RTFWords.h"

#include <algorithm>

namespace kelvo {
namespace {

enum Edge : std::size_t { left, top, right, bottom, betweenRows, betweenColumns };

/// A hair line, which borders have that state a style and no width.
constexpr std::int32_t thinnestBorder = 10;
/// 1584 points, the widest page there is.
constexpr std::int32_t widest = 31680;

} // namespace

std::optional<NSTextBlockLength> RTFRowDefinition::Length::length() const {
    if (unit == 2)
        return NSTextBlockLength{static_cast<float>(value) / 50, NSTextBlockLength::Unit::percent};
    if (unit == 3)
        return NSTextBlockLength{pointsFromTwips(value), NSTextBlockLength::Unit::points};
    return std::nullopt;
}

void RTFRowDefinition::applyToBorder(RTFWord word, const RTFToken& token) {
    if (!border_)
        return;
    switch (word) {
    case RTFWord::brdrnil:
    case RTFWord::brdrnone:
    case RTFWord::brdrtbl:
        border_->isNone = true;
        break;
    case RTFWord::brdrw:
        border_->width = std::clamp(token.parameter, 0, widest);
        break;
    case RTFWord::brdrcf:
        border_->color = token.parameter;
        break;
    default:
        border_->isNone = false;
        break;
    }
}

void RTFRowDefinition::apply(RTFWord word, const RTFToken& token) {
    const std::int32_t number = token.parameter;
    const auto beginBorder = [&](Border& border) {
        border = {.isStated = true};
        border_ = &border;
    };
    switch (word) {
    case RTFWord::trowd:
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
        break;
    case RTFWord::irow:
        rowNumber_ = number;
        break;
    case RTFWord::lastrow:
        isLastRow_ = true;
        break;
    case RTFWord::trleft:
        leftEdge_ = std::clamp(number, -widest, widest);
        break;
    case RTFWord::trgaph:
        gap_ = std::clamp(number, 0, widest);
        break;
    case RTFWord::trftsWidth:
        width_.unit = number;
        break;
    case RTFWord::trwWidth:
        width_.value = number;
        break;
    case RTFWord::trcbpat:
        background_ = number;
        break;
    case RTFWord::trpaddl:
        padding_[left] = std::clamp(number, 0, widest);
        break;
    case RTFWord::trpaddt:
        padding_[top] = std::clamp(number, 0, widest);
        break;
    case RTFWord::trpaddr:
        padding_[right] = std::clamp(number, 0, widest);
        break;
    case RTFWord::trpaddb:
        padding_[bottom] = std::clamp(number, 0, widest);
        break;
    case RTFWord::trbrdrl:
        beginBorder(tableBorders_[left]);
        break;
    case RTFWord::trbrdrt:
        beginBorder(tableBorders_[top]);
        break;
    case RTFWord::trbrdrr:
        beginBorder(tableBorders_[right]);
        break;
    case RTFWord::trbrdrb:
        beginBorder(tableBorders_[bottom]);
        break;
    case RTFWord::trbrdrh:
        beginBorder(tableBorders_[betweenRows]);
        break;
    case RTFWord::trbrdrv:
        beginBorder(tableBorders_[betweenColumns]);
        break;
    case RTFWord::clbrdrl:
        beginBorder(next_.borders[left]);
        break;
    case RTFWord::clbrdrt:
        beginBorder(next_.borders[top]);
        break;
    case RTFWord::clbrdrr:
        beginBorder(next_.borders[right]);
        break;
    case RTFWord::clbrdrb:
        beginBorder(next_.borders[bottom]);
        break;
    case RTFWord::brdrl:
    case RTFWord::brdrt:
    case RTFWord::brdrr:
    case RTFWord::brdrb:
    case RTFWord::brdrbar:
    case RTFWord::brdrbtw:
    case RTFWord::box:
    case RTFWord::chbrdr:
    case RTFWord::cldglu:
    case RTFWord::cldgll:
        border_ = nullptr; // Of a paragraph, of characters or across a cell: not kept.
        break;
    case RTFWord::clpadl:
        next_.padding[left] = std::clamp(number, 0, widest);
        break;
    case RTFWord::clpadt:
        next_.padding[top] = std::clamp(number, 0, widest);
        break;
    case RTFWord::clpadr:
        next_.padding[right] = std::clamp(number, 0, widest);
        break;
    case RTFWord::clpadb:
        next_.padding[bottom] = std::clamp(number, 0, widest);
        break;
    case RTFWord::clpadfl:
    case RTFWord::clpadft:
        next_.isPaddingTurned = true;
        break;
    case RTFWord::clcbpat:
        next_.background = number;
        break;
    case RTFWord::clvertalt:
        next_.verticalAlignment = NSTextBlockVerticalAlignment::top;
        break;
    case RTFWord::clvertalc:
        next_.verticalAlignment = NSTextBlockVerticalAlignment::middle;
        break;
    case RTFWord::clvertalb:
        next_.verticalAlignment = NSTextBlockVerticalAlignment::bottom;
        break;
    case RTFWord::clmgf:
        next_.horizontal = Merge::first;
        break;
    case RTFWord::clmrg:
        next_.horizontal = Merge::continued;
        break;
    case RTFWord::clvmgf:
        next_.vertical = Merge::first;
        break;
    case RTFWord::clvmrg:
        next_.vertical = Merge::continued;
        break;
    case RTFWord::clftsWidth:
        next_.width.unit = number;
        break;
    case RTFWord::clwWidth:
        next_.width.value = number;
        break;
    case RTFWord::cellx:
        next_.rightEdge = std::clamp(number, -widest, widest);
        if (cells_.size() < maximumColumns)
            cells_.push_back(next_);
        next_ = Cell();
        border_ = nullptr;
        break;
    default:
        applyToBorder(word, token);
        break;
    }
}

NSTextBlockBorder RTFRowDefinition::borderOf(std::size_t index, std::size_t edge,
                                             const RTFColorTable& colors) const {
    // What the table says holds for cells that do not say it themselves; between columns it has words of
    // its own, and which rows are the outer ones cannot be known here.
    const bool isInner = (edge == left && index > 0) || (edge == right && index + 1 < cells_.size());
    const Border& own = cells_[index].borders[edge];
    const Border& border = own.isStated ? own : tableBorders_[isInner ? betweenColumns : edge];
    if (!border.isStated || border.isNone)
        return {};
    return {pointsFromTwips(border.width < 0 ? thinnestBorder : border.width), colors.colorOf(border.color)};
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
