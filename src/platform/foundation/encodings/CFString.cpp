#include "platform/foundation/encodings/CFString.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/encodings/NSCharacterSet.h"
#include "platform/foundation/units/ASCII.h"

#include <unicode/casemap.h>
#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace kelvo {

namespace {

// ICU's name of the root locale. A null pointer would mean the locale of the process.
constexpr const char* noLocale = "";

std::int32_t icuLength(std::size_t length) {
    return static_cast<std::int32_t>(std::min<std::size_t>(length, std::numeric_limits<std::int32_t>::max()));
}

void throwUnlessConverted(UErrorCode status) {
    if (status == U_MEMORY_ALLOCATION_ERROR)
        throw std::bad_alloc();
    if (U_FAILURE(status))
        throw NSException(NSMallocException, u"The converted text would pass 2147483646 bytes.");
}

// `convert(destination, capacity, &status)` is an ICU operation on the text of `string` that returns the
// length of its result even when it did not fit. Short texts, single letters above all, need no allocation.
template <class Convert>
void replaceByConverted(NSMutableString& string, Convert convert) {
    constexpr std::size_t shortLength = 32;
    if (string.length() <= shortLength) {
        char16_t small[shortLength * 3];
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t length = convert(small, icuLength(std::size(small)), &status);
        if (U_SUCCESS(status)) {
            string.setString({small, static_cast<std::size_t>(length)});
            return;
        }
    }
    NSMutableString result = NSMutableString::stringWithCapacity(string.length());
    for (;;) {
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t length =
            convert(result.mutableCharacters(), icuLength(result.capacity()), &status);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            result.reserve(static_cast<std::size_t>(length));
            continue;
        }
        throwUnlessConverted(status);
        result.setLength(static_cast<std::size_t>(length));
        string.swap(result);
        return;
    }
}

bool isWordCharacter(UChar32 character) {
    if (character < 0x80)
        return isASCIILetter(character) || character == '\'';
    return (U_GET_GC_MASK(character) & (U_GC_L_MASK | U_GC_M_MASK)) || character == 0x2019;
}

const UCollator* openCollator() {
    const char* name = noLocale;
    for (const char* variable : {"LC_ALL", "LC_COLLATE", "LANG"}) {
        const char* const value = std::getenv(variable);
        if (value && *value) {
            name = value;
            break;
        }
    }
    // "C" is no language to the library, so that it gives the order of most: that of bytes knows no case.
    UErrorCode status = U_ZERO_ERROR;
    UCollator* const collator = ucol_open(name, &status);
    if (U_FAILURE(status))
        return nullptr;
    ucol_setStrength(collator, UCOL_SECONDARY);
    return collator;
}

void appendCapitalizedWord(NSMutableString& result, std::u16string_view word) {
    constexpr std::uint32_t options = U_TITLECASE_WHOLE_STRING;
    for (std::size_t room = word.size() + 8;;) {
        const std::size_t end = result.length();
        if (result.capacity() - end < room)
            result.reserve(std::max(end + room, result.capacity() + result.capacity() / 2));
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t length =
            icu::CaseMap::toTitle(noLocale, options, nullptr, word.data(), icuLength(word.size()),
                                  result.mutableCharacters() + end, icuLength(room), nullptr, status);
        if (status == U_BUFFER_OVERFLOW_ERROR) {
            room = static_cast<std::size_t>(length);
            continue;
        }
        throwUnlessConverted(status);
        result.setLength(end + static_cast<std::size_t>(length));
        return;
    }
}

char16_t simpleFold(char16_t unit) {
    if (unit < 0x80)
        return asciiLowerCase(unit);
    return static_cast<char16_t>(u_foldCase(unit, U_FOLD_CASE_DEFAULT));
}

// No canonical decomposition is longer than four characters.
constexpr std::size_t longestDecomposition = 8;

// Writes the decomposition of the character without its marks; returns the number of units.
std::size_t decomposeWithoutMarks(const UNormalizer2* decomposer, UChar32 character, char16_t* units) {
    const auto isMark = [](UChar32 part) { return u_charType(part) == U_NON_SPACING_MARK; };
    char16_t decomposed[longestDecomposition];
    std::int32_t length = -1;
    UErrorCode status = U_ZERO_ERROR;
    // Hangul syllables are made of letters only and would be put together again.
    if (character >= 0xC0 && !(character >= 0xAC00 && character <= 0xD7A3))
        length = unorm2_getDecomposition(decomposer, character, decomposed,
                                         static_cast<std::int32_t>(longestDecomposition), &status);
    std::size_t written = 0;
    if (length < 0 || U_FAILURE(status)) {
        if (!isMark(character))
            U16_APPEND_UNSAFE(units, written, character);
        return written;
    }
    for (std::int32_t offset = 0; offset < length;) {
        UChar32 part = 0;
        U16_NEXT(decomposed, offset, length, part);
        if (!isMark(part))
            U16_APPEND_UNSAFE(units, written, part);
    }
    return written;
}

