#include "text/StringMatching.h"

#include "text/FoldingTables.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

using Needles = std::vector<const char*>;

TEST(StringMatchingTest, needles) {
    std::tuple<const char*, NSString, Needles, bool, bool> rows[] = {
        {"nil", nullptr, {"a"}, true, false},
        {"empty string, empty needle", u"", {""}, true, false},
        {"empty needle", u"x", {"y", ""}, true, true},
        {"no needles", u"x", {}, true, false},
        {"too long, then one that fits", u"ab", {"abc", "b"}, true, true},
        {"capital needle never matches folded text", u"ABC", {"ABC"}, false, false},
        {"U+0130 is not folded to i", u"\u0130x", {"ix"}, false, false},
        {"byte 0x80 is not U+0080", u"a\u0080", {"\x80"}, true, false},
        {"byte 0x80 is not U+FF80", u"a\uFF80", {"\x80"}, true, false},
        {"high byte inside a needle", u"a\uFFE4", {"a\xE4"}, true, false},
        {"byte inside a needle is not U+00E4", u"a\u00E4", {"a\xE4"}, true, false},
        {"high byte, then a needle that hits", u"\u00E4z", {"\xE4", "z"}, false, true},
        {"unit whose low byte is the needle", u"\u0161", {"a"}, true, false},
    };
    for (auto& [name, string, needles, caseSensitive, found] : rows) {
        needles.push_back(nullptr);
        EXPECT_EQ(containsSubCStrings_caseSensitive(string, needles.data(), caseSensitive), found) << name;
        if (caseSensitive) {
            EXPECT_EQ(containsSubCStrings(string, needles.data()), found) << name;
        }
    }
    EXPECT_FALSE(containsSubCStrings(u"x", nullptr));
}

TEST(StringMatchingTest, needlesAtEveryPlace) {
    std::mt19937 random(11);
    for (std::size_t count = 1; count <= 300; ++count) {
        std::u16string string;
        for (std::size_t index = 0; index < count; ++index)
            string += u"aabB"[random() % 4];
        std::string needle;
        for (std::size_t index = 1 + random() % 7; index > 0; --index)
            needle += "ab"[random() % 2];
        std::u16string folded = string;
        for (char16_t& unit : folded)
            unit = initLowerCharsTable()[unit];
        const std::u16string wide(needle.begin(), needle.end());
        const char* const list[] = {"zz", needle.c_str(), nullptr};
        ASSERT_EQ(containsSubCStrings(string, list), string.find(wide) != string.npos) << needle;
        ASSERT_EQ(containsSubCStrings_caseSensitive(string, list, false), folded.find(wide) != folded.npos)
            << needle;
    }
}

struct Comparison {
    bool equal, equalNoCase, prefix, prefixNoCase;
};

void expectComparison(std::u16string_view first, std::u16string_view second, CharacterSetRep rep,
                      const Comparison& expected) {
    EXPECT_EQ(equalStringsUsingCharacterSetRep(first, second, rep), expected.equal);
    EXPECT_EQ(equalStringsNoCaseUsingCharacterSetRep(first, second, rep), expected.equalNoCase);
    EXPECT_EQ(hasPrefixUsingCharacterSetRep(first, second, rep), expected.prefix);
    EXPECT_EQ(hasPrefixNoCaseUsingCharacterSetRep(first, second, rep), expected.prefixNoCase);
    EXPECT_EQ(_equalStringsUsingCharacterSetRep(first, second, rep, false, false), expected.equal);
    EXPECT_EQ(_equalStringsUsingCharacterSetRep(first, second, rep, true, false), expected.equalNoCase);
    EXPECT_EQ(_equalStringsUsingCharacterSetRep(first, second, rep, false, true), expected.prefix);
    EXPECT_EQ(_equalStringsUsingCharacterSetRep(first, second, rep, true, true), expected.prefixNoCase);
    const auto *a = first.data(), *b = second.data();
    const std::size_t m = first.size(), n = second.size();
    EXPECT_EQ(equalCharsOfCharacterSetRep(a, m, b, n, rep), expected.equal);
    EXPECT_EQ(equalCharsNoCaseOfCharacterSetRep(a, m, b, n, rep), expected.equalNoCase);
    EXPECT_EQ(hasPrefixCharsOfCharacterSetRep(a, m, b, n, rep), expected.prefix);
    EXPECT_EQ(hasPrefixCharsNoCaseOfCharacterSetRep(a, m, b, n, rep), expected.prefixNoCase);
}

