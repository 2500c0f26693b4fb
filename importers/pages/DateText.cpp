#include "importers/pages/DateText.h"

#include "platform/foundation/units/ASCII.h"

#include <chrono>

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

} // namespace

std::optional<NSDate> momentOfText(std::u16string_view text) {
    Reader reader(text);
    const auto year = reader.takeNumber(4, 9999);
    const bool hasMonth = reader.take(u'-');
    const auto month = reader.takeNumber(2, 12);
    const bool hasDay = reader.take(u'-');
    const auto day = reader.takeNumber(2, 31);
    const bool hasTime = reader.take(u'T') || reader.take(u't') || reader.take(u' ');
    const auto hour = reader.takeNumber(2, 23);
    const bool hasMinute = reader.take(u':');
    const auto minute = reader.takeNumber(2, 59);
    if (!year || !hasMonth || !month || !hasDay || !day || !hasTime || !hour || !hasMinute || !minute)
        return std::nullopt;
    double seconds = 0;
    if (reader.take(u':')) {
        const auto second = reader.takeNumber(2, 60);
        if (!second)
            return std::nullopt;
        seconds = *second + reader.takeFraction();
    }
    const auto zone = reader.takeZone();
    const std::chrono::year_month_day date(std::chrono::year(static_cast<int>(*year)),
                                           std::chrono::month(*month), std::chrono::day(*day));
    if (!zone || !reader.isAtEnd() || !date.ok())
        return std::nullopt;
    const auto days = std::chrono::sys_days(date).time_since_epoch().count();
    return NSDate::dateWithTimeIntervalSince1970(static_cast<double>(days) * 86400 + *hour * 3600.0 +
                                                 *minute * 60.0 + seconds - *zone);
}

} // namespace kelvo::importers