void removeDiacritics(NSMutableString& string) {
    const std::u16string_view text = string;
    const auto firstRemarkable =
        std::find_if(text.begin(), text.end(), [](char16_t unit) { return unit >= 0xC0; });
    if (firstRemarkable == text.end())
        return;
    UErrorCode status = U_ZERO_ERROR;
    const UNormalizer2* decomposer = unorm2_getNFDInstance(&status);
    if (U_FAILURE(status))
        throw NSException(NSGenericException, u"The normalisation data cannot be loaded.");
    char16_t units[longestDecomposition];
    if (text.size() == 1) {
        const std::size_t length = decomposeWithoutMarks(decomposer, text[0], units);
        if (length <= 1) {
            string.setString({units, length});
            return;
        }
    }
    NSMutableString result = NSMutableString::stringWithCapacity(text.size());
    auto index = static_cast<std::size_t>(firstRemarkable - text.begin());
    result.appendString(text.substr(0, index));
    while (index < text.size()) {
        UChar32 character = 0;
        U16_NEXT(text.data(), index, text.size(), character);
        result.appendString({units, decomposeWithoutMarks(decomposer, character, units)});
    }
    CFStringNormalize(result, CFStringNormalizationForm::C);
    string.swap(result);
}

} // namespace

void CFStringUppercase(NSMutableString& string) {
    if (string.isEmpty())
        return;
    replaceByConverted(string, [&](char16_t* units, std::int32_t capacity, UErrorCode* status) {
        return u_strToUpper(units, capacity, string.characters().data(), icuLength(string.length()), noLocale,
                            status);
    });
}

void CFStringLowercase(NSMutableString& string) {
    if (string.isEmpty())
        return;
    replaceByConverted(string, [&](char16_t* units, std::int32_t capacity, UErrorCode* status) {
        return u_strToLower(units, capacity, string.characters().data(), icuLength(string.length()), noLocale,
                            status);
    });
}

void CFStringCapitalize(NSMutableString& string) {
    if (string.isEmpty())
        return;
    const std::u16string_view text = string;
    NSMutableString result = NSMutableString::stringWithCapacity(text.size() + 8);
    std::size_t wordStart = 0;
    for (std::size_t index = 0; index < text.size();) {
        const std::size_t characterStart = index;
        UChar32 character = 0;
        U16_NEXT(text.data(), index, text.size(), character);
        if (isWordCharacter(character))
            continue;
        if (wordStart < characterStart)
            appendCapitalizedWord(result, text.substr(wordStart, characterStart - wordStart));
        result.appendString(text.substr(characterStart, index - characterStart));
        wordStart = index;
    }
    if (wordStart < text.size())
        appendCapitalizedWord(result, text.substr(wordStart));
    string.swap(result);
}

void CFStringFold(NSMutableString& string, std::uint32_t options) {
    if (string.isEmpty())
        return;
    // Case folding comes second: it never brings back a mark that a letter without marks does not have.
    if (options & kCFCompareDiacriticInsensitive)
        removeDiacritics(string);
    if (options & kCFCompareCaseInsensitive)
        replaceByConverted(string, [&](char16_t* units, std::int32_t capacity, UErrorCode* status) {
            return u_strFoldCase(units, capacity, string.characters().data(), icuLength(string.length()),
                                 U_FOLD_CASE_DEFAULT, status);
        });
}

void CFStringTrimWhitespace(NSMutableString& string) {
    const NSCharacterSet& white = NSCharacterSet::whitespaceAndNewlineCharacterSet();
    const std::u16string_view text = string;
    std::size_t end = text.size();
    while (end > 0 && white.characterIsMember(text[end - 1]))
        --end;
    std::size_t start = 0;
    while (start < end && white.characterIsMember(text[start]))
        ++start;
    string.deleteCharactersInRange({end, text.size() - end});
    string.deleteCharactersInRange({0, start});
}

int CFStringCompareCaseInsensitive(std::u16string_view left, std::u16string_view right) {
    const std::size_t common = std::min(left.size(), right.size());
    for (std::size_t index = 0; index < common; ++index) {
        if (left[index] == right[index])
            continue;
        const int difference = simpleFold(left[index]) - simpleFold(right[index]);
        if (difference != 0)
            return difference;
    }
    return left.size() == right.size() ? 0 : left.size() < right.size() ? -1 : 1;
}

int CFStringCompareLocalizedCaseInsensitive(std::u16string_view left, std::u16string_view right) {
    static const UCollator* const collator = openCollator();
    return collator ? ucol_strcoll(collator, left.data(), icuLength(left.size()), right.data(),
                                   icuLength(right.size()))
                    : CFStringCompareCaseInsensitive(left, right);
}

} // namespace kelvo
