#include "platform/pdfkit/engine/StyleAlignment.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace kelvo {
namespace {

/// Letters by their styles: the words of a list have the styles 0, 1, 2, …
StyledLetters words(const std::vector<std::u32string>& list) {
    StyledLetters letters;
    for (std::size_t style = 0; style < list.size(); ++style) {
        for (const char32_t character : list[style])
            letters.add(character, static_cast<std::uint32_t>(style));
    }
    return letters;
}

std::string describe(const std::vector<StyleRun>& runs) {
    std::string text;
    for (const StyleRun& run : runs)
        text += (text.empty() ? "" : " ") + std::to_string(run.length) + ":" + std::to_string(run.style);
    return text;
}

TEST(StyleAlignmentTest, StylesFindTheirLetters) {
    struct Row {
        const char* name;
        std::u16string text;
        std::vector<std::u32string> words;
        const char* runs;
    };
    const Row rows[] = {
        {"no text", u"", {U"a"}, ""},
        {"no styles", u"some text", {}, "9:0"},
        {"blanks and marks count nowhere", u"\u202Aab \u202C\n cd", {U"a b\u202A", U"c\u00A0d"}, "7:0 2:1"},
        {"pairs", u"\U0001F600\U0001F601", {U"\U0001F600", U"\U0001F601"}, "2:0 2:1"},
        {"text that the styles lack", u"Name: Alice and so on", {U"Name:", U"and so on"}, "12:0 9:1"},
        {"at the beginning", u"Alice and so on", {U"xxx", U"and so on"}, "15:1"},
        {"styles of text that is not there",
         u"hyphenated words",
         {U"hyphen-", U"ated", U"words"},
         "6:0 5:1 5:2"},
        {"another order", u"second column, first column", {U"first column", U"second column,"}, "15:1 12:0"},
        {"a letter that misleads",
         u"a1b first word then second word",
         {U"ab", U"first word then", U"second word"},
         "4:0 16:1 11:2"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(describe(alignedStyles(row.text, words(row.words))), row.runs) << row.name;
}

TEST(StyleAlignmentTest, TextsThatNeverMeetTakeNoSquareOfTheirLength) {
    constexpr std::size_t count = 400'000;
    StyledLetters letters;
    std::u16string text;
    for (std::size_t index = 0; index < count; ++index) {
        letters.add(index % 7 == 6 ? U'b' : U'a', 1);
        text += index % 8 == 7 ? u'c' : u'a';
    }
    std::size_t length = 0;
    for (const StyleRun& run : alignedStyles(text, letters))
        length += run.length;
    EXPECT_EQ(length, count);
}

} // namespace
} // namespace kelvo
