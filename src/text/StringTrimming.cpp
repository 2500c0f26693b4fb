#include "text/StringTrimming.h"

#include "platform/foundation/encodings/NSCharacterSet.h"
#include "text/CharacterSetReps.h"
#include "text/CopyingForm.h"
#include "text/StringLines.h"

namespace kelvo {

namespace {

enum class Ends { Both, Left, Right };

/// What is left of the range, which must lie inside the text.
template <class IsTrimmed>
NSRange trimmedRange(std::u16string_view text, NSRange range, Ends ends, IsTrimmed isTrimmed) {
    std::size_t start = range.location, end = range.location + range.length;
    if (ends != Ends::Left)
        while (end > start && isTrimmed(text[end - 1]))
            --end;
    if (ends != Ends::Right)
        while (start < end && isTrimmed(text[start]))
            ++start;
    return {start, end - start};
}

template <class IsTrimmed>
void trimInRange(NSMutableString& string, NSRange range, Ends ends, IsTrimmed isTrimmed) {
    if (!rangeFits(range, string.length()))
        return;
    const NSRange kept = trimmedRange(string, range, ends, isTrimmed);
    const std::size_t keptEnd = kept.location + kept.length;
    string.deleteCharactersInRange({keptEnd, range.location + range.length - keptEnd});
    string.deleteCharactersInRange({range.location, kept.location - range.location});
}

template <class IsTrimmed>
void trim(NSMutableString& string, Ends ends, IsTrimmed isTrimmed) {
    trimInRange(string, {0, string.length()}, ends, isTrimmed);
}

template <class IsTrimmed>
NSString stringByTrimming(const NSString& string, Ends ends, IsTrimmed isTrimmed) {
    return string.substringWithRange(trimmedRange(string, {0, string.length()}, ends, isTrimmed));
}

auto isWhite() {
    return [rep = bitmap(NSCharacterSet::whitespaceAndNewlineCharacterSet())](char16_t unit) {
        return unitIsInBitmap(rep, unit);
    };
}

auto isUnit(char16_t wanted) {
    return [wanted](char16_t unit) { return unit == wanted; };
}

auto isSpaceOrFeed(bool andFeeds) {
    return [rep = spaceCharacterSetRep(), andFeeds](char16_t unit) {
        return unitIsInBitmap(rep, unit) || (andFeeds && isFeedCharacter(unit));
    };
}

/// The length of the ellipses that the units begin with.
template <class Iterator>
std::size_t lengthOfEllipses(Iterator first, Iterator last) {
    std::size_t length = 0;
    for (Iterator next = first; next != last;) {
        if (*next == u'\u2026') {
            ++next;
        } else {
            const Iterator fullStops = next;
            next = std::find_if(next, last, [](char16_t unit) { return unit != u'.'; });
            if (next - fullStops < 3)
                break;
        }
        length = static_cast<std::size_t>(next - first);
    }
    return length;
}

} // namespace

void trimWhiteSpaces(NSMutableString& string) {
    trim(string, Ends::Both, isWhite());
}

NSString stringByTrimmingWhiteSpaces(const NSString& string) {
    return stringByTrimming(string, Ends::Both, isWhite());
}

std::u16string_view withoutWhiteSpacesAtEnds(std::u16string_view text) {
    const NSRange kept = trimmedRange(text, {0, text.size()}, Ends::Both, isWhite());
    return text.substr(kept.location, kept.length);
}

void trimCharacter(NSMutableString& string, char16_t unit) {
    trim(string, Ends::Both, isUnit(unit));
}

NSString stringByTrimmingCharacter(const NSString& string, char16_t unit) {
    return stringByTrimming(string, Ends::Both, isUnit(unit));
}

void trimPrefixCharacter(NSMutableString& string, char16_t unit) {
    trim(string, Ends::Left, isUnit(unit));
}

NSString stringByTrimmingPrefixCharacter(const NSString& string, char16_t unit) {
    return stringByTrimming(string, Ends::Left, isUnit(unit));
}

void trimSuffixCharacter(NSMutableString& string, char16_t unit) {
    trim(string, Ends::Right, isUnit(unit));
}

NSString stringByTrimmingSuffixCharacter(const NSString& string, char16_t unit) {
    return stringByTrimming(string, Ends::Right, isUnit(unit));
}

NSString stringByTrimmingEnclosingCharacter(const NSString& string, char16_t unit) {
    const std::u16string_view text = string;
    const bool isEnclosed = text.size() >= 2 && text.front() == unit && text.back() == unit;
    return isEnclosed ? string.substringWithRange({1, text.size() - 2}) : string;
}

NSString stringByTrimmingEllipsis(const NSString& string) {
    const std::u16string_view text = string;
    const std::size_t end = text.size() - lengthOfEllipses(text.rbegin(), text.rend());
    const std::u16string_view beginning = text.substr(0, end);
    const std::size_t start = lengthOfEllipses(beginning.begin(), beginning.end());
    return string.substringWithRange({start, end - start});
}

void trimFeeds(NSMutableString& string) {
    trim(string, Ends::Both, isFeedCharacter);
}

NSString stringByTrimmingFeeds(const NSString& string) {
    return stringByTrimming(string, Ends::Both, isFeedCharacter);
}

NSString stringByTrimmingDigits(const NSString& string) {
    return stringByTrimming(string, Ends::Both, [rep = digitCharacterSetRep()](char16_t unit) {
        return unitIsInBitmap(rep, unit);
    });
}

NSString stringByTrimmingSpacesAndFeeds(const NSString& string, bool andFeeds) {
    return stringByTrimming(string, Ends::Both, isSpaceOrFeed(andFeeds));
}

NSString stringByTrimmingSpacesOfLeftSideAndFeeds(const NSString& string, bool andFeeds) {
    return stringByTrimming(string, Ends::Left, isSpaceOrFeed(andFeeds));
}

NSString stringByTrimmingSpacesOfRightSideAndFeeds(const NSString& string, bool andFeeds) {
    return stringByTrimming(string, Ends::Right, isSpaceOrFeed(andFeeds));
}

void trimSpacesInRange_andFeeds(NSMutableString& string, NSRange range, bool andFeeds) {
    trimInRange(string, range, Ends::Both, isSpaceOrFeed(andFeeds));
}

NSString stringByTrimmingSpacesInRange_andFeeds(const NSString& string, NSRange range, bool andFeeds) {
    return copyChangedBy(string,
                         [&](NSMutableString& copy) { trimSpacesInRange_andFeeds(copy, range, andFeeds); });
}

void trimWhiteSpacesInRange(NSMutableString& string, NSRange range) {
    trimInRange(string, range, Ends::Both, isWhite());
}

} // namespace kelvo
