#include "text/WordsAndLines.h"
#include "text/LinksAndNumbers.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvo {
namespace {

constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();

TEST(WordsAndLinesTest, words) {
    using Text = const char16_t*;
    using Row = std::tuple<const char*, Text, Text, Text, std::size_t, Text>;
    const Row rows[] = {
        {"nil", nullptr, nullptr, nullptr, 0, nullptr},
        {"empty", u"", u"", u"", 0, nullptr},
        {"no word", u" -'- ", u"", u"", 2, nullptr},
        {"two", u"  foo, b\u00E4r2! ", u"foo", u"b\u00E4r2", 8, u"b\u00E4r2"},
        {"between two", u"foo bar", u"foo", u"bar", 3, nullptr},
        {"apostrophes inside", u"'don\u2019t' o'clock", u"don\u2019t", u"o'clock", 4, u"don\u2019t"},
        {"apostrophe at the end", u"dogs' x", u"dogs", u"x", 4, nullptr},
        {"hyphen", u"well-known", u"well", u"known", 9, u"known"},
        {"surrogates", u"a\U0001D400b", u"a", u"b", 1, nullptr},
        {"index past the end", u"foo", u"foo", u"foo", 3, nullptr},
    };
    for (const auto& [name, text, first, last, index, atIndex] : rows) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(firstWord(text) == first);
        EXPECT_TRUE(lastWord(text) == last);
        EXPECT_TRUE(getWordAtIndex(text, index) == atIndex);
        const NSRange range = getWordRangeAtIndex(NSString(text), index);
        EXPECT_EQ(range.length, NSString(atIndex).length());
        EXPECT_EQ(range.location == NSNotFound, atIndex == nullptr);
    }
    const NSString word = u"word";
    EXPECT_TRUE(firstWord(word).isIdenticalTo(word));
}

TEST(WordsAndLinesTest, fieldsBetweenSeparators) {
    EXPECT_TRUE(getSubstringAtIndex_separators(u"a;bc,d", 3, u",;") == u"bc");
    EXPECT_TRUE(getSubstringAtIndex_separators(u"a;bc,d", 0, u",;") == u"a");
    EXPECT_TRUE(getSubstringAtIndex_separators(u"a;bc,d", 1, u",;").isNil());
    EXPECT_TRUE(getSubstringAtIndex_separators(u"a;bc,d", 6, u",;").isNil());
    EXPECT_TRUE(getSubstringAtIndex_separators(u"a;bc", 1, NSString()) == u"a;bc");
    EXPECT_EQ(getSubstringRangeAtIndex_separators(u"a;bc,d", 5, u",;"), (NSRange{5, 1}));
    EXPECT_EQ(getSubstringRangeAtIndex_separators(u"", 0, u",").location, NSNotFound);
}

TEST(WordsAndLinesTest, linesAndCharacters) {
    const std::tuple<const char*, std::u16string_view, std::size_t, const char16_t*> rows[] = {
        {"empty", u"", 0, u""},
        {"no end", u"abc", 1, u"abc"},
        {"end at the end", u"abc\n", 1, u"abc"},
        {"CR LF is one", u"a\r\nb\n\rc", 4, u"a"},
        {"all ends", u"a\fb\nc\rd\u2028e\u2029f\u0003g\uFFFCh", 8, u"a"},
        {"no line end", u"a\uFEFFb\u0085c\vd", 1, u"a\uFEFFb\u0085c\vd"},
        {"blank first", u"\n\nx", 3, u""},
    };
    for (const auto& [name, text, lines, first] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(numberOfLines(text), lines);
        EXPECT_TRUE(firstLine(NSString(text)) == first);
    }
    EXPECT_TRUE(firstLine(nullptr).isNil());
    EXPECT_EQ(firstCharacter(u"xy"), u'x');
    EXPECT_EQ(lastCharacter(u"xy"), u'y');
    EXPECT_EQ(firstCharacter(NSString()), u'\0');
    EXPECT_EQ(lastCharacter(u""), u'\0');

    EXPECT_EQ(findLastCharacter(u"a/b/c", u'/'), 3u);
    EXPECT_EQ(findLastCharacter(u"aAa", u'a'), 1u);
    EXPECT_EQ(findLastCharacter_caseInsensitive(u"aAa", u'A', true), 2u);
    EXPECT_EQ(findLastCharacter_startAt_caseInsensitive(u"a/b/c", u'/', 2, false), 1u);
    EXPECT_EQ(findLastCharacter_startAt_caseInsensitive(u"a/b/c", u'/', 5, false), NSNotFound);
    EXPECT_EQ(findLastCharacter(u"", u'/'), NSNotFound);
    EXPECT_EQ(findLastCharacter(u"abc", u'/'), NSNotFound);
}

