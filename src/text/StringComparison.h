#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/NSStringNumbers.h"

#include <string_view>

namespace kelvo {

// Tests of a whole string. "Without regard to case" is the platform's case-insensitive compare: unit by unit
// after simple case folding, without normalisation, so that texts of different length are never equal and
// U+00DF is not "ss".

/// Whether the string says yes: its intValue is not 0, or the whole string is "on", "yes" or "true" without
/// regard to case. "y", "yes " and the empty string say no, and so does nil.
bool boolValue(std::u16string_view string);

/// Equal without regard to case. Nil equals nothing, not even nil; two empty strings are equal.
bool isEqualToStringNoCase(const NSString& string, const NSString& other);
/// Whether the string begins (ends) with the affix without regard to case. No string, nil and the empty one
/// among them, begins or ends with an empty or nil affix.
bool hasPrefixNoCase(std::u16string_view string, std::u16string_view prefix);
bool hasSuffixNoCase(std::u16string_view string, std::u16string_view suffix);

/// Every unit is below 128. True for the empty string, false for nil.
bool isAsciiString(const NSString& string);
/// Category ASCII: every byte is below 128. True for empty data, false for nil.
bool isAsciiString(const NSData& data);

/// The string itself, so that callers need not care whether they hold plain or attributed text.
inline NSString string(const NSString& receiver) {
    return receiver;
}

namespace NSStringKelvoExtensions {
/// True for nil too.
inline bool isStringEmpty(std::u16string_view string) {
    return string.empty();
}
inline bool isStringNotEmpty(std::u16string_view string) {
    return !string.empty();
}
} // namespace NSStringKelvoExtensions

} // namespace kelvo
