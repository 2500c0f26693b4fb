#include "text/StringNormalization.h"

#include "platform/foundation/encodings/CFString.h"
#include "platform/foundation/units/VectorScan.h"
#include "text/CopyingForm.h"

#include <algorithm>

namespace kelvo {

namespace {

constexpr auto formC = CFStringNormalizationForm::C;

bool needsFixing(char16_t unit) {
    return (unit >= 0xD800 && unit <= 0xDFFF) || (unit >= 0xF400 && unit <= 0xF8FF);
}

std::size_t firstUnitToFix(std::u16string_view text) {
    static constexpr UnitRange sound[] = {
        {0x0000, 0xD800}, {0xE000, 0xF400 - 0xE000}, {0xF900, 0x10000 - 0xF900}};
    return lengthOfPrefixInRanges(text, sound);
}

// Callers pass numbers on.
bool isForm(CFStringNormalizationForm form) {
    return form <= CFStringNormalizationForm::KC;
}

} // namespace

void normalizeString(NSMutableString& string, CFStringNormalizationForm form) {
    if (!string.isEmpty() && isForm(form))
        unlessRefused([&] { CFStringNormalize(string, form); });
}

void normalizeString(NSMutableString& string) {
    normalizeString(string, formC);
}

NSString normalizedString(const NSString& string, CFStringNormalizationForm form) {
    if (!isForm(form) || CFStringIsNormalized(string, form))
        return string;
    return copyChangedBy(string, [&](NSMutableString& copy) { normalizeString(copy, form); });
}

NSString normalizedString(const NSString& string) {
    return normalizedString(string, formC);
}

void normalizeLowercaseString(NSMutableString& string) {
    normalizeString(string);
    lowercase(string);
}

NSString normalizedLowercaseString(const NSString& string) {
    return copyChangedBy(string, [](NSMutableString& copy) { normalizeLowercaseString(copy); });
}

void fixAndNormalizeString(NSMutableString& string) {
    char16_t* units = string.mutableCharacters();
    std::replace_if(units + firstUnitToFix(string), units + string.length(), needsFixing, u' ');
    normalizeString(string);
}

NSString fixedAndNormalizedString(const NSString& string) {
    // Most text is all plain, and one look at it is enough.
    const std::size_t plain = CFStringLengthOfPlainPrefix(string, formC);
    const std::u16string_view rest = string.characters().substr(plain > 0 ? plain - 1 : 0);
    if (plain == string.length() ||
        (firstUnitToFix(rest) == rest.size() && CFStringIsNormalized(rest, formC)))
        return string;
    return copyChangedBy(string, [](NSMutableString& copy) { fixAndNormalizeString(copy); });
}

void lowercase(NSMutableString& string) {
    unlessRefused([&] { CFStringLowercase(string); });
}

void uppercase(NSMutableString& string) {
    unlessRefused([&] { CFStringUppercase(string); });
}

void capitalize(NSMutableString& string) {
    unlessRefused([&] { CFStringCapitalize(string); });
}

} // namespace kelvo
