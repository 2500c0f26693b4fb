#include "Input.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "text/NSMutableStringKelvoExtensions.h"
#include "text/NSStringExtensions.h"
#include "text/NSStringKelvoExtensions.h"
#include "text/NSStringKelvoPathExtensions.h"
#include "text/NSStringTextFinding.h"
#include "text/UnicharCompare.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

using namespace kelvo;

namespace {

/// The strings, numbers and ranges that the bytes of one run stand for.
class Input {
public:
    Input(const std::uint8_t* bytes, std::size_t size) : bytes_(bytes), size_(size) {}

    std::uint8_t byte() {
        if (size_ == 0)
            return 0;
        --size_;
        return *bytes_++;
    }
    bool flag() { return byte() & 1; }
    /// Mostly inside a string of that length, sometimes past it, sometimes absurd.
    std::size_t indexNear(std::size_t length) {
        const std::size_t choice = byte();
        return choice == 255 ? ~std::size_t{0} : choice == 254 ? NSNotFound : choice % (length + 3);
    }
    NSRange rangeNear(std::size_t length) {
        const std::size_t location = indexNear(length);
        return {location, indexNear(length)};
    }
    /// Nil, or units of one byte each, or of two, or of few letters so that parts repeat.
    NSString string(std::size_t longest) {
        const std::uint8_t form = byte();
        if (form == 255)
            return nullptr;
        const std::size_t length = std::min<std::size_t>(byte(), longest);
        std::u16string units;
        while (units.size() < length && size_ > 0) {
            const std::uint8_t low = byte();
            if (form % 3 == 0)
                units.push_back(low);
            else if (form % 3 == 1)
                units.push_back(static_cast<char16_t>(low | byte() << 8));
            else
                units.push_back(u"aAb /.:'-1<\n\r\u00E4\u00C4\u0308"[low % 16]);
        }
        return NSString(units);
    }

private:
    const std::uint8_t* bytes_;
    std::size_t size_;
};

bool standsAt(std::u16string_view text, std::u16string_view needle, std::size_t start, bool caseInsensitive) {
    if (start > text.size() || text.size() - start < needle.size())
        return false;
    for (std::size_t index = 0; index < needle.size(); ++index)
        if (caseInsensitive ? toUpper(text[start + index]) != toUpper(needle[index])
                            : text[start + index] != needle[index])
            return false;
    return true;
}

void checkSearches(Input& input, const NSString& text, const NSString& needle) {
    const bool caseInsensitive = input.flag();
    std::size_t first = NSNotFound, last = NSNotFound;
    for (std::size_t start = 0; !needle.isEmpty() && start < text.length(); ++start)
        if (standsAt(text, needle, start, caseInsensitive)) {
            first = std::min(first, start);
            last = start;
        }
    require(firstOccurrence(text, needle, 0, caseInsensitive) == first);
    require(lastOccurrence(text, needle, caseInsensitive) == last);
    require(containsSubstring_caseSensitive(text, needle, !caseInsensitive) == (first != NSNotFound));
    require((countSubstring_caseSensitive(text, needle, !caseInsensitive) == 0) == (first == NSNotFound));
    require(containsSubstrings_caseSensitive(text, NSArray::arrayWithObjects({NSNull(), needle}),
                                             !caseInsensitive) == (first != NSNotFound));
    const NSRange range = input.rangeNear(text.length());
    for (const FindDirection direction : {FindDirection::Forward, FindDirection::Backward})
        for (const bool wrap : {false, true}) {
            const NSRange found = findString_inRange_caseSensitive_direction_wrap(
                text, needle, range, !caseInsensitive, direction, wrap);
            if (found.location != NSNotFound)
                require(standsAt(text, needle, found.location, caseInsensitive) &&
                        found.length == needle.length());
            else if (wrap)
                require(first == NSNotFound || !rangeFits(range, text.length()));
        }

    const char16_t unit = lastCharacter(needle);
    const std::size_t front = findCharacter_caseInsensitive(text, unit, caseInsensitive);
    const std::size_t back = findLastCharacter_caseInsensitive(text, unit, caseInsensitive);
    require((front == NSNotFound) == (back == NSNotFound) && (front == NSNotFound || front <= back));
    require(countCharacter_caseInsensitive(text, unit, caseInsensitive) <= text.length());
    findLastCharacter_startAt_caseInsensitive(text, unit, input.indexNear(text.length()), caseInsensitive);
    require(containsCharacters(text, needle) == (findOneOf(text, needle) != NSNotFound));
    const char* const needles[] = {"", "a", "b/", nullptr};
    require(containsSubCStrings(text, needles) == !text.isEmpty());
}

void checkParts(Input& input, const NSString& text, const NSString& other) {
    const std::size_t index = input.indexNear(text.length());
    const auto checkPart = [&](NSRange range, const NSString& part) {
        require(part.isNil() == (range.location == NSNotFound));
        require(part.isNil() ||
                (rangeFits(range, text.length()) && range.length > 0 &&
                 index - range.location < range.length && part == text.substringWithRange(range)));
    };
    checkPart(getWordRangeAtIndex(text, index), getWordAtIndex(text, index));
    checkPart(getLinkRangeAtIndex(text, index), getLinkAtIndex(text, index));
    checkPart(getSubstringRangeAtIndex_separators(text, index, other),
              getSubstringAtIndex_separators(text, index, other));
    require(firstWord(text).isEmpty() == lastWord(text).isEmpty());
    require((numberOfLines(text) == 0) == text.isEmpty());
    require(text.characters().starts_with(firstLine(text).characters()));
    require((countNumbers(text) == 0) == !containsDigitCharacter(text));
    containsNumber(text, static_cast<std::int64_t>(index));
    containsNumber(text, -static_cast<std::int64_t>(index % 1000));
    containsNumberWithNDigits(text, index);
    std::size_t less = 0, greater = 0;
    countLT_GT(text, &less, &greater);
    std::vector<char> room(index % 64);
    getChars(text, room);
    require(std::all_of(room.begin(), room.end(), [](char byte) { return byte >= 0; }));

    const NSArray lines = configLines(text);
    require(lines.count() <= numberOfLines(text));
    require(configValueForKey(text, other).isNil() ||
            !typedValueForKeys(text, NSArray::arrayWithObjects({other})).isNil());
    reformattedMailing(text);
    require(dumpAsArray(text).count() == (text.length() + 7) / 8);
    require(dump(text).isNil() == text.isNil());
    const NSArray strings =
        NSArray::arrayWithObjects({u"x", text.isNil() ? Value(NSNull()) : Value(text), other});
    require(containsString(strings, text) == !text.isNil());
    require(indexOfStringEqualToNoCase(strings, text) <= indexOfStringEqualTo(strings, text));
}

template <class Change>
void checkForms(const NSString& text, const NSString& copied, Change change) {
    NSMutableString changed(text);
    change(changed);
    require(changed.copy() == copied);
    require(!(copied == text) || copied.isIdenticalTo(text));
}

void checkTrimming(Input& input, const NSString& text) {
    const char16_t unit = firstCharacter(text);
    const bool andFeeds = input.flag();
    const NSRange range = input.rangeNear(text.length());
    using Text = NSMutableString&;
    checkForms(text, stringByTrimmingWhiteSpaces(text), trimWhiteSpaces);
    checkForms(text, stringByTrimmingCharacter(text, unit), [&](Text copy) { trimCharacter(copy, unit); });
    checkForms(text, stringByTrimmingPrefixCharacter(text, unit),
               [&](Text copy) { trimPrefixCharacter(copy, unit); });
    checkForms(text, stringByTrimmingSuffixCharacter(text, unit),
               [&](Text copy) { trimSuffixCharacter(copy, unit); });
    checkForms(text, stringByTrimmingFeeds(text), trimFeeds);
    checkForms(text, stringByTrimmingSpacesInRange_andFeeds(text, range, andFeeds),
               [&](Text copy) { trimSpacesInRange_andFeeds(copy, range, andFeeds); });
    NSMutableString trimmed(text);
    trimWhiteSpacesInRange(trimmed, range);
    require(stringByTrimmingSpacesAndFeeds(text, andFeeds) ==
            stringByTrimmingSpacesOfLeftSideAndFeeds(
                stringByTrimmingSpacesOfRightSideAndFeeds(text, andFeeds), andFeeds));
    require(stringByTrimmingEnclosingCharacter(text, unit).length() + 2 >= text.length());
    for (NSString (*trim)(const NSString&) : {stringByTrimmingEllipsis, stringByTrimmingDigits}) {
        const NSString once = trim(text);
        require(containsSubstring(text, once) == !once.isEmpty() && trim(once).isIdenticalTo(once));
    }
}

void checkRemoval(Input& input, const NSString& text, const NSString& other) {
    const bool andFeeds = input.flag();
    using Text = NSMutableString&;
    checkForms(text, stringByRemovingCharactersOfString(text, other),
               [&](Text copy) { removeCharactersOfString(copy, other); });
    require(!containsCharacters(stringByRemovingCharactersOfString(text, other), other));
    checkForms(text, stringByRemovingCharacters(text, alphaCharacterSetRep()),
               [&](Text copy) { removeCharacters(copy, alphaCharacterSetRep()); });
    checkForms(text, stringByRemovingTabs(text), removeTabs);
    checkForms(text, stringByRemovingFeeds(text), removeFeeds);
    checkForms(text, stringByRemovingSpaces(text), removeSpaces);
    checkForms(text, stringByRemovingWhiteCharacters(text), removeWhiteCharacters);
    checkForms(text, stringByRemovingDigits(text), removeDigits);
    checkForms(text, stringByRemovingMultipleFeeds(text), removeMultipleFeeds);
    checkForms(text, stringByRemovingMultipleSpacesAndFeeds(text, andFeeds),
               [&](Text copy) { removeMultipleSpacesAndFeeds(copy, andFeeds); });
    NSMutableString changed(text);
    removeCharacterAtIndex(changed, input.indexNear(text.length()));
    removeAttachments(changed);
    removeMultipleSpaces(changed);
    require(changed.length() <= text.length());
    uppercaseStringByRemovingDigits(text);
    lowercaseStringByRemovingDigits(text);
    require((caseInsensitiveStringByRemovingNonAlphaNumericCharacters(text) ==
             caseInsensitiveStringByRemovingNonAlphaNumericCharacters(other)) ==
                equalStringsNoCaseUsingCharacterSetRep(text, other, alphaNumCharacterSetRep()) ||
            text.isEmpty() || other.isEmpty());
}

void checkNormalization(const NSString& text) {
    using Text = NSMutableString&;
    for (const auto form : {CFStringNormalizationForm::D, CFStringNormalizationForm::KD,
                            CFStringNormalizationForm::C, CFStringNormalizationForm::KC})
        checkForms(text, normalizedString(text, form), [&](Text copy) { normalizeString(copy, form); });
    checkForms(text, normalizedString(text), [](Text copy) { normalizeString(copy); });
    checkForms(text, normalizedUppercaseString(text), normalizeUppercaseString);
    checkForms(text, normalizedLowercaseString(text), normalizeLowercaseString);
    checkForms(text, fixedAndNormalizedString(text), fixAndNormalizeString);
    for (void (*change)(Text) : {lowercase, uppercase, capitalize}) {
        NSMutableString changed(text);
        change(changed);
    }
    for (NSString (*fold)(const NSString&) :
         {nonUmlautedString, uppercaseNonUmlautedString, lowercaseNonUmlautedString, asciiString,
          uppercaseAsciiString, lowercaseAsciiString}) {
        const NSString folded = fold(text);
        require(folded.length() == text.length() && folded.isNil() == text.isNil());
        require(folded.isIdenticalTo(text) == (folded == text));
    }
    nonUmlautedNormalizedString(text);
    uppercaseNonUmlautedNormalizedString(text);
    lowercaseNonUmlautedNormalizedString(text);
    require(isUmlautedString(text) == !nonUmlautedString(text).isIdenticalTo(text));
    require(text.isNil() || isAsciiString(asciiString(text)));
    require(!(isUpperCaseString(text) && isLowerCaseString(text)));
}

void checkComparisons(Input& input, const NSString& text, const NSString& other) {
    boolValue(text);
    require(isEqualToStringNoCase(text, other) == isEqualToStringNoCase(other, text));
    require(isEqualToStringNoCase(text, text) == !text.isNil());
    require(hasPrefixNoCase(text, text) == !text.isEmpty() && hasSuffixNoCase(text, text) == !text.isEmpty());
    const NSRange range = input.rangeNear(text.length());
    const bool fits = !text.isNil() && rangeFits(range, text.length());
    const NSString part = fits ? text.substringWithRange(range) : NSString();
    require(range_isEqualTo(text, range, part) == fits);
    require(range_isEqualToNoCase(text, range, part) == fits);
    require(range_isAsciiEqualToNoCase(text, range, part) == fits);
    require(range_isNonUmlautedEqualToNoCase(text, range, part) == fits);
    require(isAsciiEqualToStringNoCase(text, other) == isAsciiEqualToStringNoCase(other, text));
    require(isNonUmlautedEqualToStringNoCase(text, other) == isNonUmlautedEqualToStringNoCase(other, text));
    const std::u16string_view first = text, second = other;
    require((NSStringKelvoExtensions::compareCharacters_withCharacters(
                 first.data(), first.size(), second.data(), second.size()) == 0) == (first == second));
    NSStringKelvoExtensions::caseInsensitiveCompareCharacters_withCharacters(first.data(), first.size(),
                                                                             second.data(), second.size());
    hasFeedOfLine(text);
    require(feedOfLine(text).isEmpty() == !hasFeedOfLine(text));
    NSMutableString joined = NSMutableString::string();
    for (const Value& line : lines(text))
        joined.appendString(line.string());
    require(joined.characters() == first && lines(text).count() == numberOfLines(text));
    reformattedStringByRemovingCharactersOfString(text, other);
    isMashedWord(text);
}

void checkReplacing(Input& input, const NSString& text, const NSString& target) {
    using Text = NSMutableString&;
    const bool caseSensitive = input.flag();
    const NSString replacement = input.string(8);
    const NSString replaced =
        stringByReplacingString_withString_caseSensitive(text, target, replacement, caseSensitive);
    checkForms(text, replaced, [&](Text copy) {
        replaceString_withString_caseSensitive(copy, target, replacement, caseSensitive);
    });
    if (!replacement.isNil())
        require(replaced.length() ==
                text.length() + countSubstring_caseSensitive(text, target, caseSensitive) *
                                    (replacement.length() - target.length()));
    NSMutableString deleted(text);
    deleteString(deleted, target);
    require(deleted.length() == text.length() - countSubstring(text, target) * target.length());
    const char16_t from = firstCharacter(target), to = lastCharacter(target);
    checkForms(
        text, stringByReplacingCharacter_withCharacter_caseSensitive(text, from, to, caseSensitive),
        [&](Text copy) { replaceCharacter_withCharacter_caseSensitive(copy, from, to, caseSensitive); });
    require(stringByRotating13(stringByRotating13(text)) == text);
    stringByRotating(text, static_cast<int>(std::uint32_t{input.byte()} << 24));

    NSMutableString edited(text);
    appendTrimmedString(edited, target);
    appendCharacters_length(edited, target.characters().data(), target.length());
    appendCharacter(edited, from);
    insertCharacter_atIndex(edited, from, input.indexNear(edited.length()));
    appendSubstring_range(edited, edited, input.rangeNear(edited.length()));
    const std::size_t columns = input.byte() % 9;
    NSMutableString spaces(edited), tabs(edited);
    decodeTabs(spaces, columns);
    encodeTabs(tabs, columns);
    decodeTabs(tabs, columns);
    require(tabs == spaces);
}

void checkPaths(Input& input, const NSString& path, const NSString& other) {
    isTemporaryPath(path);
    isTemporaryPath(pathInHomeDirectory(path));
    const NSString standardized = standardizedPath(path);
    for (const Value& component : standardizedPathComponents(path))
        require(!component.string().isEmpty() && component.string() != u"." && component.string() != u"..");
    require(path.isEmpty() || standardizedPath(standardized) == standardized);
    require(relativePathToDirectory(path, path).isNil() == path.isNil());
    relativePathToDirectory(path, other);
    require(path.characters().starts_with(stringByDeletingFileComponent(path).characters()));
    require(compareWithLastPathComponent(path, other) == 0 ||
            (compareWithLastPathComponent(path, other) < 0) ==
                (compareWithLastPathComponent(other, path) > 0));
    caseInsensitiveCompareWithLastPathComponent(path, other);
    nonUmlautedCaseInsensitiveCompareWithLastPathComponent(path, other);
    const NSString classic = HFSPath(path), back = POSIXPath(classic);
    require(path.isEmpty() || HFSPath(back) == classic);
    POSIXPath(path);

    pathMatchingExtensionsOrTypes(path, NSArray::arrayWithObjects({other}));
    require(validPathExtension(path).isEmpty() || isValidPathExtension(validPathExtension(path)));
    stringByReplacingPathExtensionWith(path, other);
    const NSString extended = stringByAppendingPathExtensionIfNecessary(path, u"txt");
    require(stringByAppendingPathExtensionIfNecessary(extended, u"txt") == extended);
    checkForms(path, stringByCreatingFilename(path), createFilename);
    checkForms(path, stringByTrimmingInvalidFilenameCharacters(path), trimInvalidFilenameCharacters);
    checkForms(path, stringByCreatingFileSystemRepresentation(path), createFileSystemRepresentation);
    checkForms(path, stringByCreatingFileSystemRepresentationByAppendingExtension(path, other),
               [&](NSMutableString& name) { createFileSystemRepresentationAndAppendExtension(name, other); });
    const NSString encoded = encodebase64(path);
    require(encoded.isNil() || path.characters().starts_with(u'\uFEFF') || decodebase64(encoded) == path);
    decodebase64UsingEncoding(path, input.byte());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, std::min<std::size_t>(size, 2048));
    const NSString text = input.string(255), other = input.string(16);
    checkSearches(input, text, other);
    checkParts(input, text, other);
    checkPaths(input, text, other);
    checkTrimming(input, text);
    checkRemoval(input, text, other);
    checkNormalization(text);
    checkComparisons(input, text, other);
    checkReplacing(input, text, other);
    return 0;
}
