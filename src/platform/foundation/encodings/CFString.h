#pragma once

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/encodings/CFStringNormalization.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

/// Fold and compare options; may be combined with |.
inline constexpr std::uint32_t kCFCompareCaseInsensitive = 1;
inline constexpr std::uint32_t kCFCompareDiacriticInsensitive = 128;

// All of these work without a locale, change the string in place, leave nil and unpaired surrogates alone and
// take linear time.

/// Full case mappings: a letter may become several (U+00DF becomes "SS").
void CFStringUppercase(NSMutableString& string);
/// Full case mappings; a capital sigma at the end of a word becomes U+03C2.
void CFStringLowercase(NSMutableString& string);
/// The first letter of each word in title case, the others in lower case. A word is a run of letters, marks
/// and apostrophes (U+0027 and U+2019).
void CFStringCapitalize(NSMutableString& string);
/// Diacritic-insensitive: canonical decomposition with the combining marks (general category Mn) removed, and
/// what then remains in form C. Case-insensitive: full case folding. With both, diacritics go first.
void CFStringFold(NSMutableString& string, std::uint32_t options);
/// Removes leading and trailing units with the White_Space property.
void CFStringTrimWhitespace(NSMutableString& string);

/// Negative, zero or positive, unit by unit, after simple case folding of each unit; never normalises. With
/// equal beginnings the shorter text is less.
int CFStringCompareCaseInsensitive(std::u16string_view left, std::u16string_view right);

/// The same as readers of the user's language order names: letters before their variants with diacritics, and
/// these before the next letter, case disregarded. The language is that of LC_ALL, LC_COLLATE or LANG when it
/// is first asked for; without one the order is that of most languages.
int CFStringCompareLocalizedCaseInsensitive(std::u16string_view left, std::u16string_view right);

} // namespace kelvo
