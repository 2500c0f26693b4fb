#include "importers/support/DayText.h"

#include <string>

namespace kelvo::importers {

std::optional<NSDate> dayOfText(std::u16string_view text) {
    if (const auto moment = momentOfText(text))
        return moment;
    constexpr std::u16string_view firstDay = u"-01-01";
    if (text.size() > 10)
        return std::nullopt;
    const std::u16string day = std::u16string(text) + std::u16string(text.size() == 4   ? firstDay
                                                                     : text.size() == 7 ? firstDay.substr(3)
                                                                                        : u"");
    return momentOfText(day + u"T00:00Z");
}

} // namespace kelvo::importers
