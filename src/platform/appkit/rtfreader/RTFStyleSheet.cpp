#include "platform/appkit/rtfreader/RTFStyleSheet.h"

#include "platform/appkit/rtfreader/RTFWords.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr int maximumHeaderLevel = 6;
constexpr std::size_t maximumStyles = 65536;
constexpr std::size_t maximumNameLength = 512;

/// "heading 2", however it is capitalised; 0 for other names.
int headerLevelOfName(std::u16string_view name) {
    constexpr std::u16string_view prefix = u"heading ";
    if (name.size() != prefix.size() + 1 || name.back() < u'1' || name.back() > u'9')
        return 0;
    const bool isHeading = equalsASCIIIgnoringCase(name.substr(0, prefix.size()), prefix);
    return isHeading ? std::min(name.back() - u'0', maximumHeaderLevel) : 0;
}

} // namespace

int headerLevelOfOutlineLevel(std::int32_t outlineLevel) {
    return outlineLevel < 0 || outlineLevel > 8 ? 0 : std::min(outlineLevel + 1, maximumHeaderLevel);
}

void RTFStyleSheet::apply(const RTFToken& token) {
    static constexpr RTFWord<RTFStyleSheet> words[] = {
        {"s", [](RTFStyleSheet& sheet, const RTFToken& word) { sheet.number_ = word.parameter; }},
        {"cs", [](RTFStyleSheet& sheet, const RTFToken&) { sheet.isOfParagraphs_ = false; }},
        {"outlinelevel",
         [](RTFStyleSheet& sheet, const RTFToken& word) { sheet.outlineLevel_ = word.parameter; }},
    };
    applyRTFWord<RTFStyleSheet>(words, *this, token);
}

void RTFStyleSheet::append(std::u16string_view units) {
    for (const char16_t unit : units) {
        if (unit == u';')
            finishEntry();
        else if (name_.size() < maximumNameLength && !(name_.empty() && unit == u' '))
            name_ += unit;
    }
}

void RTFStyleSheet::finishEntry() {
    int level = headerLevelOfOutlineLevel(outlineLevel_);
    if (outlineLevel_ < 0)
        level = headerLevelOfName(name_);
    if (isOfParagraphs_ && level > 0 && headerLevels_.size() < maximumStyles)
        headerLevels_.insert_or_assign(number_, level);
    number_ = 0;
    isOfParagraphs_ = true;
    outlineLevel_ = -1;
    name_.clear();
}

int RTFStyleSheet::headerLevelOf(std::int32_t style) const {
    const auto found = headerLevels_.find(style);
    return found == headerLevels_.end() ? 0 : found->second;
}

} // namespace kelvo
