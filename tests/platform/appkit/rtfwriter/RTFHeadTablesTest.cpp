#include "platform/appkit/rtfwriter/RTFHeadTables.h"

#include "platform/appkit/rtfwriter/RTFOutput.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvo {
namespace {

template <typename Table>
std::string written(const Table& table) {
    RTFOutput output;
    table.write(output);
    return output.takeBytes();
}

TEST(RTFHeadTablesTest, Fonts) {
    RTFFontNumbers fonts;
    const auto number = [&fonts](const char16_t* family, bool isFixedPitch = false) {
        NSFont font;
        font.familyName = family;
        font.isFixedPitch = isFixedPitch;
        font.isBold = font.pointSize == 12;
        return fonts.numberOfFont(font);
    };
    EXPECT_EQ(number(u"Helvetica"), 0);
    EXPECT_EQ(number(u""), 0) << "no name is the default's";
    EXPECT_EQ(number(u"Times New Roman"), 1);
    EXPECT_EQ(number(u"Helvetica", true), 2);
    EXPECT_EQ(number(u"A;B"), 3);
    EXPECT_EQ(number(u"Times New Roman"), 1);
    EXPECT_EQ(number(u"Helvetica", true), 2);
    EXPECT_EQ(written(fonts),
              "{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica;\\f1\\froman\\fcharset0 Times New "
              "Roman;\\f2\\fmodern\\fprq1\\fcharset0 Helvetica;\\f3\\fnil\\fcharset0 A,B;}\n");
}

TEST(RTFHeadTablesTest, Colors) {
    RTFColorNumbers colors;
    EXPECT_EQ(colors.numberOfColor(std::nullopt), 0);
    EXPECT_EQ(colors.numberOfColor(NSColor{1, 1, 1, 1}), 1) << "white is in every document";
    EXPECT_EQ(colors.numberOfColor(NSColor{0, 0.5F, 1, 1}), 2);
    EXPECT_EQ(colors.numberOfColor(NSColor{0, 0.5F, 1, 0.25F}), 3);
    EXPECT_EQ(colors.numberOfColor(NSColor{0, 0.500001F, 1, 1}), 2) << "nearer than is kept";
    EXPECT_EQ(colors.numberOfColor(NSColor{-1, 9, NAN, 1}), 4);
    EXPECT_EQ(written(colors), "{\\colortbl;\\red255\\green255\\blue255;\\red0\\green128\\blue255;"
                               "\\red0\\green128\\blue255;\\red0\\green255\\blue0;}\n"
                               "{\\*\\expandedcolortbl;;\\cssrgb\\c0\\c50000\\c100000;"
                               "\\cssrgb\\c0\\c50000\\c100000\\c25000;\\cssrgb\\c0\\c100000\\c0;}\n");
}

std::shared_ptr<const NSTextList> list(const char16_t* format, int start = 1) {
    return std::make_shared<const NSTextList>(NSTextList{format, start});
}

std::string placeOf(RTFListNumbers& lists, const RTFListNumbers::Path& path) {
    const RTFListNumbers::Place place = lists.placeOfLists(path, {});
    return std::to_string(place.list) + '/' + std::to_string(place.level);
}

TEST(RTFHeadTablesTest, PlacesOfLists) {
    RTFListNumbers lists;
    EXPECT_EQ(written(lists), "");
    const auto outer = list(u"{decimal}.");
    const auto inner = list(u"{disc}");
    EXPECT_EQ(placeOf(lists, {}), "0/0");
    EXPECT_EQ(placeOf(lists, {nullptr}), "0/0");
    EXPECT_EQ(placeOf(lists, {outer}), "1/0");
    EXPECT_EQ(placeOf(lists, {outer, nullptr, inner}), "1/1");
    EXPECT_EQ(placeOf(lists, {outer}), "1/0");
    const auto alike = list(u"{disc}");
    EXPECT_EQ(placeOf(lists, {outer, alike}), "1/1") << "an equal list in the next item";
    EXPECT_EQ(placeOf(lists, {outer, list(u"{hyphen}")}), "2/1") << "another one there";
    EXPECT_EQ(placeOf(lists, {outer, alike, inner}), "1/2") << "the list that fits is not the last";
    EXPECT_EQ(placeOf(lists, {outer, inner}), "3/1") << "an equal list in the same item, which counts anew";
    EXPECT_EQ(placeOf(lists, {list(u"{decimal}.")}), "4/0") << "equal and yet not the same list";
    EXPECT_EQ(placeOf(lists, RTFListNumbers::Path(20, inner)), "5/8") << "no more levels";
}

TEST(RTFHeadTablesTest, Lists) {
    RTFListNumbers lists;
    const auto outer = list(u"({upper-roman}).", 7);
    NSTextList numbered{u"{octal}{x", 1};
    numbered.enclosingNumbersFormat = u"{1}.{2}";
    const auto inner = std::make_shared<const NSTextList>(numbered);
    lists.placeOfLists({outer, inner, list(u"{lower-greek}")}, {1000, -200});
    lists.placeOfLists({outer}, {500, 40});
    lists.placeOfLists({outer, inner}, {1440, -360});
    lists.placeOfLists({outer}, {9, 9}); // The first indents of a level stay.
    lists.placeOfLists({list(u"{disc}", 3)}, {});
    const std::string rest = "\\leveljc0\\leveljcn0\\levelfollow0\\levelstartat";
    EXPECT_EQ(written(lists),
              "{\\*\\listtable{\\list\\listtemplateid1\\listhybrid{\\listlevel\\levelnfc1\\levelnfcn1" +
                  rest +
                  "7\\levelspace360\\levelindent0{\\*\\levelmarker "
                  "(\\{upper-roman\\}).}{\\leveltext\\leveltemplateid1\\'04(\\'00).;}{\\levelnumbers\\'02;}"
                  "\\fi40\\li500\\lin500 }{\\listlevel\\levelnfc0\\levelnfcn0" +
                  rest +
                  "1\\levelspace360\\levelindent0{\\*\\levelmarker "
                  "\\{octal\\}\\{x}{\\leveltext\\leveltemplateid2\\'08\\'00.\\{2\\}\\'01\\{x;}{"
                  "\\levelnumbers\\'01\\'06;}\\fi-"
                  "360\\li1440\\lin1440 }{\\listlevel\\levelnfc0\\levelnfcn0" +
                  rest +
                  "1\\levelspace360\\levelindent0{\\*\\levelmarker "
                  "\\{lower-greek\\}}{\\leveltext\\leveltemplateid3\\'01\\'02;}{\\levelnumbers\\'01;}\\fi-"
                  "200\\li1000\\lin1000 }{\\listname ;}\\listid1}\n"
                  "{\\list\\listtemplateid2\\listhybrid{\\listlevel\\levelnfc23\\levelnfcn23" +
                  rest +
                  "3\\levelspace360\\levelindent0{\\*\\levelmarker "
                  "\\{disc\\}}{\\leveltext\\leveltemplateid4\\'01\\'95;}{\\levelnumbers;}\\fi0\\li0\\lin0 "
                  "}{\\listname ;}\\listid2}\n}\n"
                  "{\\*\\listoverridetable{\\listoverride\\listid1\\listoverridecount0\\ls1}{"
                  "\\listoverride\\listid2\\listoverridecount0\\ls2}}\n");
    RTFListNumbers longOnes;
    longOnes.placeOfLists(
        {list((std::u16string(300, u'<') + u"{decimal}" + std::u16string(300, u'>')).c_str())}, {});
    EXPECT_NE(written(longOnes).find("\\'85<"), std::string::npos) << "lengths are bytes";
}

} // namespace
} // namespace kelvo