TEST(StringMatchingTest, setRestrictedComparison) {
    const CharacterSetRep alphaNum = alphaNumCharacterSetRep(), none = emptyCharacterSetRep();
    const std::tuple<const char*, NSString, NSString, CharacterSetRep, Comparison> rows[] = {
        {"upper-case table, not lower case", u"\u017Fa", u"sa", alphaNum, {false, true, false, true}},
        {"both empty", u"", u"", alphaNum, {true, true, true, true}},
        {"both nil", nullptr, nullptr, alphaNum, {true, true, true, true}},
        {"both empty, no rep", u"", u"", nullptr, {true, true, true, true}},
        {"no rep", u"a", u"a", nullptr, {false, false, false, false}},
        {"empty prefix", u"a", u"", alphaNum, {false, false, true, true}},
        {"nothing to begin with", u"", u"a", alphaNum, {false, false, false, false}},
        {"nothing to begin with but others", u"--", u"--a", alphaNum, {false, false, false, false}},
        {"empty rep", u"a", u"b", none, {true, true, true, true}},
    };
    for (const auto& [name, first, second, rep, expected] : rows) {
        SCOPED_TRACE(name);
        expectComparison(first, second, rep, expected);
    }
}

TEST(StringMatchingTest, setRestrictedComparisonFollowsTheFilteredStrings) {
    std::mt19937 random(5);
    const CharacterSetRep rep = alphaNumCharacterSetRep();
    for (int round = 0; round < 4000; ++round) {
        std::u16string texts[2], kept[2], folded[2];
        const std::size_t count = random() % 40;
        for (int side = 0; side < 2; ++side)
            for (std::size_t index = 0; index < count; ++index) {
                if (random() % 3 == 0)
                    texts[side] += u"-. \xD800"[random() % 4];
                const bool odd = random() % 40 == 0;
                texts[side] += odd ? u'x' : (index + (round % 2 ? random() % 2 * 32 : 0)) % 2 ? u'a' : u'A';
            }
        if (round % 5 == 0)
            texts[1].resize(texts[1].size() / 2);
        for (int side = 0; side < 2; ++side)
            for (const char16_t unit : texts[side])
                if (unitIsInBitmap(rep, unit)) {
                    kept[side] += unit;
                    folded[side] += initUpperCharsTable()[unit];
                }
        expectComparison(texts[0], texts[1], rep,
                         {kept[0] == kept[1], folded[0] == folded[1], kept[0].starts_with(kept[1]),
                          folded[0].starts_with(folded[1])});
    }
}

TEST(StringMatchingTest, mashedWords) {
    EXPECT_FALSE(isMashedWord(NSString()));
    for (const char16_t* word :
         {u"", u"Fo", u"Foo", u"FOO", u"FooB", u"FBar", u"fooBar", u"FooBAr", u"Foo1Bar"})
        EXPECT_FALSE(isMashedWord(word)) << NSString(word).UTF8String();
    for (const char16_t* word : {u"WebKit", u"AbCd", u"FooBa!", u"\u00C4\u00E4\u00C4\u00E4",
                                 u"AbcdefghijklmnopqrstuvwxyzabcdefghijklmnoPq"})
        EXPECT_TRUE(isMashedWord(word)) << NSString(word).UTF8String();
}

} // namespace
} // namespace kelvo
