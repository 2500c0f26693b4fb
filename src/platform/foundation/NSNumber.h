#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <compare>
#include <cstdint>

namespace KELVO_PUBLIC kelvo {

/// The placeholder for "no value" inside collections, which cannot hold nil.
struct NSNull {
    friend bool operator==(NSNull, NSNull) { return true; }
};

/// A boxed number that remembers what it was made from. Never nil.
class NSNumber {
public:
    enum class Kind : std::uint8_t { boolean, int32, int64, float32, float64 };

    static NSNumber numberWithBool(bool value) { return NSNumber(Kind::boolean, value ? 1 : 0); }
    static NSNumber numberWithInt(std::int32_t value) { return NSNumber(Kind::int32, value); }
    /// Unsigned 32-bit numbers are kept as 64-bit integers.
    static NSNumber numberWithUnsignedInt(std::uint32_t value) { return NSNumber(Kind::int64, value); }
    static NSNumber numberWithLongLong(std::int64_t value) { return NSNumber(Kind::int64, value); }
    static NSNumber numberWithFloat(float value) {
        return NSNumber(Kind::float32, static_cast<double>(value));
    }
    static NSNumber numberWithDouble(double value) { return NSNumber(Kind::float64, value); }

    Kind kind() const noexcept { return kind_; }
    bool isBoolean() const noexcept { return kind_ == Kind::boolean; }
    bool isFloatingPoint() const noexcept { return kind_ >= Kind::float32; }

    bool boolValue() const noexcept { return isFloatingPoint() ? real_ != 0 : integer_ != 0; }
    /// Integers of another width keep their low bits; floating values are cut towards zero and held at the
    /// ends of the range; not-a-number gives 0.
    std::int32_t intValue() const noexcept;
    std::uint32_t unsignedIntValue() const noexcept { return static_cast<std::uint32_t>(longLongValue()); }
    std::int64_t longLongValue() const noexcept;
    float floatValue() const noexcept { return static_cast<float>(doubleValue()); }
    double doubleValue() const noexcept { return isFloatingPoint() ? real_ : static_cast<double>(integer_); }

    /// Integers in decimal (booleans as "1" and "0"), floating values in the shortest form that reads back to
    /// the same number of their width.
    NSString stringValue() const;

    /// By value, whatever the kinds: 1 equals true and 1.0. Exact: 2^53 + 1 differs from the double 2^53.
    /// Not-a-number equals itself here, so that a collection equals its own copy.
    friend bool operator==(const NSNumber& left, const NSNumber& right) noexcept {
        return left.compare(right) == std::strong_ordering::equal;
    }
    /// Not-a-number sorts before every other number.
    std::strong_ordering compare(const NSNumber& other) const noexcept;
    /// Equal numbers have equal hashes.
    std::size_t hash() const noexcept;

private:
    NSNumber(Kind kind, std::int64_t value) : kind_(kind), integer_(value) {}
    NSNumber(Kind kind, int value) : kind_(kind), integer_(value) {}
    NSNumber(Kind kind, std::uint32_t value) : kind_(kind), integer_(value) {}
    NSNumber(Kind kind, double value) : kind_(kind), real_(value) {}

    Kind kind_;
    union {
        std::int64_t integer_;
        double real_;
    };
};

} // namespace kelvo
