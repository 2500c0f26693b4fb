#pragma once

#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"
#include "text/CharacterSetReps.h"

#include <string_view>

namespace kelvo {

// Questions about one tag, "<" and ">" included. The plain forms take a string that holds just the tag; the
// InRange forms take a range of a longer string. Nil, what is too short, and a range that passes the end give
// nil or false.

/// The name in the `length` characters of a tag: its first letter and what follows up to white space, "/",
/// ">" or the end. Without a letter the location is NSNotFound and the length 0.
NSRange rangeOfTagName(const char16_t* characters, std::size_t location, std::size_t length);
/// The same for loops, with alphaCharacterSetRep and whiteCharacterSetRep at hand.
inline NSRange rangeOfTagName(const char16_t* characters, std::size_t location, std::size_t length,
                              CharacterSetRep letters, CharacterSetRep white) {
    const char16_t *end = characters + location + length, *name = characters + location;
    while (name < end && !unitIsInBitmap(letters, *name))
        ++name;
    if (name == end)
        return {NSNotFound, 0};
    const char16_t* nameEnd = name + 1;
    while (nameEnd < end && *nameEnd != u'/' && *nameEnd != u'>' && !unitIsInBitmap(white, *nameEnd))
        ++nameEnd;
    return {static_cast<std::size_t>(name - characters), static_cast<std::size_t>(nameEnd - name)};
}

/// Nil when the tag has no name.
NSString nameOfTag(std::u16string_view tag);
NSString nameOfTagInRange(std::u16string_view string, NSRange range);

/// The second character is not "/". Self-closed tags are both open and closed.
bool isTagOpen(std::u16string_view tag);
bool isTagOpenInRange(std::u16string_view string, NSRange range);

/// The second character is "/", or the last but one.
bool isTagClosed(std::u16string_view tag);
bool isTagClosedInRange(std::u16string_view string, NSRange range);

/// Begins with "<!-": a comment.
bool isRemarkTag(std::u16string_view tag);
bool isRemarkTagInRange(std::u16string_view string, NSRange range);

/// Begins with "<![": a marked section or conditional comment.
bool isMetaTag(std::u16string_view tag);
bool isMetaTagInRange(std::u16string_view string, NSRange range);

} // namespace kelvo
