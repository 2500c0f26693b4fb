#pragma once

#include "platform/foundation/NSRange.h"
#include "platform/foundation/NSString.h"
#include "text/UnicharCompare.h"

#include <cstddef>
#include <string_view>

namespace kelvo {

// Strings mapped unit by unit through the tables of FoldingTables.h, so that their length stays. Each is the
// receiver itself when that is nil or empty and when nothing changed.

/// Without diacritics; U+00DF stays.
NSString nonUmlautedString(const NSString& string);
NSString uppercaseNonUmlautedString(const NSString& string);
NSString lowercaseNonUmlautedString(const NSString& string);
/// The same after normalisation to form C, so that diacritics that are units of their own go too where there
/// is a composed letter.
NSString nonUmlautedNormalizedString(const NSString& string);
NSString uppercaseNonUmlautedNormalizedString(const NSString& string);
NSString lowercaseNonUmlautedNormalizedString(const NSString& string);

/// Without diacritics, and with a space for every unit that is not ASCII then.
NSString asciiString(const NSString& string);
NSString uppercaseAsciiString(const NSString& string);
NSString lowercaseAsciiString(const NSString& string);

/// Whether nonUmlautedString would change a unit. False for nil.
bool isUmlautedString(std::u16string_view string);
/// Whether there is an upper-case letter and no lower-case one (a lower-case letter and no upper-case one) by
/// the upper and the lower rep; other units do not matter. False for nil, for the empty string and for digits
/// alone.
bool isUpperCaseString(std::u16string_view string);
bool isLowerCaseString(std::u16string_view string);

// Equality, unit by unit: texts of different length are never equal, two empty ones are. Nil equals nothing,
// not even nil, and neither does a range that passes the end. With a range, that part of the string is
// compared with the whole of the other.

/// Compares what uppercaseNonUmlautedString makes of the strings.
bool isNonUmlautedEqualToStringNoCase(const NSString& string, const NSString& other);
bool range_isNonUmlautedEqualToNoCase(const NSString& string, NSRange range, const NSString& other);
/// Compares what uppercaseAsciiString makes of them: all units without an ASCII counterpart are equal to each
/// other and to a space.
bool isAsciiEqualToStringNoCase(const NSString& string, const NSString& other);
bool range_isAsciiEqualToNoCase(const NSString& string, NSRange range, const NSString& other);
/// By the entries of the upper-case table, and not as isEqualToStringNoCase.
bool range_isEqualToNoCase(const NSString& string, NSRange range, const NSString& other);
bool range_isEqualTo(const NSString& string, NSRange range, const NSString& other);

/// The three-way compares of UnicharCompare.h as operations of the class: negative, zero or positive. A null
/// pointer is an empty array whatever its count.
namespace NSStringKelvoExtensions {
inline int compareCharacters_withCharacters(const char16_t* first, std::size_t firstCount,
                                            const char16_t* second, std::size_t secondCount) {
    return fastCompareUnichars(first, first ? firstCount : 0, second, second ? secondCount : 0);
}
inline int caseInsensitiveCompareCharacters_withCharacters(const char16_t* first, std::size_t firstCount,
                                                           const char16_t* second, std::size_t secondCount) {
    return fastCaseInsensitiveCompareUnichars(first, first ? firstCount : 0, second,
                                              second ? secondCount : 0);
}
} // namespace NSStringKelvoExtensions

} // namespace kelvo
