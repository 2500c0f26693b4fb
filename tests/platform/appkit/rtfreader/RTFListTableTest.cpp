#include "platform/appkit/rtfreader/RTFListTable.h"

#include "platform/appkit/rtfreader/RTFScanner.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

/// Applies words, as they would stand in the source.
template <typename Table>
void applyWords(Table& table, std::string_view source) {
    RTFScanner scanner(source);
    for (RTFToken token = scanner.next(); token.kind != RTFToken::Kind::end; token = scanner.next())
        table.apply(token);
}

std::string formatOf(const NSTextList& list) {
    const std::string enclosing = list.enclosingNumbersFormat.UTF8String();
    return (enclosing.empty() ? "" : enclosing + " + ") + list.markerFormat.UTF8String() + '@' +
           std::to_string(list.startingItemNumber);
}

/// The lists at a place from the outermost on.
std::string formatsAt(RTFListTable& table, std::int32_t number, int level) {
    std::string formats;
    for (const auto& list : table.listsOf(number, level))
        formats += (formats.empty() ? "" : " ") + formatOf(*list);
    return formats;
}

TEST(RTFListTableTest, Formats) {
    const std::tuple<const char*, int, int, std::u16string_view, const char*> rows[] = {
        {"numbers", 0, 0, u"\x02\0.;"sv, "{decimal}."},
        {"upper Roman", 1, 0, u"\x01\0"sv, "{upper-roman}"},
        {"lower Roman", 2, 0, u"\x01\0"sv, "{lower-roman}"},
        {"upper case", 3, 0, u"\x01\0"sv, "{upper-alpha}"},
        {"lower case", 4, 0, u"\x01\0"sv, "{lower-alpha}"},
        {"kinds that formats cannot say", 22, 0, u"\x01\0"sv, "{decimal}"},
        {"no kind", 255, 0, u"\x03(\0)"sv, "()"},
        {"a bullet", 23, 0, u"\x01\uF0B7;"sv, "{disc}"},
        {"a bullet of its own", 23, 0, u"\x01\u2605"sv, "\u2605"},
        {"bullets of two signs", 23, 0, u"\x02--"sv, "--"},
        {"text on both sides", 0, 0, u"\x03No \0:"sv, "No {decimal}:"},
        {"text without a number", 0, 0, u"\x04Part"sv, "Part"},
        {"no text", 0, 0, u""sv, ""},
        {"the number of the outer level", 4, 1, u"\x04\0.\1)"sv, "{1}. + {lower-alpha})"},
        {"numbers of outer levels", 0, 2, u"\x05\0-\1-\2"sv, "{1}-{2}- + {decimal}"},
        {"two signs between the numbers", 0, 1, u"\x04\0 (\1)"sv, "{1} ( + {decimal})"},
        {"a dot that separates nothing", 0, 1, u"\x02.\1"sv, ".{decimal}"},
        {"text before the numbers of outer levels", 0, 1, u"\x04§\0.\1"sv, "§{1}. + {decimal}"},
        {"an inner level's number is none here", 0, 0, u"\x03\0.\1"sv, "{decimal}."},
        {"only the number of an outer level", 0, 1, u"\x02\0."sv, "."},
    };
    for (const auto& [name, kind, innermost, text, format] : rows) {
        RTFListTable table;
        table.beginList();
        for (int level = 0; level <= innermost; ++level)
            applyWords(table, "\\listlevel");
        applyWords(table, "\\levelnfc9\\levelnfcn" + std::to_string(kind));
        table.setText(text);
        applyWords(table, "\\listid1\\listoverride\\listid1\\ls1");
        EXPECT_EQ(formatOf(*table.listsOf(1, innermost).back()), std::string(format) + "@1") << name;
    }
}

