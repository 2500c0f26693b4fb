#include "text/NSMutableStringKelvoExtensions.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

const NSString nil;

template <class Change>
NSString changed(const NSString& text, Change change) {
    NSMutableString copy(text);
    change(copy);
    return copy.takeString();
}

TEST(StringTrimmingTest, particularEnds) {
    const std::tuple<const char*, NSString, NSString, NSString> rows[] = {
        {"ellipsis at both ends", u"\u2026a\u2026b...", u"a\u2026b", u"\u2026a\u2026b..."},
        {"more than three", u"a.....\u2026....", u"a", u"a.....\u2026...."},
        {"two full stops", u"..etc..", u"..etc..", u"..etc.."},
        {"only ellipses", u"...\u2026", u"", u"...\u2026"},
        {"one pair of quotes", u"''a''", u"''a''", u"'a'"},
        {"no pair", u"'a", u"'a", u"'a"},
        {"one unit is no pair", u"'", u"'", u"'"},
        {"empty pair", u"''", u"''", u""},
    };
    for (const auto& [name, text, ellipsis, quotes] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(stringByTrimmingEllipsis(text), ellipsis);
        EXPECT_EQ(stringByTrimmingEnclosingCharacter(text, u'\''), quotes);
    }
    // White space is not what the white rep has.
    EXPECT_EQ(stringByTrimmingWhiteSpaces(u"\u00A0\u0085\u2028a\uFEFF\u3000"), u"a\uFEFF");
    EXPECT_EQ(stringByTrimmingSpacesAndFeeds(u"\u00A0 a\uFEFF\u3000", true), u"\u00A0 a");
}

TEST(StringTrimmingTest, ranges) {
    const std::tuple<const char*, NSRange, NSString, NSString, NSString> rows[] = {
        {"inside", {1, 6}, u" \na \n", u" a", u" a"},
        {"all white", {0, 3}, u"\na \n ", u"a \n ", u"a \n "},
        {"nothing at the ends", {3, 1}, u"  \na \n ", u"  \na \n ", u"  \na \n "},
        {"past the end", {1, 7}, u"  \na \n ", u"  \na \n ", u"  \na \n "},
        {"begins past the end", {8, 0}, u"  \na \n ", u"  \na \n ", u"  \na \n "},
        {"wraps round", {2, ~std::size_t{0}}, u"  \na \n ", u"  \na \n ", u"  \na \n "},
    };
    const NSString text = u"  \na \n ";
    for (const auto& [name, range, spaces, spacesAndFeeds, white] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(stringByTrimmingSpacesInRange_andFeeds(text, range, false), spaces);
        EXPECT_EQ(stringByTrimmingSpacesInRange_andFeeds(text, range, true), spacesAndFeeds);
        EXPECT_EQ(changed(text, [at = range](auto& copy) { trimWhiteSpacesInRange(copy, at); }), white);
    }
}

TEST(StringRemovalTest, multiplesAndSinglePlaces) {
    const std::tuple<const char*, NSString, NSString, NSString, NSString> rows[] = {
        {"the first remains", u"a \t b\t  c", u"a b\tc", u"a \t b\t  c", u"a b\tc"},
        {"spaces leave feeds alone", u"a  \n\n  b", u"a \n\n b", u"a  \n  b", u"a \n b"},
        {"CR LF", u"a\r\n\r\nb\r\rc\n\r\nd", u"a\r\n\r\nb\r\rc\n\r\nd", u"a\r\nb\rc\nd", u"a\r\nb\rc\nd"},
        {"eight feeds", u"a\u2028\u2029\f\u0003\uFFFC\uFEFFb", u"a\u2028\u2029\f\u0003\uFFFC\uFEFFb",
         u"a\u2028b", u"a\u2028b"},
        {"spaces between feeds", u"\n \n  \n", u"\n \n \n", u"\n \n  \n", u"\n \n \n"},
        {"no-break space", u"a\u00A0\u00A0b", u"a\u00A0\u00A0b", u"a\u00A0\u00A0b", u"a\u00A0\u00A0b"},
    };
    for (const auto& [name, text, spaces, feeds, both] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(changed(text, removeMultipleSpaces), spaces);
        EXPECT_EQ(stringByRemovingMultipleFeeds(text), feeds);
        EXPECT_EQ(stringByRemovingMultipleSpacesAndFeeds(text, true), both);
    }
    EXPECT_EQ(changed(u"abc", [](auto& text) { removeCharacterAtIndex(text, 1); }), u"ac");
    for (const std::size_t past : {std::size_t{3}, ~std::size_t{0}})
        EXPECT_EQ(changed(u"abc", [&](auto& text) { removeCharacterAtIndex(text, past); }), u"abc");
    EXPECT_EQ(uppercaseStringByRemovingDigits(u"1stra\u00DFe2"), u"STRASSE");
    EXPECT_EQ(caseInsensitiveStringByRemovingNonAlphaNumericCharacters(u"Stra\u00DFe 1-a"), u"STRA\u00DFE1A");
}

