#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

namespace KELVO_PUBLIC kelvo {

/// From the reference date of this class, 2001-01-01 00:00:00 UTC, back to 1970-01-01, in seconds.
inline constexpr double NSTimeIntervalSince1970 = 978307200.0;

/// A point in time, in seconds (fractions and negative values included) from the reference date
/// 2001-01-01 00:00:00 UTC. Never nil; inside a Value the date may be absent.
class NSDate {
public:
    static NSDate date();
    static constexpr NSDate dateWithTimeIntervalSinceReferenceDate(double seconds) { return NSDate(seconds); }
    static constexpr NSDate dateWithTimeIntervalSince1970(double seconds) {
        return NSDate(seconds - NSTimeIntervalSince1970);
    }

    constexpr double timeIntervalSinceReferenceDate() const noexcept { return seconds_; }
    constexpr double timeIntervalSince1970() const noexcept { return seconds_ + NSTimeIntervalSince1970; }
    constexpr double timeIntervalSinceDate(NSDate other) const noexcept { return seconds_ - other.seconds_; }

    /// "2026-11-21 09:30:00 +0000", cut to whole seconds; dates outside the years 0 to 9999 as seconds from
    /// the reference date.
    NSString description() const;

    friend constexpr bool operator==(NSDate, NSDate) = default;

private:
    explicit constexpr NSDate(double seconds) : seconds_(seconds) {}

    double seconds_;
};

} // namespace kelvo
