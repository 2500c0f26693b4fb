#include "text/CharacterSearch.h"

#include "text/FoldingTables.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

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
    struct Row {
        const char* name;
        const char16_t* string;
        char16_t unit;
        std::size_t startAt;
        bool caseInsensitive;
        std::size_t location, count;
    };
    // clang-format off
    const Row rows[] = {
        {"lower case looks for upper case",        u"abc",    u'b',   0, false, NSNotFound, 0},
        {"lower case finds upper case",            u"ABC",    u'b',   0, false, 1, 1},
        {"lower case counts upper case",           u"banana", u'a',   0, false, NSNotFound, 0},
        {"no case counts both",                    u"bAnana", u'A',   0, true,  1, 3},
        {"upper case finds itself",                u"aA",     u'A',   0, false, 1, 1},
        {"start skips",                            u"AAxA",   u'A',   1, false, 1, 2},
        {"start at the end",                       u"AA",     u'A',   2, false, NSNotFound, 0},
        {"start far past the end",                 u"AA",     u'A',   SIZE_MAX, true, NSNotFound, 0},
        {"empty",                                  u"",       u'A',   0, true,  NSNotFound, 0},
        {"nil",                                    nullptr,   u'A',   0, true,  NSNotFound, 0},
        {"digit matches itself",                   u"x1x1",   u'1',   0, true,  1, 2},
        {"U+00DF has no case",                     u"sS\u00DF", 0xDF, 0, true,  2, 1},
        {"U+00DF regards itself",                  u"\u00DF", 0xDF,   0, false, 0, 1},
        {"long s goes with S",                     u"x\u017FsS", u's', 0, true, 1, 3},
        {"long s looks for S",                     u"\u017FsS", 0x17F, 0, false, 2, 1},
        {"I takes the dotless i along",            u"\u0131i\u0130", u'I', 0, true, 0, 2},
        {"U+0130 has no case",                     u"iI\u0130", 0x130, 0, true, 2, 1},
        {"four forms",                             u"\u1C84\u1C85\u0442\u0422", 0x422, 0, true, 0, 4},
        {"unpaired surrogate matches itself",      u"a\xDC00\xD800", 0xD800, 0, true, 2, 1},
    };
    // clang-format on
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const NSString string(row.string);
        EXPECT_EQ(findCharacter_startAt_caseInsensitive(string, row.unit, row.startAt, row.caseInsensitive),
                  row.location);
        EXPECT_EQ(countCharacter_startAt_caseInsensitive(string, row.unit, row.startAt, row.caseInsensitive),
                  row.count);
        EXPECT_EQ(
            containsCharacter_startAt_caseInsensitive(string, row.unit, row.startAt, row.caseInsensitive),
            row.location != NSNotFound);
    }
    EXPECT_EQ(findCharacter(u"abA", u'a'), 2u);
    EXPECT_EQ(countCharacter(u"abA", u'a'), 1u);
    EXPECT_FALSE(containsCharacter(u"abc", u'b'));
    EXPECT_TRUE(containsCharacter_caseInsensitive(u"abc", u'b', true));
    EXPECT_EQ(countCharacter_caseInsensitive(u"banana", u'a', true), 3u);
}

TEST(CharacterSearchTest, findOneOfOddities) {
    struct Row {
        const char* name;
        NSString string, candidates;
        std::size_t startAt;
        bool caseInsensitive;
        std::size_t location;
    };
    const Row rows[] = {
        {"nil string", nullptr, u"a", 0, true, NSNotFound},
        {"nil candidates", u"a", nullptr, 0, true, NSNotFound},
        {"no candidates", u"a", u"", 0, true, NSNotFound},
        {"start at the end", u"a", u"a", 1, true, NSNotFound},
        {"a lower-case candidate finds itself", u"Aa", u"a", 0, false, 1},
        {"no case", u"xA", u"a", 0, true, 1},
        {"no case by the upper-case table", u"x\u017F", u"qsz", 0, true, 1},
        {"repeated candidates", u"xyz", u"zzzzzzzzz", 0, false, 2},
        {"many candidates", u"....q", u"abcdefghijklmnopq", 0, false, 4},
    };
    for (const Row& row : rows)
        EXPECT_EQ(findOneOf(row.string, row.candidates, row.startAt, row.caseInsensitive), row.location)
            << row.name;
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
    EXPECT_EQ(aha, u"Aha");

    struct Row {
        const char* name;
        NSString string;
        char16_t oldUnit, newUnit;
    };
    const Row unchanged[] = {
        {"nil", NSString(), u'a', u'b'},
        {"empty", NSString(u""), u'a', u'b'},
        {"absent", NSString(u"xyz"), u'a', u'b'},
        {"other case only", NSString(u"XYZ"), u'x', u'b'},
        {"same unit", NSString(u"aaa"), u'a', u'a'},
    };
    for (const Row& row : unchanged)
        EXPECT_TRUE(
            stringByReplacingCharacter(row.string, row.oldUnit, row.newUnit, true).isIdenticalTo(row.string))
            << row.name;
}

} // namespace
} // namespace kelvo
