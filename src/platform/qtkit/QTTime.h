#pragma once

#include "platform/foundation/Value.h"

#include <cstdint>

namespace kelvo {

enum QTTimeFlags : std::int32_t { kQTTimeIsIndefinite = 1 };

/// A point in a movie, or a length of it: so many units, of which timeScale make a second. Default-constructed it is no
/// time.
struct QTTime {
    std::int64_t timeValue = 0;
    std::int32_t timeScale = 0;
    std::int32_t flags = 0;

    friend bool operator==(const QTTime&, const QTTime&) = default;
};

/// Units of a second in the times of movies.
inline constexpr std::int32_t movieTimeScale = 1'000'000;

/// To the nearest unit. What is no number becomes 0, and what is too large the largest time of its sign.
QTTime QTMakeTimeWithTimeInterval(double seconds);
/// False, and nothing is set, for a time without a scale and for an indefinite one.
bool QTGetTimeInterval(const QTTime& time, double* seconds);

/// A time as a value among attributes.
Value valueWithQTTime(const QTTime& time);
/// No time when the value is none.
QTTime QTTimeValue(const Value& value);

} // namespace kelvo
