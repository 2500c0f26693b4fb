#pragma once

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSString.h"

#include <string_view>

namespace kelvo {

// Replacing parts of a string. The verbs change a mutable string in place. The others give a string: the
// receiver itself when it is nil or empty and when nothing changed. All take linear time, however many
// places there are.
//
// Substrings are found from the beginning and do not overlap; what has been put in is not searched. Units are
// compared as they are, without normalisation; without regard to case two units match that have the same
// entry in the upper-case table. Nothing is replaced where `target` is nil or empty, where `replacement` is
// nil, and where the result would pass maximumSizeInBytes. An argument may be a part of the string itself.

void replaceString_withString(NSMutableString& string, std::u16string_view target,
                              const NSString& replacement);
NSString stringByReplacingString_withString(const NSString& string, std::u16string_view target,
                                            const NSString& replacement);
void replaceString_withString_caseSensitive(NSMutableString& string, std::u16string_view target,
                                            const NSString& replacement, bool caseSensitive);
NSString stringByReplacingString_withString_caseSensitive(const NSString& string, std::u16string_view target,
                                                          const NSString& replacement, bool caseSensitive);
/// Removes every occurrence, with regard to case.
void deleteString(NSMutableString& string, std::u16string_view target);

/// In place what stringByReplacingCharacter does: a letter that has both cases is replaced with regard to
/// case, whatever the flag says; the flag counts for characters that have none.
void replaceCharacter_withCharacter_caseSensitive(NSMutableString& string, char16_t oldUnit, char16_t newUnit,
                                                  bool caseSensitive);
inline void replaceCharacter_withCharacter(NSMutableString& string, char16_t oldUnit, char16_t newUnit) {
    replaceCharacter_withCharacter_caseSensitive(string, oldUnit, newUnit, true);
}

} // namespace kelvo
