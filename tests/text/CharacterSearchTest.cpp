#include "text/CharacterSearch.h"

#include "text/FoldingTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace kelvo {
namespace {

TEST(CharacterSearchTest, sameUppercaseIsExhaustive) {
    const char16_t* upper = initUpperCharsTable();
    std::vector<std::u16string> expected(foldingTableCount);
    for (std::size_t unit = 0; unit < foldingTableCount; ++unit)
        expected[upper[unit]] += static_cast<char16_t>(unit);
    for (std::size_t index = 0; index < foldingTableCount; ++index) {
        const auto unit = static_cast<char16_t>(index);
        const UnitsToFind wanted = unitsOfSameUppercase(unit);
        std::u16string got(wanted.units, wanted.count);
        std::sort(got.begin(), got.end());
        ASSERT_EQ(got, expected[upper[unit]]) << index;
    }
}

TEST(CharacterSearchTest, characterRule) {
    using Row = std::tuple<const char*, NSString, char16_t, std::size_t, bool, std::size_t, std::size_t>;
    const Row rows[] = {
        {"lower case finds upper case", u"ABC", u'b', 0, false, 1, 1},
        {"start at the end", u"AA", u'A', 2, false, NSNotFound, 0},
        {"start far past the end", u"AA", u'A', SIZE_MAX, true, NSNotFound, 0},
        {"empty", u"", u'A', 0, true, NSNotFound, 0},
        {"nil", nullptr, u'A', 0, true, NSNotFound, 0},
        {"U+00DF regards itself", u"\u00DF", 0xDF, 0, false, 0, 1},
        {"four forms", u"\u1C84\u1C85\u0442\u0422", 0x422, 0, true, 0, 4},
    };
    for (const auto& [name, string, unit, startAt, caseInsensitive, location, count] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(findCharacter_startAt_caseInsensitive(string, unit, startAt, caseInsensitive), location);
        EXPECT_EQ(countCharacter_startAt_caseInsensitive(string, unit, startAt, caseInsensitive), count);
        EXPECT_EQ(containsCharacter_startAt_caseInsensitive(string, unit, startAt, caseInsensitive),
                  location != NSNotFound);
    }
    EXPECT_EQ(findCharacter(u"abA", u'a'), 2u);
    EXPECT_EQ(countCharacter(u"abA", u'a'), 1u);
    EXPECT_FALSE(containsCharacter(u"abc", u'b'));
    EXPECT_TRUE(containsCharacter_caseInsensitive(u"abc", u'b', true));
    EXPECT_EQ(countCharacter_caseInsensitive(u"banana", u'a', true), 3u);
}

TEST(CharacterSearchTest, findOneOfOddities) {
    const std::tuple<const char*, NSString, NSString, std::size_t, bool, std::size_t> rows[] = {
        {"nil string", nullptr, u"a", 0, true, NSNotFound},
        {"nil candidates", u"a", nullptr, 0, true, NSNotFound},
        {"no candidates", u"a", u"", 0, true, NSNotFound},
        {"start at the end", u"a", u"a", 1, true, NSNotFound},
        {"no case by the upper-case table", u"x\u017F", u"qsz", 0, true, 1},
    };
    for (const auto& [name, string, candidates, startAt, caseInsensitive, location] : rows)
        EXPECT_EQ(findOneOf(string, candidates, startAt, caseInsensitive), location) << name;
}

// The three ways of findOneOf (a few units, plain loops, a bitmap) and the scans of one character beside the
// rules read off the tables.
TEST(CharacterSearchTest, randomStringsFollowTheTables) {
    const char16_t *upper = initUpperCharsTable(), *lower = initLowerCharsTable();
    const std::u16string_view alphabet = u"aAbBsS\u017F\u0131iI1 \u00DF\u00E4\u00C4\u4E00\u0422\u1C84\xD800";
    std::mt19937 random(7);
    for (std::size_t count = 0; count <= 300; ++count) {
        std::u16string string, candidates;
        const bool rare = count % 2;
        for (std::size_t index = 0; index < count; ++index)
            string += rare && random() % 64 ? u'.' : alphabet[random() % alphabet.size()];
        for (std::size_t index = random() % 40; index > 0; --index)
            candidates += alphabet[random() % (1 + random() % alphabet.size())];
        const char16_t wanted = alphabet[random() % alphabet.size()];
        const std::size_t startAt = count ? random() % count : 0;
        for (const bool caseInsensitive : {false, true}) {
            const auto matches = [&](char16_t unit) {
                if (upper[wanted] == lower[wanted])
                    return unit == wanted;
                return caseInsensitive ? upper[unit] == upper[wanted] : unit == upper[wanted];
            };
            const auto isCandidate = [&](char16_t unit) {
                return std::any_of(candidates.begin(), candidates.end(), [&](char16_t candidate) {
                    return caseInsensitive ? upper[unit] == upper[candidate] : unit == candidate;
                });
            };
            std::size_t first = NSNotFound, firstOf = NSNotFound, matching = 0;
            for (std::size_t index = count; index-- > startAt;) {
                if (matches(string[index])) {
                    first = index;
                    ++matching;
                }
                if (isCandidate(string[index]))
                    firstOf = index;
            }
            SCOPED_TRACE(count);
            ASSERT_EQ(findCharacter(string, wanted, startAt, caseInsensitive), first);
            ASSERT_EQ(countCharacter(string, wanted, startAt, caseInsensitive), matching);
            ASSERT_EQ(findOneOf(string, candidates, startAt, caseInsensitive), firstOf);
        }
    }
}

TEST(CharacterSearchTest, replacement) {
    const NSString aha(u"Aha");
    EXPECT_EQ(stringByReplacingCharacter_withCharacter_caseSensitive(aha, u'a', u'o', false), u"Aho");
    EXPECT_EQ(stringByReplacingCharacter_withCharacter_caseSensitive(aha, u'A', u'o', true), u"oha");
    EXPECT_EQ(stringByReplacingCharacter_withCharacter(NSString(u"1-1-"), u'1', u'x'), u"x-x-");
    EXPECT_TRUE(stringByReplacingCharacter(aha, u'h', u'h', true).isIdenticalTo(aha));
    EXPECT_EQ(aha, u"Aha");
}

} // namespace
} // namespace kelvo
