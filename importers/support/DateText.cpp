#include "importers/support/DateText.h"

#include "platform/foundation/units/ASCII.h"

#include <chrono>
#include <ctime>

namespace kelvo::importers {
namespace {

class Reader {
public:
    explicit Reader(std::u16string_view text) : rest_(text) {}

    bool isAtEnd() const { return rest_.empty(); }

    bool take(char16_t unit) {
        if (!rest_.starts_with(unit))
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    /// A number of just so many digits, and no greater.
    std::optional<unsigned> takeNumber(std::size_t digits, unsigned most) {
        unsigned number = 0;
        if (rest_.size() < digits)
            return std::nullopt;
        for (const char16_t unit : rest_.substr(0, digits)) {
            if (!isASCIIDigit(unit))
                return std::nullopt;
            number = number * 10 + (unit - u'0');
        }
        rest_.remove_prefix(digits);
        return number <= most ? std::optional(number) : std::nullopt;
    }

    /// Of a second; 0 when there is none. Digits past nanoseconds do not count.
    double takeFraction() {
        double fraction = 0;
        if (!take(u'.') && !take(u','))
            return 0;
        double worth = 1;
        for (; !rest_.empty() && isASCIIDigit(rest_[0]); rest_.remove_prefix(1)) {
            worth /= 10;
            if (worth > 0.5e-9)
                fraction += worth * (rest_[0] - u'0');
        }
        return fraction;
    }

    /// Seconds east of UTC.
    std::optional<double> takeZone() {
        if (take(u'Z') || take(u'z'))
            return 0;
        const bool isWest = take(u'-');
        if (!isWest && !take(u'+'))
            return std::nullopt;
        const auto hours = takeNumber(2, 23);
        take(u':');
        const auto minutes = takeNumber(2, 59);
        if (!hours || !minutes)
            return std::nullopt;
        const double seconds = *hours * 3600.0 + *minutes * 60.0;
        return isWest ? -seconds : seconds;
    }

private:
    std::u16string_view rest_;
};

/// What is written down; a time without a zone has none.
struct Writing {
    std::chrono::sys_days day;
    unsigned hour = 0;
    unsigned minute = 0;
    double second = 0;
    std::optional<double> zone;
};

std::optional<std::chrono::sys_days> takeDay(Reader& reader, bool mayHaveColons) {
    const auto takeMark = [&] { return reader.take(u'-') || (mayHaveColons && reader.take(u':')); };
    const auto year = reader.takeNumber(4, 9999);
    const bool hasMonth = takeMark();
    const auto month = reader.takeNumber(2, 12);
    const bool hasDay = takeMark();
    const auto day = reader.takeNumber(2, 31);
    if (!year || !hasMonth || !month || !hasDay || !day)
        return std::nullopt;
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*year)),
                                           std::chrono::month(*month), std::chrono::day(*day));
    return date.ok() ? std::optional(std::chrono::sys_days(date)) : std::nullopt;
}

std::optional<Writing> writingIn(std::u16string_view text, bool mayHaveColons) {
    Reader reader(text);
    const auto day = takeDay(reader, mayHaveColons);
    if (!day)
        return std::nullopt;
    Writing writing;
    writing.day = *day;
    if (reader.isAtEnd())
        return writing;
    const bool hasTime = reader.take(u'T') || reader.take(u't') || reader.take(u' ');
    const auto hour = reader.takeNumber(2, 23);
    const bool hasMinute = reader.take(u':');
    const auto minute = reader.takeNumber(2, 59);
    if (!hasTime || !hour || !hasMinute || !minute)
        return std::nullopt;
    writing.hour = *hour;
    writing.minute = *minute;
    if (reader.take(u':')) {
        const auto second = reader.takeNumber(2, 60);
        if (!second)
            return std::nullopt;
        writing.second = *second + reader.takeFraction();
    }
    if (!reader.isAtEnd()) {
        writing.zone = reader.takeZone();
        if (!writing.zone || !reader.isAtEnd())
            return std::nullopt;
    }
    return writing;
}

NSDate momentOf(const Writing& writing, double secondsEast) {
    const auto days = writing.day.time_since_epoch().count();
    return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(days) * 86400 + writing.hour * 3600.0 +
                                                 writing.minute * 60.0 + writing.second - secondsEast);
}

} // namespace

std::optional<NSDate> momentHere(std::chrono::local_seconds clock) {
    const auto day = std::chrono::floor<std::chrono::days>(clock);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(clock - day);
    std::tm fields{};
    fields.tm_year = static_cast<int>(date.year()) - 1900;
    fields.tm_mon = static_cast<int>(static_cast<unsigned>(date.month())) - 1;
    fields.tm_mday = static_cast<int>(static_cast<unsigned>(date.day()));
    fields.tm_hour = static_cast<int>(time.hours().count());
    fields.tm_min = static_cast<int>(time.minutes().count());
    fields.tm_sec = static_cast<int>(time.seconds().count());
    fields.tm_isdst = -1;
    // Not by the result, -1 of which is a moment as well.
    fields.tm_wday = -1;
    const std::time_t moment = std::mktime(&fields);
    if (fields.tm_wday < 0)
        return std::nullopt;
    return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(moment));
}

std::optional<NSDate> momentOfText(std::u16string_view text) {
    const auto writing = writingIn(text, false);
    if (!writing || !writing->zone)
        return std::nullopt;
    return momentOf(*writing, *writing->zone);
}

std::optional<NSDate> momentOfClock(std::u16string_view text) {
    const auto writing = writingIn(text, true);
    if (!writing)
        return std::nullopt;
    if (writing->zone)
        return momentOf(*writing, *writing->zone);
    const auto moment = momentHere(std::chrono::local_days(writing->day.time_since_epoch()) +
                                   std::chrono::hours(writing->hour) + std::chrono::minutes(writing->minute));
    if (!moment)
        return std::nullopt;
    return NSDate::dateWithTimeIntervalSince1970(moment->timeIntervalSince1970() + writing->second);
}

} // namespace kelvo::importers
