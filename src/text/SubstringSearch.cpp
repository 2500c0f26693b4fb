#include "text/SubstringSearch.h"

#include "platform/foundation/Value.h"
#include "platform/foundation/units/UnitScan.h"
#include "text/CharacterSearch.h"
#include "text/FoldingTables.h"

#include <algorithm>
#include <utility>

namespace kelvo {

namespace {

constexpr NSRange notFoundRange{NSNotFound, 0};

/// A text as the search reads it: forward or backward, its units as they are or in upper case.
template <FindDirection direction, bool caseInsensitive>
class Reader {
public:
    Reader(std::u16string_view text, const char16_t* upper) : text_(text), upper_(upper) {}

    std::size_t size() const { return text_.size(); }
    char16_t operator[](std::size_t index) const {
        const char16_t unit = text_[direction == FindDirection::Forward ? index : text_.size() - 1 - index];
        if constexpr (caseInsensitive)
            return upper_[unit];
        else
            return unit;
    }

private:
    std::u16string_view text_;
    const char16_t* upper_;
};

struct Suffix {
    std::size_t start;
    std::size_t period;
};

/// The greatest suffix in the order of the units or, `reversed`, in the opposite order.
template <class Text>
Suffix greatestSuffix(const Text& text, bool reversed) {
    // `before` is the index before the suffix, and wraps around for the whole text.
    std::size_t before = static_cast<std::size_t>(-1), candidate = 0, matched = 1, period = 1;
    while (candidate + matched < text.size()) {
        char16_t next = text[candidate + matched], standing = text[before + matched];
        if (reversed)
            std::swap(next, standing);
        if (next < standing) {
            candidate += matched;
            matched = 1;
            period = candidate - before;
        } else if (next > standing) {
            before = candidate++;
            matched = period = 1;
        } else if (matched != period) {
            ++matched;
        } else {
            candidate += period;
            matched = 1;
        }
    }
    return {before + 1, period};
}

/// Two-way string matching after Crochemore and Perrin. It is linear on every input and needs no memory,
/// which neither the searchers of the standard library nor a table of failures can say.
template <class Text>
std::size_t twoWaySearch(const Text& text, const Text& needle) {
    const std::size_t length = needle.size();
    const Suffix ascending = greatestSuffix(needle, false), descending = greatestSuffix(needle, true);
    const auto [cut, suffixPeriod] = ascending.start > descending.start ? ascending : descending;
    std::size_t repeated = 0;
    while (repeated < cut && needle[repeated] == needle[repeated + suffixPeriod])
        ++repeated;
    const bool isPeriodic = repeated == cut;
    const std::size_t shift = isPeriodic ? suffixPeriod : std::max(cut, length - cut) + 1;

    // `known` units at the beginning of the needle match already, after a shift by its period.
    std::size_t known = 0;
    for (std::size_t start = 0; start + length <= text.size();) {
        std::size_t index = std::max(cut, known);
        while (index < length && needle[index] == text[start + index])
            ++index;
        if (index < length) {
            start += index - cut + 1;
            known = 0;
            continue;
        }
        index = cut;
        while (index > known && needle[index - 1] == text[start + index - 1])
            --index;
        if (index <= known)
            return start;
        start += shift;
        known = isPeriodic ? length - shift : 0;
    }
    return NSNotFound;
}

template <bool caseInsensitive>
std::size_t firstOccurrenceFrom(std::u16string_view text, std::u16string_view needle, std::size_t start) {
    using ForwardReader = Reader<FindDirection::Forward, caseInsensitive>;
    const char16_t* upper = caseInsensitive ? initUpperCharsTable() : nullptr;
    const ForwardReader units(text, upper), wanted(needle, upper);
    const char16_t first = needle.front();
    const UnitsToFind firsts =
        caseInsensitive ? unitsOfSameUppercase(first) : UnitsToFind{{first, first, first, first}, 1};
    const std::size_t starts = text.size() - needle.size() + 1;
    // Vectors find where the needle can begin, until text that holds too many such places has cost more than
    // the steady search would.
    constexpr std::size_t costOfCandidate = 8, freeCost = 2048;
    std::size_t cost = 0;
    for (const std::size_t from = start; cost <= 2 * (start - from) + freeCost; ++start) {
        start += firstUnitEqualTo(text.data() + start, starts - start, firsts);
        if (start >= starts)
            return NSNotFound;
        std::size_t index = 1;
        while (index < needle.size() && wanted[index] == units[start + index])
            ++index;
        if (index == needle.size())
            return start;
        cost += costOfCandidate + index;
        if (start + 1 == starts)
            return NSNotFound;
    }
    const std::size_t found = twoWaySearch(ForwardReader(text.substr(start), upper), wanted);
    return found == NSNotFound ? NSNotFound : start + found;
}

template <bool caseInsensitive>
std::size_t lastOccurrenceIn(std::u16string_view text, std::u16string_view needle) {
    using BackwardReader = Reader<FindDirection::Backward, caseInsensitive>;
    const char16_t* upper = caseInsensitive ? initUpperCharsTable() : nullptr;
    const std::size_t found = twoWaySearch(BackwardReader(text, upper), BackwardReader(needle, upper));
    return found == NSNotFound ? NSNotFound : text.size() - found - needle.size();
}

NSRange rangeAt(std::size_t location, std::size_t offset, std::size_t length) {
    return location == NSNotFound ? notFoundRange : NSRange{offset + location, length};
}

NSRange findForward(std::u16string_view text, std::u16string_view needle, NSRange range, bool caseInsensitive,
                    bool wrap) {
    const std::size_t end = range.location + range.length;
    std::size_t found = firstOccurrence(text.substr(0, end), needle, range.location, caseInsensitive);
    if (found == NSNotFound && wrap)
        found = firstOccurrence(text, needle, range.location, caseInsensitive);
    if (found == NSNotFound && wrap)
        found = firstOccurrence(text, needle, 0, caseInsensitive);
    return rangeAt(found, 0, needle.size());
}

NSRange findBackward(std::u16string_view text, std::u16string_view needle, NSRange range,
                     bool caseInsensitive, bool wrap) {
    const std::u16string_view upToEnd = text.substr(0, range.location + range.length);
    const NSRange inside = rangeAt(lastOccurrence(upToEnd.substr(range.location), needle, caseInsensitive),
                                   range.location, needle.size());
    if (inside.location != NSNotFound || !wrap)
        return inside;
    const std::size_t before = lastOccurrence(upToEnd, needle, caseInsensitive);
    return rangeAt(before != NSNotFound ? before : lastOccurrence(text, needle, caseInsensitive), 0,
                   needle.size());
}

} // namespace

std::size_t firstOccurrence(std::u16string_view text, std::u16string_view needle, std::size_t startAt,
                            bool caseInsensitive) {
    if (needle.empty() || startAt > text.size() || text.size() - startAt < needle.size())
        return NSNotFound;
    return caseInsensitive ? firstOccurrenceFrom<true>(text, needle, startAt)
                           : firstOccurrenceFrom<false>(text, needle, startAt);
}

std::size_t lastOccurrence(std::u16string_view text, std::u16string_view needle, bool caseInsensitive) {
    if (needle.empty() || text.size() < needle.size())
        return NSNotFound;
    return caseInsensitive ? lastOccurrenceIn<true>(text, needle) : lastOccurrenceIn<false>(text, needle);
}

NSRange findString_inRange_caseSensitive_direction_wrap(std::u16string_view text, std::u16string_view needle,
                                                        NSRange range, bool caseSensitive,
                                                        FindDirection direction, bool wrap) {
    if (!rangeFits(range, text.size()))
        return notFoundRange;
    return direction == FindDirection::Forward ? findForward(text, needle, range, !caseSensitive, wrap)
                                               : findBackward(text, needle, range, !caseSensitive, wrap);
}

std::size_t countSubstring_caseSensitive(std::u16string_view text, std::u16string_view needle,
                                         bool caseSensitive) {
    std::size_t count = 0;
    for (std::size_t next = 0; (next = firstOccurrence(text, needle, next, !caseSensitive)) != NSNotFound;
         next += needle.size())
        ++count;
    return count;
}

bool containsSubstring_caseSensitive(std::u16string_view text, std::u16string_view needle,
                                     bool caseSensitive) {
    return firstOccurrence(text, needle, 0, !caseSensitive) != NSNotFound;
}

bool containsSubstrings_caseSensitive(std::u16string_view text, const NSArray& needles, bool caseSensitive) {
    return std::any_of(needles.begin(), needles.end(), [&](const Value& needle) {
        return containsSubstring_caseSensitive(text, needle.string(), caseSensitive);
    });
}

bool containsCharacters(std::u16string_view text, std::u16string_view characters) {
    return findOneOf(text, characters, 0, false) != NSNotFound;
}

} // namespace kelvo
