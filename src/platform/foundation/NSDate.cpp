#include "platform/foundation/NSDate.h"

#include "platform/foundation/NSNumber.h"

#include <chrono>
#include <cmath>
#include <cstdio>

namespace kelvo {

NSDate NSDate::date() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return dateWithTimeIntervalSince1970(std::chrono::duration<double>(now).count());
}

NSString NSDate::description() const {
    constexpr double yearZero = -62167219200.0;
    constexpr double yearTenThousand = 253402300800.0;
    const double whole = std::floor(timeIntervalSince1970());
    if (!(whole >= yearZero && whole < yearTenThousand))
        return NSNumber::numberWithDouble(seconds_).stringValue();
    using namespace std::chrono;
    const sys_seconds time{seconds(static_cast<long long>(whole))};
    const auto midnight = floor<days>(time);
    const year_month_day day(midnight);
    const hh_mm_ss clock(time - midnight);
    char text[48];
    const int length =
        std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d +0000", static_cast<int>(day.year()),
                      static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                      static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                      static_cast<int>(clock.seconds().count()));
    return NSString::stringWithLatin1Bytes({text, static_cast<std::size_t>(length)});
}

} // namespace kelvo
