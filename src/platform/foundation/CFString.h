#pragma once

#include "platform/foundation/NSMutableString.h"

#include <cstdint>
#include <string_view>

namespace kelvo {

/// The four normalisation forms of Unicode.
enum class CFStringNormalizationForm : std::uint8_t { D = 0, KD = 1, C = 2, KC = 3 };

/// Fold and compare options; may be combined with |.
inline constexpr std::uint32_t kCFCompareCaseInsensitive = 1;
inline constexpr std::uint32_t kCFCompareDiacriticInsensitive = 128;

// All of these work without a locale, change the string in place, and leave nil alone.

/// Full case mappings: a letter may become several (U+00DF becomes "SS").
void CFStringUppercase(NSMutableString& string);
void CFStringLowercase(NSMutableString& string);
/// The first letter of each word in title case, the others in lower case. A word is a run of letters, marks
/// and apostrophes.
void CFStringCapitalize(NSMutableString& string);
/// Diacritic-insensitive: canonical decomposition with the combining marks (general category Mn) removed,
/// recomposed where nothing was removed. Case-insensitive: full case folding.
void CFStringFold(NSMutableString& string, std::uint32_t options);
void CFStringNormalize(NSMutableString& string, CFStringNormalizationForm form);
/// Whether the text is in that form already (never a guess: an exact yes or no).
bool CFStringIsNormalized(std::u16string_view units, CFStringNormalizationForm form);
/// Removes leading and trailing units with the White_Space property.
void CFStringTrimWhitespace(NSMutableString& string);

/// Negative, zero or positive, unit by unit, after simple case folding of each unit; never normalises. With
/// equal beginnings the shorter text is less.
int CFStringCompareCaseInsensitive(std::u16string_view left, std::u16string_view right);

} // namespace kelvo
