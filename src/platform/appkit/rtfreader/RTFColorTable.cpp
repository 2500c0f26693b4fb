#include "platform/appkit/rtfreader/RTFColorTable.h"

#include "platform/appkit/rtfreader/RTFScanner.h"
#include "platform/appkit/rtfreader/RTFWords.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr std::size_t maximumColors = 65536;

float componentOf(std::int32_t byte) {
    return static_cast<float>(std::clamp(byte, 0, 255)) / 255;
}

} // namespace

void RTFColorTable::apply(Part part, RTFWord word, const RTFToken& token) {
    if (part == Part::expanded) {
        if (word != RTFWord::c)
            currentExpanded_ = {.space = word};
        else if (currentExpanded_.count < currentExpanded_.components.size())
            currentExpanded_.components[currentExpanded_.count++] = std::clamp(token.parameter, 0, 100000);
        return;
    }
    float* const component = word == RTFWord::red     ? &current_.red
                             : word == RTFWord::green ? &current_.green
                             : word == RTFWord::blue  ? &current_.blue
                                                      : nullptr;
    if (!component)
        return;
    *component = componentOf(token.parameter);
    isStated_ = true;
}

void RTFColorTable::append(Part part, std::u16string_view units) {
    auto& table = part == Part::plain ? plain_ : expanded_;
    for (const char16_t unit : units) {
        if (unit != u';')
            continue;
        if (table.size() < maximumColors)
            table.push_back(part == Part::expanded ? colorOf(currentExpanded_)
                            : isStated_            ? std::optional(current_)
                                                   : std::nullopt);
        current_ = {0, 0, 0, 1};
        isStated_ = false;
        currentExpanded_ = Expanded();
    }
}

std::optional<NSColor> RTFColorTable::colorOf(const Expanded& entry) {
    const auto component = [&](std::size_t index) {
        return static_cast<float>(entry.components[index]) / 100000;
    };
    switch (entry.space) {
    case RTFWord::csgray:
        if (entry.count < 1)
            return std::nullopt;
        return NSColor{component(0), component(0), component(0), entry.count > 1 ? component(1) : 1};
    case RTFWord::cssrgb:
    case RTFWord::csgenericrgb:
        if (entry.count < 3)
            return std::nullopt;
        return NSColor{component(0), component(1), component(2), entry.count > 3 ? component(3) : 1};
    default:
        return std::nullopt;
    }
}

std::optional<NSColor> RTFColorTable::colorOf(std::int32_t number) const {
    if (number < 0)
        return std::nullopt;
    const auto index = static_cast<std::size_t>(number);
    if (index < expanded_.size() && expanded_[index])
        return expanded_[index];
    return index < plain_.size() ? plain_[index] : std::nullopt;
}

} // namespace kelvo
