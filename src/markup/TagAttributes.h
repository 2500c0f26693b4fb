#pragma once

#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// Readers of attributes, parameters and style properties. Names are ASCII and NUL-terminated; case does not
// matter unless stated. The result is nil when the name or its value is absent or the value is empty. A null
// name, and a range that passes the end of its string, give nil.

/// The value of an attribute in the `tagLength` characters of a tag from `tagLocation` on. The name must not
/// follow a letter or digit, must be followed by "=", with or without white space between, and is not looked
/// for inside quotes. An unquoted value ends before white space or ">", a quoted one before the same quote or
/// ">"; the end of the tag ends any. White space at the end of the value is dropped. Tags of no more than the
/// name's length and 5 characters give nil.
///
/// With `nested` a quoted value may hold markup: a ">" ends it only while no "<" is open in it (and never as
/// its first character), and so does "<meta", before which a quote was forgotten. When one "<" is still open
/// at the closing quote, a "<" or "</" at the very end is dropped.
NSString _attributeOfTagCharactersWithName(const char16_t* characters, std::size_t tagLocation,
                                           std::size_t tagLength, const char* name, bool nested);

/// The same value where it stands in the tag, for callers that read many tags and keep nothing: empty where
/// the above is nil.
std::u16string_view attributeValueOfTag(std::u16string_view tag, const char* name, bool nested);

namespace XmlExtensions {
/// The same with `nested` off.
NSString attributeOfTagCharacters_range_withName(const char16_t* characters, NSRange range, const char* name);
/// The same for a tag that begins at `characters`.
NSString attributeOfTagCharacters_length_withName(const char16_t* characters, std::size_t length,
                                                  const char* name);
} // namespace XmlExtensions

/// The value of a name=value parameter in a header or an attribute's value. `name` has `nameLength` bytes and
/// must be in upper case, with which the text is compared in upper case; it matches anywhere, also inside a
/// longer word. A value that begins with `quote` runs up to the next one, any other up to ";", and with
/// `stopAtWhite` up to white space too. White space after "=" is skipped only with `stopAtWhite`. Where the
/// value is empty the search goes on.
NSString _copyOfAttributeOfString(std::u16string_view string, const char* name, std::size_t nameLength,
                                  char16_t quote, bool stopAtWhite);

/// How _attributeOfStringWithName reads.
enum AttributeOptions : unsigned {
    /// Case of the name does not matter.
    attributeIgnoresCase = 1,
    /// White space ends a value without quotes, and the closing quote one with quotes.
    attributeValueIsOneToken = 4,
    /// What attributes of tags are read with.
    attributeOptionsOfTag = attributeIgnoresCase | attributeValueIsOneToken,
    /// What properties of style declarations are read with.
    attributeOptionsOfStyle = attributeIgnoresCase,
};

/// The value that follows `name` and `separator`, up to `terminator` or the end of the range, without white
/// space and quotes around it. The name must stand alone, so "top" is not found in "margin-top", and outside
/// quotes. A terminator inside quotes does not end the value; an opening quote that is never closed is
/// dropped, and hides nothing.
NSString _attributeOfStringWithName(std::u16string_view string, std::size_t location, std::size_t length,
                                    const char* name, unsigned options, char16_t separator,
                                    char16_t terminator);

/// An attribute of a tag: separator "=", terminator ">".
NSString attributeOfTagWithName(std::u16string_view tag, const char* name);
NSString attributeOfTagInRange_withName(std::u16string_view string, NSRange range, const char* name);
/// A property of a style declaration such as "top: 4px; left: 0": separator ":", terminator ";".
NSString attributeOfStyleWithName(std::u16string_view style, const char* name);
NSString attributeOfStyleInRange_withName(std::u16string_view string, NSRange range, const char* name);

} // namespace kelvo
