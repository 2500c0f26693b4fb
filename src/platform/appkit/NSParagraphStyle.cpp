#include "platform/appkit/NSParagraphStyle.h"

#include <algorithm>

namespace kelvo {
namespace {

template <typename T>
bool areEqual(const std::shared_ptr<const T>& left, const std::shared_ptr<const T>& right) {
    return left == right || (left && right && *left == *right);
}

template <typename T>
bool areEqual(const std::vector<std::shared_ptr<const T>>& left,
              const std::vector<std::shared_ptr<const T>>& right) {
    return std::ranges::equal(left, right,
                              [](const auto& one, const auto& other) { return areEqual<T>(one, other); });
}

} // namespace

const NSParagraphStyle& NSParagraphStyle::defaultParagraphStyle() {
    static const NSParagraphStyle style;
    return style;
}

bool operator==(const NSTextTableBlock& left, const NSTextTableBlock& right) {
    return areEqual(left.table, right.table) && left.startingRow == right.startingRow &&
           left.startingColumn == right.startingColumn && left.rowSpan == right.rowSpan &&
           left.columnSpan == right.columnSpan && left.width == right.width &&
           left.borders == right.borders && left.padding == right.padding &&
           left.backgroundColor == right.backgroundColor && left.verticalAlignment == right.verticalAlignment;
}

bool operator==(const NSParagraphStyle& left, const NSParagraphStyle& right) {
    return left.alignment == right.alignment && left.baseWritingDirection == right.baseWritingDirection &&
           left.firstLineHeadIndent == right.firstLineHeadIndent && left.headIndent == right.headIndent &&
           left.tailIndent == right.tailIndent &&
           left.paragraphSpacingBefore == right.paragraphSpacingBefore &&
           left.paragraphSpacing == right.paragraphSpacing &&
           left.lineHeightMultiple == right.lineHeightMultiple &&
           left.minimumLineHeight == right.minimumLineHeight &&
           left.maximumLineHeight == right.maximumLineHeight && left.lineSpacing == right.lineSpacing &&
           left.headerLevel == right.headerLevel && left.tabStops == right.tabStops &&
           left.defaultTabInterval == right.defaultTabInterval && left.borders == right.borders &&
           left.borderSpacing == right.borderSpacing && areEqual(left.textLists, right.textLists) &&
           areEqual(left.textBlocks, right.textBlocks);
}

} // namespace kelvo
