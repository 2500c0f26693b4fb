#pragma once

#include <optional>
#include <string_view>

namespace kelvo::importers {

/// The seconds since 1970 of "20200229T123456Z", the same without "Z" in a time zone ("Europe/Berlin"), or a day. Hyphens
/// and colons between them do not matter. What is in no zone that is known is taken for UTC.
std::optional<double> timeOfCalendar(std::string_view text, std::string_view zone);

/// "PT1H30M" in seconds.
std::optional<double> durationOfCalendar(std::string_view text);

} // namespace kelvo::importers
