#include "importers/support/DayText.h"

#include <string>

namespace kelvo::importers {

std::optional<NSDate> dayOfText(std::u16string_view text) {
    constexpr std::u16string_view firstDay = u"-01-01";
    if (text.size() != 4 && text.size() != 7)
        return momentOfClock(text);
    return momentOfClock(std::u16string(text).append(text.size() == 4 ? firstDay : firstDay.substr(3)));
}

} // namespace kelvo::importers
