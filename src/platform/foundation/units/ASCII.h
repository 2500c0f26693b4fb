#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <type_traits>

namespace kelvo {

// Letters and digits of ASCII in units of any type, whatever the locale says. No other unit is ever one of them.

template <typename Unit>
constexpr bool isASCIIDigit(Unit unit) {
    return unit >= '0' && unit <= '9';
}

template <typename Unit>
constexpr bool isASCIILetter(Unit unit) {
    return (unit >= 'a' && unit <= 'z') || (unit >= 'A' && unit <= 'Z');
}

/// A to Z in lower case; any other unit as it is.
template <typename Unit>
constexpr Unit asciiLowerCase(Unit unit) {
    return unit >= 'A' && unit <= 'Z' ? static_cast<Unit>(unit | 0x20) : unit;
}

/// `text` with A to Z in lower case.
template <typename Unit>
std::basic_string<Unit> asciiLowerCased(std::basic_string<Unit> text) {
    std::transform(text.begin(), text.end(), text.begin(), asciiLowerCase<Unit>);
    return text;
}

/// Whether `text` is `lowerCase`, which holds none of A to Z, in letters of any case.
template <typename Unit>
constexpr bool equalsASCIIIgnoringCase(std::basic_string_view<Unit> text,
                                       std::type_identity_t<std::basic_string_view<Unit>> lowerCase) {
    return std::equal(text.begin(), text.end(), lowerCase.begin(), lowerCase.end(),
                      [](Unit unit, Unit wanted) { return asciiLowerCase(unit) == wanted; });
}

/// The value of a hexadecimal digit in either case, -1 for what is none.
template <typename Unit>
constexpr int hexDigitValue(Unit unit) {
    if (isASCIIDigit(unit))
        return static_cast<int>(unit - '0');
    const auto lower = asciiLowerCase(unit);
    return lower >= 'a' && lower <= 'f' ? static_cast<int>(lower - 'a') + 10 : -1;
}

inline constexpr std::string_view lowerHexDigits = "0123456789abcdef";
inline constexpr std::string_view upperHexDigits = "0123456789ABCDEF";

} // namespace kelvo
