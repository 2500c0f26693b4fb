#include "platform/foundation/NSNumber.h"

#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <limits>

namespace kelvo {
namespace {

template <typename Integer>
Integer cutToInteger(double value) noexcept {
    if (std::isnan(value))
        return 0;
    // The largest integers are not doubles themselves: compare with the power of two just past the range.
    const double past = std::ldexp(1.0, std::numeric_limits<Integer>::digits);
    if (value >= past)
        return std::numeric_limits<Integer>::max();
    if (value < -past)
        return std::numeric_limits<Integer>::min();
    return static_cast<Integer>(value);
}

std::strong_ordering compareIntegerWithReal(std::int64_t integer, double real) noexcept {
    if (std::isnan(real))
        return std::strong_ordering::greater;
    const double past = std::ldexp(1.0, 63);
    if (real >= past)
        return std::strong_ordering::less;
    if (real < -past)
        return std::strong_ordering::greater;
    const double whole = std::trunc(real);
    const auto asInteger = static_cast<std::int64_t>(whole);
    if (integer != asInteger)
        return integer <=> asInteger;
    return whole == real ? std::strong_ordering::equal
                         : (whole < real ? std::strong_ordering::less : std::strong_ordering::greater);
}

std::strong_ordering compareReals(double left, double right) noexcept {
    if (std::isnan(left) || std::isnan(right))
        return std::isnan(right) <=> std::isnan(left);
    return left < right    ? std::strong_ordering::less
           : left == right ? std::strong_ordering::equal
                           : std::strong_ordering::greater;
}

} // namespace

std::int32_t NSNumber::intValue() const noexcept {
    return isFloatingPoint() ? cutToInteger<std::int32_t>(real_) : static_cast<std::int32_t>(integer_);
}

std::int64_t NSNumber::longLongValue() const noexcept {
    return isFloatingPoint() ? cutToInteger<std::int64_t>(real_) : integer_;
}

NSString NSNumber::stringValue() const {
    std::array<char, 64> text;
    char* const end = text.data() + text.size();
    const auto written = kind_ == Kind::float32   ? std::to_chars(text.data(), end, static_cast<float>(real_))
                         : kind_ == Kind::float64 ? std::to_chars(text.data(), end, real_)
                                                  : std::to_chars(text.data(), end, integer_);
    return NSString::stringWithLatin1Bytes({text.data(), written.ptr});
}

std::strong_ordering NSNumber::compare(const NSNumber& other) const noexcept {
    if (!isFloatingPoint() && !other.isFloatingPoint())
        return integer_ <=> other.integer_;
    if (isFloatingPoint() && other.isFloatingPoint())
        return compareReals(real_, other.real_);
    if (isFloatingPoint())
        // NOLINTNEXTLINE(modernize-use-nullptr): the check takes the 0 of a comparison for a null pointer.
        return 0 <=> compareIntegerWithReal(other.integer_, real_);
    return compareIntegerWithReal(integer_, other.real_);
}

std::size_t NSNumber::hash() const noexcept {
    return std::isnan(doubleValue()) ? 0 : std::hash<double>()(doubleValue());
}

} // namespace kelvo
