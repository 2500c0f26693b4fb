#pragma once

#include "platform/foundation/Value.h"

#include <cstdint>

namespace kelvo {

/// The numbers are the platform's own.
enum class NSPropertyListFormat : std::uint32_t {
    openStep = 1,
    xml_v1_0 = 100,
    binary_v1_0 = 200,
};
inline constexpr auto NSPropertyListOpenStepFormat = NSPropertyListFormat::openStep;
inline constexpr auto NSPropertyListXMLFormat_v1_0 = NSPropertyListFormat::xml_v1_0;
inline constexpr auto NSPropertyListBinaryFormat_v1_0 = NSPropertyListFormat::binary_v1_0;

/// How much of the result the caller means to change. It makes no difference here: a mutable copy of any
/// array, dictionary or string shares the storage until it is changed, so the caller makes one where it needs
/// one.
enum class NSPropertyListMutabilityOptions : std::uint8_t {
    immutable = 0,
    mutableContainers = 1,
    mutableContainersAndLeaves = 2,
};

/// Property lists as bytes: XML, binary, and the old-style text with braces and parentheses.
///
/// A property list is made of strings, numbers, dates, data, arrays, and dictionaries whose keys are strings,
/// at most Value::maximumDepth containers deep and of at most 4,194,304 values. Neither operation throws.
class NSPropertyListSerialization {
public:
    /// The tree that the bytes hold, or nil and a reason (a sentence in English) when they hold none.
    /// `format` is set to the form that the bytes are in, on failure to the form they seemed to be in. Both
    /// pointers may be null; `errorDescription` is set to nil on success.
    ///
    /// - Data objects of a binary list share the bytes of `data`, and keep all of them alive.
    /// - Sets are read as arrays, keyed-archive references as a dictionary with the single key "CF$UID".
    /// - Integers are kept as 32-bit numbers where they fit, then as 64-bit ones, past that as doubles.
    /// - Old-style text holds strings, data, arrays and dictionaries only. It is UTF-16 when it has that byte
    ///   order mark, else UTF-8, else NEXTSTEP. Nothing but white space is an empty dictionary.
    /// - Of equal keys in one dictionary the last one counts.
    /// - A binary list is refused when its references share containers or long values so often that it stands
    ///   for more than 256 times its own size (and more than 64 KiB).
    static Value propertyListFromData_mutabilityOption_format_errorDescription(
        const NSData& data, NSPropertyListMutabilityOptions option, NSPropertyListFormat* format,
        NSString* errorDescription);

    /// The bytes, or nil and a reason when the tree is no property list or the format cannot hold it.
    ///
    /// - Old-style text is ASCII and has neither numbers nor dates: they are written as strings, as their
    ///   description shows them, and are read back as such.
    /// - XML has no characters outside of XML 1.0, U+0000 for one, and no dates outside the years 1 to 9999.
    /// Its
    ///   dates are cut to whole seconds.
    static NSData dataFromPropertyList_format_errorDescription(const Value& propertyList,
                                                               NSPropertyListFormat format,
                                                               NSString* errorDescription);
};

} // namespace kelvo