TEST(StringReplacementTest, places) {
    const std::tuple<const char*, NSString, NSString, NSString, NSString, NSString> rows[] = {
        {"do not overlap", u"aaaaa", u"aa", u"b", u"bba", u"bba"},
        {"what is put in is not searched", u"abab", u"ab", u"abab", u"abababab", u"abababab"},
        {"case", u"aAa", u"A", u"-", u"a-a", u"---"},
        {"not normalised", u"\u00E9e\u0301", u"\u00C9", u"-", u"\u00E9e\u0301", u"-e\u0301"},
        {"one length only", u"\u00DF", u"SS", u"-", u"\u00DF", u"\u00DF"},
        {"half a pair", u"\U0001F600", u"\xD83D", u"", u"\xDE00", u"\xDE00"},
    };
    for (const auto& [name, text, target, replacement, withCase, withoutCase] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(stringByReplacingString_withString(text, target, replacement), withCase);
        EXPECT_EQ(stringByReplacingString_withString_caseSensitive(text, target, replacement, false),
                  withoutCase);
    }
}

TEST(StringEditingTest, additions) {
    const std::size_t past = ~std::size_t{0};
    NSMutableString text = NSMutableString::stringWithCharacters(u"abc");
    const auto addEverything = [&] {
        appendTrimmedString(text, u" \n d e\u00A0");
        appendCharacters_length(text, u"fgh", 2);
        appendCharacter(text, u'\xD800');
        insertCharacter_atIndex(text, u'<', 0);
        insertCharacter_atIndex(text, u'>', text.length());
        appendSubstring_range(text, u"ijkl", {1, 2});
    };
    const auto addNothing = [&] {
        appendTrimmedString(text, u" \n ");
        appendCharacters_length(text, nullptr, 5);
        insertCharacter_atIndex(text, u'-', text.length() + 1);
        insertCharacter_atIndex(text, u'-', past);
        appendSubstring_range(text, u"ijkl", {3, 2});
        appendSubstring_range(text, u"ijkl", {1, past});
        appendSubstring_range(text, nil, {0, 0});
    };
    addEverything();
    addNothing();
    EXPECT_EQ(text, u"<abcd efg\xD800>jk");
    text = NSMutableString();
    addEverything();
    EXPECT_TRUE(text.isNil());
}

TEST(StringEditingTest, tabs) {
    const std::tuple<const char*, NSString, std::size_t, NSString, NSString> rows[] = {
        {"stops", u"\ta\tabc\tabcd\t", 4, u"    a   abc abcd    ", u"\ta\tabc\tabcd\t"},
        {"runs", u"        a   b c", 4, u"        a   b c", u"\t\ta\tb c"},
        {"a single space at a stop stays", u"abc d", 4, u"abc d", u"abc d"},
        {"runs that pass a stop", u"ab    c", 4, u"ab    c", u"ab\t  c"},
        {"lines begin anew", u"a\r\n\tb\u2028  \tc", 2, u"a\r\n  b\u2028    c", u"a\r\n\tb\u2028\t\tc"},
        {"one column", u"a\t  b", 1, u"a   b", u"a\t  b"},
        {"none", u"a\t    b", 0, u"a\t    b", u"a\t    b"},
    };
    const auto decoded = [](const NSString& text, std::size_t width) {
        return changed(text, [width](auto& copy) { decodeTabs(copy, width); });
    };
    const auto encoded = [](const NSString& text, std::size_t width) {
        return changed(text, [width](auto& copy) { encodeTabs(copy, width); });
    };
    for (const auto& [name, text, width, withSpaces, withTabs] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(decoded(text, width), withSpaces);
        EXPECT_EQ(encoded(text, width), withTabs);
    }
    std::mt19937 random(8);
    for (int round = 0; round < 2000; ++round) {
        const std::size_t width = 1 + random() % 9;
        std::u16string text;
        for (std::size_t length = random() % 60; text.size() < length;)
            text.append(1 + random() % 5, u"  ab\t\n"[random() % 6]);
        const NSString plain = NSString(std::u16string_view(text));
        EXPECT_EQ(decoded(encoded(plain, width), width), decoded(plain, width));
    }
}

TEST(StringEditingTest, rotating) {
    EXPECT_EQ(stringByRotating13(u"Hello, W\u00F6rld 1"), u"Uryyb, J\u00F6eyq 1");
    EXPECT_EQ(stringByRotating(u"XYZxyz@[`{", 3), u"ABCabc@[`{");
    EXPECT_EQ(stringByRotating(u"ABC", -2147483647 - 1), stringByRotating(u"ABC", -2147483648 % 26));
    const NSString text = u"abc";
    EXPECT_TRUE(stringByRotating(text, 52).isIdenticalTo(text));
}

} // namespace
} // namespace kelvo
