#include "importers/calendar/CalendarTime.h"

#include "importers/support/DateText.h"
#include "platform/foundation/units/ASCII.h"

#include <unicode/ucal.h>

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

/// What is written down.
struct Writing {
    std::chrono::year_month_day day;
    bool hasTime = false;
    bool isUTC = false;
    int hour = 0;
    int minute = 0;
    int second = 0;
};

std::optional<Writing> writingIn(std::string_view text) {
    std::string digits;
    Writing writing;
    for (const char byte : text) {
        if (isASCIIDigit(byte))
            digits += byte;
        else if (byte == 'Z')
            writing.isUTC = true;
        else if (byte != 'T' && byte != '-' && byte != ':' && byte != ' ')
            return std::nullopt;
    }
    if (digits.size() != 8 && digits.size() != 14)
        return std::nullopt;
    writing.hasTime = digits.size() == 14;
    digits.resize(14, '0');
    const auto part = [&](std::size_t start, std::size_t length) {
        return numberOf(std::string_view(digits).substr(start, length));
    };
    writing.day = {std::chrono::year(part(0, 4)), std::chrono::month(static_cast<unsigned>(part(4, 2))),
                   std::chrono::day(static_cast<unsigned>(part(6, 2)))};
    writing.hour = part(8, 2);
    writing.minute = part(10, 2);
    writing.second = part(12, 2);
    if (!writing.day.ok() || writing.hour > 23 || writing.minute > 59 || writing.second > 60)
        return std::nullopt;
    return writing;
}

/// Absent when the zone is none that is known.
std::optional<double> timeInZone(const Writing& writing, std::string_view zone) {
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
    ucal_setDateTime(calendar.get(), static_cast<int>(writing.day.year()),
                     static_cast<int>(static_cast<unsigned>(writing.day.month())) - 1,
                     static_cast<int>(static_cast<unsigned>(writing.day.day())), writing.hour, writing.minute,
                     writing.second, &status);
    const double milliseconds = ucal_getMillis(calendar.get(), &status);
    return U_SUCCESS(status) ? std::optional(milliseconds / 1000) : std::nullopt;
}

std::optional<double> timeHere(std::chrono::local_seconds clock) {
    const auto moment = momentHere(clock);
    return moment ? std::optional(moment->timeIntervalSince1970()) : std::nullopt;
}

} // namespace

std::optional<double> timeOfCalendar(std::string_view text, std::string_view zone) {
    const auto writing = writingIn(text);
    if (!writing)
        return std::nullopt;
    const std::chrono::local_days day(writing->day);
    if (!writing->hasTime)
        return timeHere(day);
    const std::chrono::local_seconds clock = day + std::chrono::hours(writing->hour) +
                                             std::chrono::minutes(writing->minute) +
                                             std::chrono::seconds(writing->second);
    if (writing->isUTC)
        return static_cast<double>(clock.time_since_epoch().count());
    const auto time = timeInZone(*writing, zone);
    return time ? time : timeHere(clock);
}

std::optional<std::chrono::local_days> dayOfCalendar(std::string_view text) {
    const auto writing = writingIn(text);
    return writing && !writing->hasTime ? std::optional(std::chrono::local_days(writing->day)) : std::nullopt;
}

std::optional<double> beginningOfDay(std::chrono::local_days day) {
    return timeHere(day);
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