TEST(RTFListTableTest, Overrides) {
    RTFListTable table;
    const auto beginLevel = [&table](std::string_view words, std::u16string_view text) {
        applyWords(table, words);
        table.setText(text);
    };
    table.setText(u"\1\0"sv); // Belongs to nothing.
    table.beginList();
    beginLevel("\\listlevel\\levelnfc0\\levelstartat3", u"\2\0.;"sv);
    beginLevel("\\listlevel\\levelnfc4\\levelstartat5", u"\2\1);"sv);
    applyWords(table, "\\listid7\\ls9");
    table.beginList();
    beginLevel("\\listlevel\\levelnfc23", u"\1o;"sv);
    table.setMarker(u"<{circle}>");
    beginLevel("\\listlevel\\levelnfc0", u"\6§\0.(\1);"sv);
    table.setMarker(u"({decimal})");
    beginLevel("\\listlevel\\levelnfc0", u"\3\0.\2;"sv);
    table.setMarker(u"<{decimal}");
    applyWords(table, "\\listid8");
    table.beginList();
    beginLevel("\\listlevel\\levelnfc1", u"\1\0;"sv);
    applyWords(table, "\\listid7");
    applyWords(table, "\\listoverride\\listid7\\ls1\\listoverride\\listid7\\lfolevel\\lfolevel\\listoverrides"
                      "tartat\\levelstartat9\\ls2");
    applyWords(table, "\\listoverride\\listid7");
    beginLevel("\\lfolevel\\listoverrideformat\\listlevel\\levelnfc2", u"\1\0;"sv);
    applyWords(table,
               "\\ls3\\listoverride\\listid8\\ls4\\listoverride\\listid6\\ls5\\listoverride\\listid8\\ls1");
    const auto expect = [&table](std::int32_t number, int level, const char* formats, const char* name) {
        EXPECT_EQ(formatsAt(table, number, level), formats) << name;
    };
    expect(1, 0, "{decimal}.@3", "the first of two lists and of two overrides with one number");
    expect(1, 1, "{decimal}.@3 {lower-alpha})@5", "an inner level");
    expect(2, 1, "{decimal}.@3 {lower-alpha})@9", "another start for the second level");
    expect(3, 1, "{lower-roman}@3 {lower-alpha})@5", "another format, and the start that it leaves");
    expect(4, 0, "<{circle}>@1", "a marker of the platform");
    expect(5, 0, "", "an override of no list");
    expect(9, 0, "", "numbers are given by overrides");
    expect(1, -1, "{decimal}.@3", "a level below the first");
    expect(4, 3, "<{circle}>@1 §{1}. + ({decimal})@1 <{decimal}@1 @1",
           "such markers behind numbers, in the text and not; a level not defined");
    EXPECT_EQ(table.listsOf(1, 99).size(), std::size_t{RTFListTable::levelCount});
    EXPECT_EQ(table.listsOf(1, 0)[0], table.listsOf(1, 8)[0]) << "the same object";
    EXPECT_NE(table.listsOf(2, 0)[0], table.listsOf(1, 0)[0]) << "overrides count by themselves";
}

TEST(RTFListTableTest, LevelsPastTheLast) {
    RTFListTable table;
    table.beginList();
    for (int level = 0; level < RTFListTable::levelCount; ++level)
        applyWords(table, "\\listlevel\\levelstartat" + std::to_string(level));
    applyWords(table, "\\listlevel\\levelstartat77\\listid1\\listoverride\\listid1\\ls1");
    EXPECT_EQ(formatsAt(table, 1, 8), "@0 @1 @2 @3 @4 @5 @6 @7 @8");
}

TEST(RTFListTableTest, OldLists) {
    const char* const rows[][3] = {
        {"numbers", "\\pndec\\pnstart4", "({decimal})@4"},
        {"lower case", "\\pnlcltr", "({lower-alpha})@1"},
        {"upper case", "\\pnucltr", "({upper-alpha})@1"},
        {"lower Roman", "\\pnlcrm", "({lower-roman})@1"},
        {"upper Roman", "\\pnucrm", "({upper-roman})@1"},
        {"a bullet", "\\pnlvlblt", "()@1"},
        {"the last kind counts", "\\pnlvlblt\\pndec", "({decimal})@1"},
        {"a paragraph of an item without a marker", "\\pnlvlcont", "none"},
        {"no kind", "\\pnstart4", "none"},
    };
    for (const auto& [name, words, format] : rows) {
        RTFOldList old;
        applyWords(old, words);
        old.setTextBefore(u"(");
        old.setTextAfter(u")");
        const std::optional<NSTextList> list = old.list();
        EXPECT_EQ(list ? formatOf(*list) : "none", format) << name;
    }
}

} // namespace
} // namespace kelvo
