#include "importers/calendar/CalendarTime.h"

#include "platform/foundation/units/ASCII.h"

#include <unicode/ucal.h>

#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <type_traits>

namespace kelvo::importers {
namespace {

constexpr int longestZone = 64;

int numberOf(std::string_view digits) {
    int number = 0;
    for (const char digit : digits)
        number = number * 10 + (digit - '0');
    return number;
}

/// Absent when the zone is none that is known.
std::optional<double> timeInZone(const std::array<int, 6>& parts, std::string_view zone) {
    if (zone.empty() || zone.size() > longestZone)
        return std::nullopt;
    const std::u16string identifier(zone.begin(), zone.end());
    UErrorCode status = U_ZERO_ERROR;
    UBool isSystem = false;
    UChar canonical[128];
    ucal_getCanonicalTimeZoneID(identifier.data(), static_cast<int32_t>(identifier.size()), canonical, 128,
                                &isSystem, &status);
    if (U_FAILURE(status) || !isSystem)
        return std::nullopt;
    const std::unique_ptr<std::remove_pointer_t<UCalendar*>, decltype(&ucal_close)> calendar(
        ucal_open(identifier.data(), static_cast<int32_t>(identifier.size()), "en", UCAL_GREGORIAN, &status),
        ucal_close);
    if (U_FAILURE(status))
        return std::nullopt;
    ucal_clear(calendar.get());
    ucal_setDateTime(calendar.get(), parts[0], parts[1] - 1, parts[2], parts[3], parts[4], parts[5], &status);
    const double milliseconds = ucal_getMillis(calendar.get(), &status);
    return U_SUCCESS(status) ? std::optional(milliseconds / 1000) : std::nullopt;
}

} // namespace

std::optional<double> timeOfCalendar(std::string_view text, std::string_view zone) {
    std::string digits;
    bool isUTC = false;
    for (const char byte : text) {
        if (isASCIIDigit(byte))
            digits += byte;
        else if (byte == 'Z')
            isUTC = true;
        else if (byte != 'T' && byte != '-' && byte != ':' && byte != ' ')
            return std::nullopt;
    }
    if (digits.size() != 8 && digits.size() != 14)
        return std::nullopt;
    digits.resize(14, '0');
    std::array<int, 6> parts{};
    constexpr std::array<std::size_t, 6> starts{0, 4, 6, 8, 10, 12};
    for (std::size_t index = 0; index < parts.size(); ++index)
        parts[index] = numberOf(std::string_view(digits).substr(starts[index], index == 0 ? 4 : 2));
    const std::chrono::year_month_day day{std::chrono::year{parts[0]},
                                          std::chrono::month{static_cast<unsigned>(parts[1])},
                                          std::chrono::day{static_cast<unsigned>(parts[2])}};
    if (!day.ok() || parts[3] > 23 || parts[4] > 59 || parts[5] > 60)
        return std::nullopt;
    if (!isUTC) {
        if (const auto time = timeInZone(parts, zone))
            return time;
    }
    const auto days = std::chrono::sys_days(day).time_since_epoch().count();
    return static_cast<double>(days) * 86400 + parts[3] * 3600 + parts[4] * 60 + parts[5];
}

std::optional<double> durationOfCalendar(std::string_view text) {
    double seconds = 0;
    double number = 0;
    bool hasUnit = false;
    for (const char byte : text) {
        if (isASCIIDigit(byte)) {
            number = number * 10 + (byte - '0');
            continue;
        }
        const double unit = byte == 'W'   ? 7 * 86400
                            : byte == 'D' ? 86400
                            : byte == 'H' ? 3600
                            : byte == 'M' ? 60
                            : byte == 'S' ? 1
                                          : 0;
        if (unit == 0 && byte != 'P' && byte != 'T' && byte != '+')
            return std::nullopt;
        hasUnit = hasUnit || unit > 0;
        seconds += number * unit;
        number = 0;
    }
    return hasUnit && seconds < 1e10 ? std::optional(seconds) : std::nullopt;
}

} // namespace kelvo::importers
