#include "platform/qtkit/QTTime.h"

#include <cmath>
#include <limits>
#include <memory>

namespace kelvo {
namespace {

class BoxedTime final : public NSObject {
public:
    explicit BoxedTime(const QTTime& given) : time(given) {}

    NSString className() const override { return u"NSValue"; }

    const QTTime time;
};

} // namespace

QTTime QTMakeTimeWithTimeInterval(double seconds) {
    using Limits = std::numeric_limits<std::int64_t>;
    QTTime time{0, movieTimeScale, 0};
    const double units = std::round(seconds * movieTimeScale);
    if (std::isnan(units))
        return time;
    // The largest integer is no double; the next one above it is.
    if (units >= static_cast<double>(Limits::max()))
        time.timeValue = Limits::max();
    else if (units <= static_cast<double>(Limits::min()))
        time.timeValue = Limits::min();
    else
        time.timeValue = static_cast<std::int64_t>(units);
    return time;
}

bool QTGetTimeInterval(const QTTime& time, double* seconds) {
    if (time.timeScale <= 0 || (time.flags & kQTTimeIsIndefinite) != 0)
        return false;
    *seconds = static_cast<double>(time.timeValue) / time.timeScale;
    return true;
}

Value valueWithQTTime(const QTTime& time) {
    return Value(std::shared_ptr<NSObject>(std::make_shared<BoxedTime>(time)));
}

QTTime QTTimeValue(const Value& value) {
    const auto boxed = std::dynamic_pointer_cast<const BoxedTime>(value.object());
    return boxed ? boxed->time : QTTime{};
}

} // namespace kelvo
