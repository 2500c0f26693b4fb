#include "platform/appkit/rtfreader/RTFColorTable.h"

#include "platform/appkit/rtfreader/RTFWords.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr std::size_t maximumColors = 65536;

float componentOf(std::int32_t byte) {
    return static_cast<float>(std::clamp(byte, 0, 255)) / 255;
}

} // namespace

template <float NSColor::*component>
void RTFColorTable::setComponent(RTFColorTable& table, const RTFToken& token) {
    table.current_.*component = componentOf(token.parameter);
    table.isStated_ = true;
}

template <RTFColorTable::Space space>
void RTFColorTable::beginComponents(RTFColorTable& table, const RTFToken&) {
    table.currentExpanded_ = {.space = space};
}

void RTFColorTable::addComponent(RTFColorTable& table, const RTFToken& token) {
    Expanded& entry = table.currentExpanded_;
    if (entry.count < entry.components.size())
        entry.components[entry.count++] = std::clamp(token.parameter, 0, 100000);
}

void RTFColorTable::apply(Part part, const RTFToken& token) {
    static constexpr RTFWord<RTFColorTable> plainWords[] = {
        {"red", setComponent<&NSColor::red>},
        {"green", setComponent<&NSColor::green>},
        {"blue", setComponent<&NSColor::blue>},
    };
    static constexpr RTFWord<RTFColorTable> expandedWords[] = {
        {"c", addComponent},
        {"csgray", beginComponents<Space::gray>},
        {"cssrgb", beginComponents<Space::rgb>},
        {"csgenericrgb", beginComponents<Space::rgb>},
        {"cspthree", beginComponents<Space::unknown>},
    };
    applyRTFWord<RTFColorTable>(part == Part::plain ? std::span<const RTFWord<RTFColorTable>>(plainWords)
                                                    : expandedWords,
                                *this, token);
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
    case Space::gray:
        if (entry.count < 1)
            return std::nullopt;
        return NSColor{component(0), component(0), component(0), entry.count > 1 ? component(1) : 1};
    case Space::rgb:
        if (entry.count < 3)
            return std::nullopt;
        return NSColor{component(0), component(1), component(2), entry.count > 3 ? component(3) : 1};
    case Space::unknown:
        break;
    }
    return std::nullopt;
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
