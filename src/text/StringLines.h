#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"
#include "text/CharacterSetReps.h"

#include <string_view>

namespace kelvo {

// Lines and what ends them. Eight units are feeds: U+000A, U+000C, U+000D, U+2028, U+2029, U+0003 (end of
// text), U+FFFC (an attachment) and U+FEFF (the byte-order mark). All but the last also end a line; see
// LineScan.h.

bool isFeedCharacter(char16_t unit);
/// The feeds as a rep.
CharacterSetRep feedCharacterSetRep();

/// The lines, each with its ending; U+000D U+000A is one ending. Text after the last ending is the last line.
/// Empty for the empty string, nil for nil.
NSArray lines(const NSString& string);

/// Whether the last unit is a feed.
bool hasFeedOfLine(std::u16string_view string);
/// The run of feeds at the end, the empty string when there is none. Nil for nil.
NSString feedOfLine(const NSString& string);

/// Joins hard-wrapped lines into paragraphs. From each line the units that occur in `characters` are removed
/// (nil: none) and then white space (White_Space) at both ends. Consecutive lines that still hold something
/// are joined by single spaces; the first blank line after them becomes a paragraph break, its own feeds
/// twice, or once when it is the last line. Other blank lines vanish. Multiple spaces are removed at last, as
/// removeMultipleSpaces does. The string itself when it is nil or empty, when nothing changed and when the
/// result would be too long.
NSString reformattedStringByRemovingCharactersOfString(const NSString& string, const NSString& characters);

} // namespace kelvo
