#include "text/StringReplacement.h"

#include "text/CharacterSearch.h"
#include "text/CopyingForm.h"
#include "text/SubstringSearch.h"

#include <algorithm>

namespace kelvo {

namespace {

/// Nil when there is nothing to replace or no room for the result.
NSMutableString replaced(std::u16string_view text, std::u16string_view target,
                         std::u16string_view replacement, bool caseSensitive) {
    std::size_t next = firstOccurrence(text, target, 0, !caseSensitive);
    if (next == NSNotFound)
        return nullptr;
    std::size_t longest = text.size();
    if (replacement.size() > target.size()) {
        const std::size_t count = countSubstring_caseSensitive(text, target, caseSensitive);
        longest = lengthAfterReplacing(text.size(), count, target.size(), replacement.size());
        if (longest == NSNotFound)
            return nullptr;
    }
    NSMutableString result = NSMutableString::stringWithCapacity(longest);
    std::size_t copied = 0;
    for (; next != NSNotFound; next = firstOccurrence(text, target, copied, !caseSensitive)) {
        result.appendString(text.substr(copied, next - copied));
        result.appendString(replacement);
        copied = next + target.size();
    }
    result.appendString(text.substr(copied));
    return result;
}

} // namespace

void replaceString_withString_caseSensitive(NSMutableString& string, std::u16string_view target,
                                            const NSString& replacement, bool caseSensitive) {
    if (replacement.isNil())
        return;
    if (NSMutableString result = replaced(string, target, replacement, caseSensitive); !result.isNil())
        string.swap(result);
}

NSString stringByReplacingString_withString_caseSensitive(const NSString& string, std::u16string_view target,
                                                          const NSString& replacement, bool caseSensitive) {
    if (replacement.isNil())
        return string;
    NSMutableString result = replaced(string, target, replacement, caseSensitive);
    return result.isNil() || result.characters() == string.characters() ? string : result.takeString();
}

void replaceString_withString(NSMutableString& string, std::u16string_view target,
                              const NSString& replacement) {
    replaceString_withString_caseSensitive(string, target, replacement, true);
}

NSString stringByReplacingString_withString(const NSString& string, std::u16string_view target,
                                            const NSString& replacement) {
    return stringByReplacingString_withString_caseSensitive(string, target, replacement, true);
}

void deleteString(NSMutableString& string, std::u16string_view target) {
    replaceString_withString(string, target, NSString::string());
}

void replaceCharacter_withCharacter_caseSensitive(NSMutableString& string, char16_t oldUnit, char16_t newUnit,
                                                  bool caseSensitive) {
    const UnitsToFind wanted = unitsReplacedWithCharacter(oldUnit, !caseSensitive);
    char16_t* units = string.mutableCharacters();
    std::replace_if(
        units, units + string.length(), [&](char16_t unit) { return wanted.contains(unit); }, newUnit);
}

} // namespace kelvo
