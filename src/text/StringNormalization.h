#pragma once

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringNormalization.h"

namespace kelvo {

// Normalisation and case of a whole string. The verbs change a mutable string in place; the others give a
// string, which is the receiver itself when it is nil or empty and when nothing changed. A result that no
// string could hold (maximumSizeInBytes) leaves the string as it is. Unpaired surrogates stand. All in linear
// time.

/// Form C.
void normalizeString(NSMutableString& string);
NSString normalizedString(const NSString& string);
/// A number that is none of the four forms leaves the string as it is.
void normalizeString(NSMutableString& string, CFStringNormalizationForm form);
NSString normalizedString(const NSString& string, CFStringNormalizationForm form);

/// Form C and then lower case. "Uppercase" is in the name alone: both give the same.
void normalizeLowercaseString(NSMutableString& string);
NSString normalizedLowercaseString(const NSString& string);
inline void normalizeUppercaseString(NSMutableString& string) {
    normalizeLowercaseString(string);
}
inline NSString normalizedUppercaseString(const NSString& string) {
    return normalizedLowercaseString(string);
}

/// A space for every unit that cannot stand alone or means nothing outside the program that wrote it: every
/// surrogate, paired or not (so a character outside the basic plane becomes two spaces), and the private
/// U+F400 to U+F8FF. Then form C. Without anything to change nothing is copied. When the normalised text
/// would be too long, the spaces are put in all the same.
void fixAndNormalizeString(NSMutableString& string);
NSString fixedAndNormalizedString(const NSString& string);

// Full case mappings that belong to no language; see CFString.h. Unlike the tables of FoldingTables.h they
// may change the length: U+00DF becomes "SS".

void lowercase(NSMutableString& string);
void uppercase(NSMutableString& string);
/// The first letter of each word in title case, the others in lower case.
void capitalize(NSMutableString& string);

} // namespace kelvo
