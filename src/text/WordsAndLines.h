#pragma once

#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// Words, fields, lines and single characters of a text. An index outside the text, and nil, find nothing: nil
// or {NSNotFound, 0} from the forms that take an index. The forms without an index give nil for nil, and the
// empty string where a text has no such part. A part that is the whole text is the text itself.

// A word is a longest run of alphanumeric units (letters, marks and numbers), in which single apostrophes
// (U+0027 or U+2019) with an alphanumeric unit on both sides are counted: "don't" is one word, "rock'n'roll"
// too, "'tis" begins with the t, and "well-known" is two words. Surrogates are in no word.

/// The word that the unit at the index belongs to; nothing when that is no unit of a word.
NSRange getWordRangeAtIndex(std::u16string_view text, std::size_t index);
NSString getWordAtIndex(const NSString& text, std::size_t index);
NSString firstWord(const NSString& text);
NSString lastWord(const NSString& text);

/// The longest run around the index without any of the separators; nothing when the unit at the index is one
/// of them. Without separators (nil or empty) that is the whole text.
NSRange getSubstringRangeAtIndex_separators(std::u16string_view text, std::size_t index,
                                            std::u16string_view separators);
NSString getSubstringAtIndex_separators(const NSString& text, std::size_t index,
                                        std::u16string_view separators);

// Lines end as they do for lines(): after U+000A, U+000C, U+000D (U+000D U+000A is one end), U+2028, U+2029,
// U+0003 and U+FFFC. An end at the end of the text begins no further line.

/// 0 for nil and for the empty text.
std::size_t numberOfLines(std::u16string_view text);
/// Without its end.
NSString firstLine(const NSString& text);

/// U+0000 where there is none.
inline char16_t firstCharacter(std::u16string_view text) {
    return text.empty() ? u'\0' : text.front();
}
inline char16_t lastCharacter(std::u16string_view text) {
    return text.empty() ? u'\0' : text.back();
}

/// The last match by the character rule of CharacterSearch.h at or before `startAt`, or NSNotFound. It is the
/// counterpart of findCharacter, so a search for "a" that regards case finds "A" here too.
std::size_t findLastCharacter_startAt_caseInsensitive(std::u16string_view text, char16_t unit,
                                                      std::size_t startAt, bool caseInsensitive);
inline std::size_t findLastCharacter_caseInsensitive(std::u16string_view text, char16_t unit,
                                                     bool caseInsensitive) {
    return text.empty()
               ? NSNotFound
               : findLastCharacter_startAt_caseInsensitive(text, unit, text.size() - 1, caseInsensitive);
}
inline std::size_t findLastCharacter(std::u16string_view text, char16_t unit) {
    return findLastCharacter_caseInsensitive(text, unit, false);
}

} // namespace kelvo
