#pragma once

#include "platform/foundation/Value.h"

#include <array>
#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

namespace kelvo {

/// The format with its conversions replaced, as printf does it, whatever the locale:
///
///   %@              the argument's description
///   %s %S           the same
///   %d %i %D        signed, %u %U unsigned, %x %X hexadecimal, %o %O octal: 32 bits, or with hh 8, h 16, and
///                   l ll q j z t 64; the upper-case letters but X are 64 bits as well
///   %f %F %e %E %g %G %a %A
///   %c %C           one UTF-16 unit by its number, for %c one of the first 256
///   %%              a percent sign
///
/// with the flags - + # 0 and blank (' is accepted and does nothing), a width and a precision, each also as
/// *, and with the positions n$ of arguments, counted from 1. Widths and precisions are in UTF-16 units and
/// held at maximumFieldWidth; a precision cuts text short.
///
/// Nothing that a format holds is undefined. An argument of another kind than its conversion wants is shown
/// as %@ shows it, nil as "(null)". A conversion that is none of these, or for which the arguments do not
/// suffice, stays in the result as it is written. Arguments left over are ignored.
NSString stringWithFormat_arguments(std::u16string_view format, std::span<const Value> arguments);

inline constexpr std::size_t maximumFieldWidth = 4096;

/// What a variadic call makes of one argument: values as they are, C++ numbers boxed (unsigned 64-bit ones by
/// their bits), char strings as UTF-8 with U+FFFD for what is ill-formed.
template <typename T>
Value formatArgument(const T& argument) {
    if constexpr (std::is_same_v<T, bool>)
        return NSNumber::numberWithBool(argument);
    else if constexpr (std::is_same_v<T, float>)
        return NSNumber::numberWithFloat(argument);
    else if constexpr (std::is_floating_point_v<T>)
        return NSNumber::numberWithDouble(static_cast<double>(argument));
    else if constexpr (std::is_integral_v<T> && sizeof(T) <= 4 && std::is_signed_v<T>)
        return NSNumber::numberWithInt(static_cast<std::int32_t>(argument));
    else if constexpr (std::is_integral_v<T>)
        return NSNumber::numberWithLongLong(static_cast<std::int64_t>(argument));
    else if constexpr (std::is_convertible_v<const T&, Value>)
        return argument;
    else if constexpr (std::is_same_v<T, const char*> || std::is_same_v<T, char*>)
        return argument ? Value(NSString::stringByRepairingUTF8String(argument)) : Value();
    else
        return NSString::stringByRepairingUTF8String(argument);
}

template <typename... Arguments>
NSString stringWithFormat(std::u16string_view format, const Arguments&... arguments) {
    const std::array<Value, sizeof...(Arguments)> values{formatArgument(arguments)...};
    return stringWithFormat_arguments(format, values);
}

} // namespace kelvo
