#include "text/SubstringSearch.h"

#include "platform/foundation/Value.h"
#include "text/FoldingTables.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

bool standsAt(std::u16string_view text, std::u16string_view needle, std::size_t start, bool caseInsensitive) {
    for (std::size_t index = 0; index < needle.size(); ++index)
        if (caseInsensitive ? toUpper(text[start + index]) != toUpper(needle[index])
                            : text[start + index] != needle[index])
            return false;
    return true;
}

// Over two or three letters nearly every needle is periodic somewhere and most occur.
TEST(SubstringSearchTest, findsWhatTheObviousLoopFinds) {
    std::mt19937 random(4711);
    for (int round = 0; round < 6000; ++round) {
        const bool long_ = round % 50 == 0;
        std::u16string text(random() % (long_ ? 3000 : 40), u' '),
            needle(1 + random() % (long_ ? 60 : 8), u' ');
        const std::u16string_view letters = round % 2 ? u"ab" : u"aAb";
        for (std::u16string* string : {&text, &needle})
            for (char16_t& unit : *string)
                unit = letters[random() % 7 < 5 ? 0 : random() % letters.size()];
        if (long_ && text.size() > needle.size())
            text.replace(text.size() / 2 - needle.size() / 2, needle.size(), needle);
        const bool caseInsensitive = random() % 2;
        const std::size_t startAt = random() % 4;
        std::size_t first = NSNotFound, last = NSNotFound, count = 0, next = 0;
        for (std::size_t start = 0; start + needle.size() <= text.size(); ++start) {
            if (!standsAt(text, needle, start, caseInsensitive))
                continue;
            if (first == NSNotFound && start >= startAt)
                first = start;
            last = start;
            if (start >= next) {
                ++count;
                next = start + needle.size();
            }
        }
        ASSERT_EQ(firstOccurrence(text, needle, startAt, caseInsensitive), first) << round;
        ASSERT_EQ(lastOccurrence(text, needle, caseInsensitive), last) << round;
        ASSERT_EQ(countSubstring_caseSensitive(text, needle, !caseInsensitive), count) << round;
        ASSERT_EQ(containsSubstring_caseSensitive(text, needle, !caseInsensitive), last != NSNotFound);
    }
}

// With a quadratic search each of these would take very long.
TEST(SubstringSearchTest, hostileTextsAreSearchedInLinearTime) {
    const std::u16string text(200'000, u'a'), half(100'000, u'a');
    EXPECT_EQ(countSubstring(text, u"a"), text.size());
    EXPECT_EQ(countSubstring(text, u"aa"), text.size() / 2);
    EXPECT_EQ(countSubstring(text, u"ab"), 0u);
    EXPECT_EQ(countSubstring(text, half), 2u);
    const NSRange middle{half.size(), 0};
    for (const FindDirection direction : {FindDirection::Forward, FindDirection::Backward})
        for (const std::u16string& needle :
             {half + u'b', u'b' + half, half.substr(20'000) + u'b' + half.substr(40'000)})
            EXPECT_EQ(
                findString_inRange_caseSensitive_direction_wrap(text, needle, middle, false, direction, true)
                    .location,
                NSNotFound);
}

TEST(SubstringSearchTest, rangesDirectionsAndWrapping) {
    using enum FindDirection;
    constexpr std::u16string_view text = u"ab ab AB ab"; // at 0, 3, 6 (upper case) and 9
    using Row = std::tuple<const char*, std::u16string_view, NSRange, bool, FindDirection, bool, std::size_t>;
    const Row rows[] = {
        {"first inside", u"ab", {1, 10}, true, Forward, false, 3},
        {"last inside", u"ab", {0, 10}, true, Backward, false, 3},
        {"case does not matter", u"ab", {4, 7}, false, Forward, false, 6},
        {"only partly inside", u"ab", {4, 6}, true, Forward, false, NSNotFound},
        {"partly inside, wrapped", u"ab", {4, 6}, true, Forward, true, 9},
        {"wrapped to the beginning", u"ab", {10, 1}, true, Forward, true, 0},
        {"backward wrapped before", u"ab", {7, 2}, true, Backward, true, 3},
        {"backward wrapped to the end", u"ab", {0, 1}, true, Backward, true, 9},
        {"cursor forward", u"ab", {3, 0}, true, Forward, true, 3},
        {"cursor backward", u"ab", {3, 0}, true, Backward, true, 0},
        {"cursor at the end", u"ab", {11, 0}, true, Forward, true, 0},
        {"cursor without wrap", u"ab", {3, 0}, true, Forward, false, NSNotFound},
        {"empty needle", u"", {0, 11}, true, Forward, true, NSNotFound},
        {"range past the end", u"ab", {5, 7}, true, Forward, true, NSNotFound},
        {"range that overflows", u"ab", {5, ~std::size_t{0}}, true, Backward, true, NSNotFound},
        {"not there", u"abc", {0, 11}, false, Backward, true, NSNotFound},
    };
    for (const auto& [name, needle, range, caseSensitive, direction, wrap, location] : rows) {
        SCOPED_TRACE(name);
        const NSRange expected{location, location == NSNotFound ? 0 : needle.size()};
        EXPECT_EQ(findString_inRange_caseSensitive_direction_wrap(text, needle, range, caseSensitive,
                                                                  direction, wrap),
                  expected);
    }
}

TEST(SubstringSearchTest, listsAndCharacters) {
    const NSArray needles = NSArray::arrayWithObjects({u"", NSNull(), u"Bar"});
    EXPECT_FALSE(containsSubstrings(u"foobar", needles));
    EXPECT_TRUE(containsSubstrings_caseSensitive(u"foobar", needles, false));
    EXPECT_FALSE(containsSubstrings(u"foobar", nullptr) || containsSubstring(NSString(), u"a"));
    EXPECT_EQ(countSubstring(u"abc", NSString()), 0u);
    EXPECT_TRUE(containsCharacters(u"foobar", u"xyzr"));
    EXPECT_FALSE(containsCharacters(u"foobar", u"R") || containsCharacters(u"foobar", NSString()));
}

} // namespace
} // namespace kelvo
