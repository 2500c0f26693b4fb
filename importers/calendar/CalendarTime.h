#pragma once

#include <chrono>
#include <optional>
#include <string_view>

namespace kelvo::importers {

/// The seconds since 1970 of "20200229T123456Z", the same without "Z" in a time zone ("Europe/Berlin"), or a day. Hyphens
/// and colons between them do not matter. What is in no zone that is known is in that of this machine, and so are days,
/// which begin at midnight.
std::optional<double> timeOfCalendar(std::string_view text, std::string_view zone);

/// That of "20200229"; absent for what has a time as well.
std::optional<std::chrono::local_days> dayOfCalendar(std::string_view text);

/// In seconds since 1970, when it begins in the zone of this machine.
std::optional<double> beginningOfDay(std::chrono::local_days day);

/// "PT1H30M" in seconds.
std::optional<double> durationOfCalendar(std::string_view text);

} // namespace kelvo::importers
