#include "text/StringLines.h"

#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using Lines = std::vector<std::u16string>;

TEST(StringLinesTest, linesAndTheirFeeds) {
    const std::tuple<const char*, NSString, Lines, NSString> rows[] = {
        {"nil", nullptr, {}, nullptr},
        {"empty", u"", {}, u""},
        {"no end", u"abc", {u"abc"}, u""},
        {"end at the end begins no line", u"a\nb\n", {u"a\n", u"b\n"}, u"\n"},
        {"every end",
         u"\fa\nb\rc\u2028d\u2029e\u0003f\uFFFCg",
         {u"\f", u"a\n", u"b\r", u"c\u2028", u"d\u2029", u"e\u0003", u"f\uFFFC", u"g"},
         u""},
        {"CR LF is one, LF CR two", u"a\r\nb\n\rc", {u"a\r\n", u"b\n", u"\r", u"c"}, u""},
        {"U+FEFF ends no line but is a feed", u"a\uFEFFb\uFEFF", {u"a\uFEFFb\uFEFF"}, u"\uFEFF"},
        {"U+000B and U+0085 are neither", u"a\u000Bb\u0085", {u"a\u000Bb\u0085"}, u""},
        {"only feeds", u"\r\n\uFEFF\u0003", {u"\r\n", u"\uFEFF\u0003"}, u"\r\n\uFEFF\u0003"},
        {"a run at the end", u"\na \n\n", {u"\n", u"a \n", u"\n"}, u"\n\n"},
    };
    for (const auto& [name, text, expected, feed] : rows) {
        SCOPED_TRACE(name);
        const NSArray found = lines(text);
        EXPECT_EQ(found.isNil(), text.isNil());
        Lines units;
        for (const Value& line : found)
            units.emplace_back(line.string().characters());
        EXPECT_EQ(units, expected);
        EXPECT_EQ(feedOfLine(text), feed);
        EXPECT_EQ(hasFeedOfLine(text), !feed.isEmpty());
    }
}

TEST(StringLinesTest, everyUnitThatIsAFeed) {
    std::u16string found;
    for (unsigned code = 0; code <= 0xFFFF; ++code)
        if (isFeedCharacter(static_cast<char16_t>(code)))
            found.push_back(static_cast<char16_t>(code));
    EXPECT_EQ(found, u"\u0003\u000A\u000C\u000D\u2028\u2029\uFEFF\uFFFC");
}

TEST(StringLinesTest, paragraphsOfWrappedLines) {
    const std::tuple<const char*, NSString, NSString, NSString> rows[] = {
        {"paragraphs", u"a\nb\n\nc", nullptr, u"a b\n\nc"},
        {"white ends of lines vanish", u"  a\t\n\u00A0b \n", nullptr, u"a b"},
        {"a blank last line ends once", u"a\nb\n\n", nullptr, u"a b\n"},
        {"further blank lines vanish", u"\n \n\na\n\n\n\nb", nullptr, u"a\n\nb"},
        {"a blank line with its own end", u"a\r\n \r\nb\r\n", nullptr, u"a\r\n\r\nb"},
        {"blank without an end, at the end", u"a\n  ", nullptr, u"a"},
        {"quote marks", u"> a\n> b\n>\n> c", u">", u"a b\n\nc"},
        {"U+0003 is no white space", u"a\u0003b", nullptr, u"a\u0003 b"},
        {"a line that removing makes blank", u"a\n\u0003b", u"\u0003", u"a\u0003\u0003b"},
        {"feeds before the end are doubled too", u"a\n\uFEFF\nb", u"\uFEFF", u"a\uFEFF\n\uFEFF\nb"},
        {"inner spaces", u"a  b\t\tc\n d", nullptr, u"a b\tc d"},
        {"all blank", u" \n\n", nullptr, u""},
    };
    for (const auto& [name, text, characters, expected] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(reformattedStringByRemovingCharactersOfString(text, characters), expected);
    }
    for (const NSString& text : {NSString(), NSString(u""), NSString(u"a b")})
        EXPECT_TRUE(reformattedStringByRemovingCharactersOfString(text, u"x").isIdenticalTo(text));
}

} // namespace
} // namespace kelvo
