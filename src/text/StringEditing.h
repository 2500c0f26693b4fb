#pragma once

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// Adding to a mutable string. A nil string stays nil. Nothing is added where an index or range passes the
// end, and where the result would pass maximumSizeInBytes. The text may be a part of the string itself.

/// Adds the text without white space (White_Space) at its ends.
void appendTrimmedString(NSMutableString& string, std::u16string_view text);
/// `count` units; a null pointer adds nothing.
void appendCharacters_length(NSMutableString& string, const char16_t* units, std::size_t count);
void appendCharacter(NSMutableString& string, char16_t unit);
/// The index may be the length.
void insertCharacter_atIndex(NSMutableString& string, char16_t unit, std::size_t index);
/// The part of `text` that the range names.
void appendSubstring_range(NSMutableString& string, std::u16string_view text, NSRange range);

// Tabs, in place. Columns are counted in units from the last line end (the feeds of StringLines.h), tab stops
// stand at the multiples of `columnsPerTab`. With 0 nothing changes.

/// Runs of two or more U+0020 that end at a tab stop become a tab; of longer runs, each part that does.
/// decodeTabs then gives back the same columns.
void encodeTabs(NSMutableString& string, std::size_t columnsPerTab);
/// Each tab becomes as many U+0020 as lead to the next tab stop, one at least. Nothing changes when the
/// result would pass maximumSizeInBytes.
void decodeTabs(NSMutableString& string, std::size_t columnsPerTab);

/// Moves the letters A to Z and a to z by that many places in their alphabet, round its end; a negative
/// number moves them back. All else stands. The receiver itself when it is nil or empty and when nothing
/// changed.
NSString stringByRotating(const NSString& string, int places);
/// Its own inverse.
inline NSString stringByRotating13(const NSString& string) {
    return stringByRotating(string, 13);
}

} // namespace kelvo
