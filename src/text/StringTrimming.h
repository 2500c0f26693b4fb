#pragma once

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"

#include <string_view>

namespace kelvo {

// Trimming removes units at the ends of a string; inner ones stay. The verbs change a mutable string in
// place. The others give a string: the receiver itself when it is nil or empty and when nothing was removed,
// and the empty string when nothing was left.
//
// What is trimmed: white space is White_Space, as CFStringTrimWhitespace has it (the white rep, which knows
// more, is not meant here); spaces are the members of the space rep, tabs and U+0000 among them; feeds are
// those of StringLines.h; digits are the digit rep. A single character is trimmed as it stands, whatever its
// case. `andFeeds` adds the feeds to the spaces, in any mixture.

void trimWhiteSpaces(NSMutableString& string);
NSString stringByTrimmingWhiteSpaces(const NSString& string);
/// The same on a part of a text that something else owns.
std::u16string_view withoutWhiteSpacesAtEnds(std::u16string_view text);

void trimCharacter(NSMutableString& string, char16_t unit);
NSString stringByTrimmingCharacter(const NSString& string, char16_t unit);
/// At the beginning only.
void trimPrefixCharacter(NSMutableString& string, char16_t unit);
NSString stringByTrimmingPrefixCharacter(const NSString& string, char16_t unit);
/// At the end only.
void trimSuffixCharacter(NSMutableString& string, char16_t unit);
NSString stringByTrimmingSuffixCharacter(const NSString& string, char16_t unit);
/// One such character at each end, as quotes have it; nothing when either end lacks it or both ends are one
/// and the same unit.
NSString stringByTrimmingEnclosingCharacter(const NSString& string, char16_t unit);

/// Every ellipsis at either end: U+2026, and three full stops or more in a row. Two full stops stay.
NSString stringByTrimmingEllipsis(const NSString& string);

void trimFeeds(NSMutableString& string);
NSString stringByTrimmingFeeds(const NSString& string);
NSString stringByTrimmingDigits(const NSString& string);

NSString stringByTrimmingSpacesAndFeeds(const NSString& string, bool andFeeds);
NSString stringByTrimmingSpacesOfLeftSideAndFeeds(const NSString& string, bool andFeeds);
NSString stringByTrimmingSpacesOfRightSideAndFeeds(const NSString& string, bool andFeeds);

// At the ends of a range; what stands before and after it stays. A range that passes the end trims nothing.

void trimSpacesInRange_andFeeds(NSMutableString& string, NSRange range, bool andFeeds);
NSString stringByTrimmingSpacesInRange_andFeeds(const NSString& string, NSRange range, bool andFeeds);
void trimWhiteSpacesInRange(NSMutableString& string, NSRange range);

} // namespace kelvo
