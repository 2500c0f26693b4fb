#pragma once

#include "platform/foundation/Value.h"

#include <exiv2/exiv2.hpp>

#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

/// How a value is written that is not simply a number, numbers or text.
enum class ValueForm : std::uint8_t {
    plain,
    array,       ///< an array also when there is one
    version,     ///< "0230": 2, 3
    text,        ///< with a prefix that says its encoding
    firstNumber, ///< of bytes without a type
    degrees,     ///< degrees, minutes and seconds
    time         ///< hours, minutes and seconds
};

struct TagRow {
    std::uint16_t tag;
    const char16_t* name;
    ValueForm form = ValueForm::plain;
};

/// Sorted by their tags.
std::span<const TagRow> tagsOfTIFF();
std::span<const TagRow> tagsOfExif();
std::span<const TagRow> tagsOfGPS();
/// Those with the form `array` may be there several times.
std::span<const TagRow> tagsOfIPTC();

/// Null when it is not one of these.
const TagRow* rowOfTag(std::span<const TagRow> rows, std::uint16_t tag);

/// Nil when the value is empty or makes no sense.
Value valueOf(const Exiv2::Value& value, ValueForm form);
/// Text of an unknown encoding, without what pads it; nil when nothing is left.
Value textOf(std::string_view bytes);

} // namespace kelvo