TEST(WordsAndLinesTest, links) {
    const std::tuple<const char*, std::u16string, std::size_t, const char16_t*> rows[] = {
        {"scheme", u"see http://a.example/b?c=d#e now", 10, u"http://a.example/b?c=d#e"},
        {"before it", u"x(http://a.b)", 0, nullptr},
        {"in brackets", u"(http://a.b/c)", 4, u"http://a.b/c"},
        {"with brackets", u"http://a.b/c_(d)).", 4, u"http://a.b/c_(d)"},
        {"the closing bracket", u"(http://a.b/c)", 13, nullptr},
        {"full stop", u"http://a.b/c.", 0, u"http://a.b/c"},
        {"the full stop itself", u"http://a.b/c.", 12, nullptr},
        {"angle brackets", u"<ftp://a.b/c d>", 3, u"ftp://a.b/c"},
        {"nothing after the scheme", u"http://", 2, nullptr},
        {"only punctuation after it", u"http://...", 2, nullptr},
        {"scheme begins with a letter", u"1+x-y://z", 3, u"x-y://z"},
        {"no scheme at all", u"://z", 3, nullptr},
        {"www", u"at www.a.example!", 5, u"www.a.example"},
        {"www inside a word", u"xwww.a.example", 5, nullptr},
        {"mailto", u"MAILTO:a@b.example", 0, u"MAILTO:a@b.example"},
        {"scheme wins when first", u"http://www.a.b", 9, u"http://www.a.b"},
        {"address", u"to jane.doe+x@mail.example, now", 8, u"jane.doe+x@mail.example"},
        {"second of two addresses", u"a@b.cd,e@f.gh", 9, u"e@f.gh"},
        {"no dot in the domain", u"a@b", 1, nullptr},
        {"no local part", u".@b.cd", 3, nullptr},
        {"plain word", u"word", 1, nullptr},
        {"white", u"a b", 1, nullptr},
        {"past the end", u"http://a.b", 10, nullptr},
        {"no-break space ends it", u"http://a.b\u00A0c", 0, u"http://a.b"},
    };
    for (const auto& [name, text, index, link] : rows) {
        SCOPED_TRACE(name);
        EXPECT_TRUE(getLinkAtIndex(NSString(text), index) == link);
        EXPECT_EQ(getLinkRangeAtIndex(text, index).length, NSString(link).length());
    }
    EXPECT_TRUE(getLinkAtIndex(nullptr, 0).isNil());
}

TEST(WordsAndLinesTest, numbers) {
    constexpr std::u16string_view text = u"v-12.007 \u0661\u0662\u0663 2026-11-21";
    EXPECT_EQ(countNumbers(text), 6u);
    EXPECT_EQ(countNumbers(u"none"), 0u);
    const std::tuple<const char*, std::u16string_view, std::int64_t, bool> rows[] = {
        {"a whole run", text, 12, true},
        {"part of a run", text, 20, false},
        {"leading zeros", text, 7, true},
        {"other digits", text, 123, true},
        {"negative", text, -12, true},
        {"negative without a sign", text, -7, false},
        {"positive after a dash", text, 11, true},
        {"zero", u"a00b", 0, true},
        {"no zero", u"10", 0, false},
        {"largest", u"9223372036854775807", std::numeric_limits<std::int64_t>::max(), true},
        {"lowest", u"-9223372036854775808", lowest, true},
        {"too long to fit", u"18446744073709551617", 1, false},
        {"without its first digit", u"12", 112, false},
        {"sign U+2212", u"\u22125", -5, true},
        {"empty", u"", 0, false},
    };
    for (const auto& [name, units, value, contained] : rows)
        EXPECT_EQ(containsNumber(units, value), contained) << name;
    EXPECT_TRUE(containsNumberWithNDigits(text, 4));
    EXPECT_FALSE(containsNumberWithNDigits(text, 1) || containsNumberWithNDigits(text, 0));
}

TEST(WordsAndLinesTest, tagsAndBytes) {
    std::size_t less = 9, greater = 9;
    countLT_GT(u"<a><b>>", &less, &greater);
    EXPECT_EQ(less, 2u);
    EXPECT_EQ(greater, 3u);
    countLT_GT(NSString(), &less, nullptr);
    EXPECT_EQ(less, 0u);
    std::string bytes(3, '*');
    getChars(u"a\u00E4\u4E00z", bytes);
    EXPECT_EQ(bytes, "aa ");
    bytes = "****";
    getChars(u"xy", bytes);
    EXPECT_EQ(bytes, "xy**");
}

} // namespace
} // namespace kelvo
