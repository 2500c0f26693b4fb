#pragma once

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSString.h"
#include "text/CharacterSetReps.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// Removing units wherever they stand. The verbs change a mutable string in place. The others give a string:
// the receiver itself when it is nil or empty and when nothing was removed. All take linear time, however
// much they remove.
//
// What is removed: spaces are the members of the space rep, tabs and U+0000 among them; white characters and
// digits are the white and the digit rep; feeds are those of StringLines.h; an attachment is U+FFFC.

/// Every unit that occurs anywhere in `characters`. Nil, like the empty string, names none.
void removeCharactersOfString(NSMutableString& string, std::u16string_view characters);
NSString stringByRemovingCharactersOfString(const NSString& string, std::u16string_view characters);
/// Every unit in the rep; a null rep has no members.
void removeCharacters(NSMutableString& string, CharacterSetRep rep);
class UnitSet;
void removeMembers(NSMutableString& string, const UnitSet& unwanted);
NSString stringByRemovingCharacters(const NSString& string, CharacterSetRep rep);
/// Nothing at or past the end.
void removeCharacterAtIndex(NSMutableString& string, std::size_t index);

void removeTabs(NSMutableString& string);
NSString stringByRemovingTabs(const NSString& string);
void removeFeeds(NSMutableString& string);
NSString stringByRemovingFeeds(const NSString& string);
void removeSpaces(NSMutableString& string);
NSString stringByRemovingSpaces(const NSString& string);
void removeWhiteCharacters(NSMutableString& string);
NSString stringByRemovingWhiteCharacters(const NSString& string);
void removeDigits(NSMutableString& string);
NSString stringByRemovingDigits(const NSString& string);
void removeAttachments(NSMutableString& string);

/// Keeps the first unit of each run of spaces. Feeds are left alone.
void removeMultipleSpaces(NSMutableString& string);
/// Keeps the first line end of each run of feeds; U+000D U+000A is one. Spaces between two feeds make them
/// two runs.
void removeMultipleFeeds(NSMutableString& string);
NSString stringByRemovingMultipleFeeds(const NSString& string);
/// Multiple spaces and, with `andFeeds`, then multiple feeds.
void removeMultipleSpacesAndFeeds(NSMutableString& string, bool andFeeds);
NSString stringByRemovingMultipleSpacesAndFeeds(const NSString& string, bool andFeeds);

/// The rest in upper (lower) case by the full mappings of CFString.h, so that U+00DF becomes "SS".
NSString uppercaseStringByRemovingDigits(const NSString& string);
NSString lowercaseStringByRemovingDigits(const NSString& string);
/// A key for comparison: letters, marks and numbers only, each as its entry in the upper-case table. Strings
/// have the same key exactly when equalStringsNoCaseUsingCharacterSetRep finds them equal by the alphanumeric
/// rep.
NSString caseInsensitiveStringByRemovingNonAlphaNumericCharacters(const NSString& string);

} // namespace kelvo
