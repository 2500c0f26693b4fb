#include "platform/imageio/engine/MetadataValues.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

/// More is no fact about an image.
constexpr long mostNumbers = 4096;
constexpr std::size_t mostBytesOfText = std::size_t{1} << 20;

Value integer(std::int64_t number) {
    const auto narrow = static_cast<std::int32_t>(number);
    return narrow == number ? NSNumber::numberWithInt(narrow) : NSNumber::numberWithLongLong(number);
}

bool isFraction(Exiv2::TypeId type) {
    return type == Exiv2::unsignedRational || type == Exiv2::signedRational || type == Exiv2::tiffFloat ||
           type == Exiv2::tiffDouble;
}

/// Absent where nothing is divided by nothing.
std::optional<double> fraction(const Exiv2::Value& value, long index) {
    if (value.typeId() == Exiv2::tiffFloat || value.typeId() == Exiv2::tiffDouble) {
        const double number = static_cast<double>(value.toFloat(index));
        return std::isfinite(number) ? std::optional(number) : std::nullopt;
    }
    // The library's rationals are signed, and these are not.
    const Exiv2::Rational rational = value.toRational(index);
    const bool isSigned = value.typeId() == Exiv2::signedRational;
    const auto widened = [isSigned](std::int32_t part) {
        return isSigned ? static_cast<double>(part) : static_cast<double>(static_cast<std::uint32_t>(part));
    };
    if (rational.second == 0)
        return std::nullopt;
    return widened(rational.first) / widened(rational.second);
}

Value number(const Exiv2::Value& value, long index) {
    if (!isFraction(value.typeId()))
        return integer(value.toLong(index));
    const auto found = fraction(value, index);
    return found ? Value(NSNumber::numberWithDouble(*found)) : Value();
}

Value numbers(const Exiv2::Value& value) {
    std::vector<Value> all;
    for (long index = 0; index < std::min(value.count(), mostNumbers); ++index) {
        // What is not known keeps its place: the widest aperture of a lens, say.
        const Value one = number(value, index);
        all.push_back(one.isNil() ? Value(NSNumber::numberWithDouble(0)) : one);
    }
    return NSArray::arrayWithValues(std::move(all));
}

std::string rawBytes(const Exiv2::Value& value) {
    const long size = value.size();
    if (size <= 0 || static_cast<std::size_t>(size) > mostBytesOfText)
        return {};
    std::string bytes(static_cast<std::size_t>(size), '\0');
    value.copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), Exiv2::bigEndian);
    return bytes;
}

/// The digits, without a zero before them and zeros after them, and two of them at least.
Value versionOf(const Exiv2::Value& value) {
    std::string digits = rawBytes(value);
    digits.resize(std::min(digits.find('\0'), digits.size()));
    if (digits.find_first_not_of("0123456789") != std::string::npos)
        return {};
    if (digits.starts_with('0'))
        digits.erase(0, 1);
    while (digits.size() > 2 && digits.back() == '0')
        digits.pop_back();
    std::vector<Value> all;
    for (const char digit : digits)
        all.emplace_back(NSNumber::numberWithInt(digit - '0'));
    return all.empty() ? Value() : Value(NSArray::arrayWithValues(std::move(all)));
}

/// Eight bytes before the text say how it is encoded.
Value prefixedText(const Exiv2::Value& value) {
    constexpr std::size_t lengthOfPrefix = 8;
    if (const auto* const comment = dynamic_cast<const Exiv2::CommentValue*>(&value))
        return textOf(comment->comment());
    const std::string bytes = rawBytes(value);
    const bool hasPrefix = bytes.starts_with(std::string_view("ASCII\0\0\0", lengthOfPrefix)) ||
                           bytes.starts_with(std::string(lengthOfPrefix, '\0'));
    return textOf(std::string_view(bytes).substr(hasPrefix ? lengthOfPrefix : 0));
}

Value degreesOf(const Exiv2::Value& value) {
    constexpr double parts[] = {1, 60, 3600};
    double degrees = 0;
    bool isKnown = false;
    for (long index = 0; index < std::min<long>(value.count(), std::size(parts)); ++index) {
        if (const auto part = isFraction(value.typeId()) ? fraction(value, index) : std::nullopt) {
            degrees += *part / parts[index];
            isKnown = true;
        }
    }
    return isKnown ? Value(NSNumber::numberWithDouble(degrees)) : Value();
}

Value timeOf(const Exiv2::Value& value) {
    if (!isFraction(value.typeId()) || value.count() < 3)
        return textOf(rawBytes(value));
    double parts[3]{};
    for (long index = 0; index < 3; ++index) {
        const auto part = fraction(value, index);
        if (!part || *part < 0 || *part >= 100)
            return {};
        parts[index] = *part;
    }
    char written[32];
    const int length = std::snprintf(written, sizeof written, "%02.0f:%02.0f:%06.3f", std::floor(parts[0]),
                                     std::floor(parts[1]), parts[2]);
    std::string_view text(written, static_cast<std::size_t>(length));
    // Only what is there of the fraction.
    text = text.substr(0, text.find_last_not_of('0') + 1);
    return textOf(text.ends_with('.') ? std::string_view(written, text.size() - 1) : text);
}

} // namespace

Value textOf(std::string_view bytes) {
    bytes = bytes.substr(0, std::min(bytes.find('\0'), mostBytesOfText));
    constexpr std::string_view padding = " \t\r\n";
    bytes = bytes.substr(0, bytes.find_last_not_of(padding) + 1);
    if (bytes.empty())
        return {};
    const NSString text = NSString::stringWithUTF8String(bytes);
    return text.isNil() ? NSString::stringWithLatin1Bytes(bytes) : text;
}

Value valueOf(const Exiv2::Value& value, ValueForm form) {
    if (value.count() <= 0)
        return {};
    switch (form) {
    case ValueForm::array:
        return numbers(value);
    case ValueForm::version:
        return versionOf(value);
    case ValueForm::text:
        return prefixedText(value);
    case ValueForm::firstNumber:
        return number(value, 0);
    case ValueForm::degrees:
        return degreesOf(value);
    case ValueForm::time:
        return timeOf(value);
    case ValueForm::plain:
        break;
    }
    switch (value.typeId()) {
    case Exiv2::asciiString:
    case Exiv2::string:
        return textOf(rawBytes(value));
    case Exiv2::undefined:
        return {};
    default:
        return value.count() == 1 ? number(value, 0) : numbers(value);
    }
}

} // namespace kelvo
