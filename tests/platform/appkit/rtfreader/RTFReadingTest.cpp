#include "platform/appkit/rtfreader/RTFReading.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <optional>
#include <span>

namespace kelvo {
namespace {

using namespace NSAttributedStringKitAdditions;

NSAttributedString read(std::string_view source, NSDictionary* attributes = nullptr) {
    return initWithRTF_documentAttributes(NSData::dataWithBytes(source), attributes);
}

/// The text in braces with a head that names fonts: 0 plain, 1 Cyrillic, 2 Japanese, 3 Symbol, 4 Wingdings.
std::string document(std::string_view body) {
    return "{\\rtf1\\ansi\\ansicpg1252{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}{\\f1\\fcharset204 "
           "Arial;}{\\f2\\fcharset128 Mincho;}{\\f3\\fcharset2 Symbol;}{\\f4\\fcharset2 Wingdings;}}" +
           std::string(body) + "}";
}

std::string textOf(std::string_view body) {
    return read(document(body)).string().UTF8String();
}

TEST(RTFReading, Text) {
    const char* const rows[][3] = {
        {"line ends mean nothing except after a backslash", "a\r\nb\\\r\nc\\\nd\\par e", "ab\nc\nd\ne"},
        {"escapes", "\\{\\}\\\\\\~\\_\\-\\tab\\line\\page x", "{}\\\u00A0\u2011\u00AD\t\u2028\fx"},
        {"bytes of the code page", "\\'e4\xE4\\'80", "ää€"},
        {"bytes of a font's charset", "\\f1\\'d3{\\f0\\'d3}\\'e2", "УÓв"},
        {"two bytes a character, across escapes", "\\f2\\'82\\'6c\\'83\\\\\\'83^\\'82\r\n\\'72", "ＭソタＳ"},
        {"half a character", "\\f2\\'96\\tab", "–\t"},
        {"signs", "\\f3 ab\\'b7\\u-4031?{\\f4\\'fc\\u61607?}", "αβ•Α✓▪"},
        {"letters that are signs", "\\f4 J!^\\'82\\u61514?", "☺\uF021♈②☺"},
        {"Unicode and its stand-ins",
         "\\u8364?\\uc2\\u8364ab{\\uc0\\u8364}\\u-10179\\'3f?\\u-8704\\'3f\\'3fz", "€€€😀z"},
        {"words of characters",
         "\\emspace\\enspace\\qmspace\\lquote\\rquote\\ldblquote\\rdblquote\\bullet\\emdash\\endash\\ltrmark"
         "\\rtlmark\\zwj\\zwnj\\zwbo\\zwnbo\\lbr1\\softline\\column",
         "\u2003\u2002\u2005‘’“”•—–\u200E\u200F\u200D\u200C\u200B\u2060\u2028\u2028\f"},
        {"a group is no stand-in", "\\uc2\\u8364{ab}c", "€abc"},
        {"a stand-in ends with its group", "\\uc4{\\u8364 a}b", "€b"},
        {"a number past 16 bits is one character", "\\u128512?", "😀"},
        {"the last character, and a number past it", "\\u1114111?\\u1114112?x", "\U0010FFFFx"},
        {"stand-ins that are words", "\\u8226\\bullet\\u8211\\endash x\\u8364\\b y", "•–x€y"},
        {"unknown words and groups", "a\\unknown1 b{\\*\\unknown x{y}}{\\unknown c}\\*\\b d", "abcd"},
        {"binary data with braces in it", "a{\\*\\unknown\\bin3 }}}}b{\\bin2 {{}c\\bin-1 d", "abcd"},
        {"headers, comments, hidden and deleted text",
         "a{\\header h}{\\footerl f}{\\*\\atnid x}{\\*\\annotation n}{\\v v\\par w\\par}{\\deleted d}b",
         "a\nb"},
        {"index entries and bookmarks", "a{\\xe {\\v x}}{\\*\\bkmkstart m}{\\tc t}b", "ab"},
        {"one of two forms of a text, and of none", "{\\upr}{a}{\\upr{ansi}{\\*\\ud{\\u8364 ?}}}", "a€"},
        {"notes after the text",
         "a{\\super\\chftn{\\footnote\\pard {\\super\\chftn} n}}b{\\footnote m}\\par c", "a1b\nc\n1 n\nm\n"},
        {"frames after their paragraph",
         "a{\\shp{\\*\\shpinst{\\sp{\\sn x}{\\sv y}}{\\shptxt f\\par g}}{\\shprslt f}}b\\par c",
         "ab\nf\ng\nc"},
        {"frames at the end", "a{\\shptxt f}", "a\nf\n"},
        {"frames after the end of a paragraph", "a\\par{\\shptxt f}", "a\nf\n"},
        {"markers of lists", "{\\listtext\t\\bullet\t}a\\par{\\pntext 1.\\tab}{\\*\\pn\\pnlvlbody\\pndec}b",
         "\t•\ta\n\t1.\tb"},
        {"markers set apart otherwise", "{\\listtext  {\\b 1}. }a\\par{\\listtext\\'b7}b\\par{\\listtext}c",
         "\t1.\ta\n\t·\tb\nc"},
        {"objects show their results", "{\\object{\\*\\objdata 00}{\\result r}}", "r"},
        {"signs as fields", "{\\field{\\*\\fldinst SYMBOL 97 \\\\f \"Symbol\"}{\\fldrslt\\f3 x}}", "α"},
        {"buttons",
         "{\\field{\\*\\fldinst{MACROBUTTON X  [Click {\\b here}] }}{\\fldrslt y}}{\\field{\\*\\fldinst "
         "MACROBUTTON}{\\fldrslt z}}",
         "[Click here]z"},
        {"line ends of fields that mean nothing", "a\\u13\\'0db\\u10?c{\\cocoartf1\\u13?d}", "abc\rd"},
        {"a document within a document", "a{\\rtf1{\\fonttbl{\\f9 X;}}b}c", "abc"},
        {"nothing after the end", "a}b", "a"},
    };
    for (const auto& [name, body, text] : rows)
        EXPECT_EQ(textOf(body), text) << name;
    EXPECT_EQ(read("\xEF\xBB\xBF \r\n{\\rtf1 a}").string(), u"a") << "after a byte-order mark and blanks";
}

/// The runs, each as its text in quotes and what differs from plain text.
std::string runsOf(const NSAttributedString& text) {
    std::ostringstream out;
    const auto color = [&](const char* name, const std::optional<NSColor>& value) {
        if (value)
            out << ' ' << name << '=' << value->red << ',' << value->green << ',' << value->blue << ','
                << value->alpha;
    };
    const auto number = [&](const char* name, double value) {
        if (value != 0)
            out << ' ' << name << '=' << value;
    };
    const auto length = [&](const std::optional<NSTextBlockLength>& value) {
        if (value)
            out << value->value << (value->unit == NSTextBlockLength::Unit::percent ? "%" : "pt");
        else
            out << "auto";
    };
    for (const auto& [range, attributes] : text.runs()) {
        std::string units = text.string().substringWithRange(range).UTF8String();
        std::ranges::replace(units, '\n', '|');
        out << (out.tellp() > 0 ? "; '" : "'") << units << "'";
        if (attributes->font.familyName != NSString(u"Arial"))
            out << ' ' << attributes->font.familyName.UTF8String();
        number("size", attributes->font.pointSize == 12 ? 0 : attributes->font.pointSize);
        out << (attributes->font.isBold ? " bold" : "") << (attributes->font.isItalic ? " italic" : "")
            << (attributes->font.isFixedPitch ? " fixed" : "");
        color("color", attributes->foregroundColor);
        color("behind", attributes->backgroundColor);
        number("underline", attributes->underlineStyle);
        number("strike", attributes->strikethroughStyle);
        number("super", attributes->superscript);
        number("up", attributes->baselineOffset);
        number("kern", attributes->kern);
        if (!attributes->link.isNil())
            out << " link=" << attributes->link.UTF8String();
        if (attributes->attachment) {
            const NSFileWrapper& file = *attributes->attachment->fileWrapper;
            out << " file=" << file.preferredFilename().UTF8String() << '/'
                << file.regularFileContents().length();
            number("width", attributes->attachment->displaySize.width);
            number("height", attributes->attachment->displaySize.height);
        }
        const NSParagraphStyle& style = attributes->style();
        number("align", static_cast<int>(style.alignment) - 4);
        number("direction", static_cast<int>(style.baseWritingDirection) + 1);
        const std::pair<const char*, double> lengths[] = {
            {"first", style.firstLineHeadIndent}, {"head", style.headIndent},
            {"tail", style.tailIndent},           {"before", style.paragraphSpacingBefore},
            {"after", style.paragraphSpacing},    {"multiple", style.lineHeightMultiple},
            {"minimum", style.minimumLineHeight}, {"maximum", style.maximumLineHeight},
            {"spacing", style.lineSpacing},       {"heading", style.headerLevel},
            {"tabs", style.defaultTabInterval},
        };
        for (const auto& [name, value] : lengths)
            number(name, value);
        for (std::size_t edge = 0; edge < style.borders.size(); ++edge)
            if (const NSTextBlockBorder& border = style.borders[edge]; border.width > 0) {
                out << " line" << edge << '=' << border.width;
                number("apart", style.borderSpacing[edge]);
                color("in", border.color);
            }
        for (const NSTextTab& tab : style.tabStops)
            out << " tab=" << tab.location << '/' << static_cast<int>(tab.type);
        for (const auto& list : style.textLists)
            out << " list=" << list->markerFormat.UTF8String() << '@' << list->startingItemNumber;
        for (const auto& block : style.textBlocks) {
            out << " cell=" << block->startingRow << ',' << block->startingColumn;
            if (block->rowSpan > 1 || block->columnSpan > 1)
                out << '+' << block->rowSpan << ',' << block->columnSpan;
            out << '/' << block->table->numberOfColumns << ':';
            length(block->width);
        }
    }
    return out.str();
}

using Row = std::tuple<const char*, std::string, const char*>;

void expectRuns(std::span<const Row> rows) {
    for (const auto& [name, body, runs] : rows)
        EXPECT_EQ(runsOf(read(document(body))), runs) << name;
}

TEST(RTFReading, Characters) {
    const Row rows[] = {
        {"switches", "{\\b a}\\b\\i b\\b0 c\\i0 d\\plain\\fs25 e\\fsmilli10700 f",
         "'a' bold; 'b' bold italic; 'c' italic; 'd'; 'e' size=12.5; 'f' size=10.7"},
        {"lines under and through",
         "\\ul a\\uldb b\\ulth c\\ulw d\\ulnone\\strike e\\strike0\\striked1 f\\striked0 g",
         "'a' underline=1; 'b' underline=9; 'c' underline=2; 'd' underline=1; 'e' strike=1; 'f' strike=9; "
         "'g'"},
        {"up and down", "\\super a\\super2 b\\sub c\\nosupersub\\up4 d\\dn6 e\\up0\\expnd4 f\\expndtw10 g",
         "'a' super=1; 'b' super=2; 'c' super=-1; 'd' up=2; 'e' up=-3; 'f' kern=1; 'g' kern=0.5"},
        {"capitals",
         "{\\caps a\\'df{\\caps0 a}}{\\fs20\\scaps b1 B\\'e9\\u1073?B\\scaps0 c}\\caps\\caps0 "
         "d{\\scaps\\caps0 e}",
         "'ASSa'; 'B' size=8; '1 B' size=10; '\u00C9\u0411' size=8; 'Bc' size=10; 'd'; 'E' "
         "size=9.6"},
        {"colours",
         "{\\colortbl;\\red255\\green51\\blue0;;\\red0\\green0\\blue255;}{\\*\\expandedcolortbl;;"
         "\\cssrgb\\c0\\c50000\\c100000\\c20000;}\\cf1 a\\cf2\\cb3 b\\cf3\\highlight0 c\\cf0 d\\cf9 e",
         "'a' color=1,0.2,0,1; 'b' color=0,0.5,1,0.2 behind=0,0,1,1; 'c' color=0,0,1,1; 'de'"},
        {"grounds of paragraphs, where the text needs them",
         "{\\colortbl;\\red255\\green255\\blue255;\\red153;}\\cbpat2\\cf1 a\\cf0 b{\\cf1\\cb1 c}\\par"
         "\\pard\\cf1 d\\par\\cbpat1 e\\par\\cf2\\cbpat2 f",
         "'a' color=1,1,1,1 behind=0.6,0,0,1; 'b'; 'c' color=1,1,1,1 behind=1,1,1,1; '|'; 'd|e|' "
         "color=1,1,1,1; 'f' color=0.6,0,0,1"},
        {"colours that are stated in part",
         "{\\colortbl;\\red255;;\\blue255;}{\\*\\expandedcolortbl;\\csgray\\c50000\\c25000;;\\cssrgb\\c1;}"
         "\\cf1 a\\cf2 b\\cf3 c",
         "'a' color=0.5,0.5,0.5,0.25; 'b'; 'c' color=0,0,1,1"},
        {"a pitch, and a font that text has from the start",
         "{\\fonttbl{\\f7\\fprq1 Menlo;}{\\f8\\fprq2 X;}}a\\deff7 b{\\f8 c}\\plain d",
         "'a'; 'b' Menlo fixed; 'c' X; 'd' Menlo fixed"},
        {"names of fonts",
         "{\\fonttbl\\f7\\fnil Menlo-BoldItalic;\\f8\\fmodern Courier;{\\f9\\fcharset238{\\*\\fname "
         "Q;}TimesNewRomanPS-BoldMT;}}\\f7 a\\f8 b\\f9 c\\f99 d",
         "'a' Menlo bold italic; 'b' Courier fixed; 'c' Times New Roman bold; 'd' Helvetica"},
        {"formats for text that runs to the left", "\\rtlch\\ab\\afs40\\ltrch\\b0 a{\\ltrch\\b\\rtlch b}",
         "'a'; 'b' size=20 bold"},
        {"a format takes the place of the one for text that runs to the left",
         "\\rtlch\\af3\\afs40\\ab\\ai\\f0\\fs24\\b0\\i0 a", "'a'"},
        {"links",
         "{\\field{\\*\\fldinst{HYPERLINK \"a\\\\\\\\b\" \\\\o \"tip\"}}{\\fldrslt{\\b x\\par "
         "y}{\\field{\\*\\fldinst PAGEREF z}{\\fldrslt 4}}}}{\\field{\\*\\fldinst HYPERLINK \\\\l "
         "\"m\"}{\\fldrslt n}} o",
         "'x|y' bold link=a\\b; '4' link=a\\b; 'n' link=#m; ' o'"},
    };
    expectRuns(rows);
}

TEST(RTFReading, Paragraphs) {
    const Row rows[] = {
        {"the words at its end hold for all of a paragraph", "a\\qc b\\par\\pard c{\\qr d}\\par",
         "'ab|' align=-2; 'cd|'"},
        {"words of the last one, without an end", "\\pard\\qj\\rtlpar a", "'a' align=-1 direction=2"},
        {"notes stand where they say, not as their anchors do",
         "\\qr a{\\footnote b}\\par\\qc{\\footnote\\qj{c\\par d}}", "'a|' align=-3; 'b|'; 'c|d|' align=-1"},
        {"lengths", "\\li720\\fi-360\\ri200\\sb20\\sa40\\slleading60\\pardeftab400\\outlinelevel2 a",
         "'a' first=18 head=36 tail=-10 before=1 after=2 spacing=3 heading=3 tabs=20"},
        {"no space between neighbours of one style",
         "\\sb20\\sa40\\s1\\contextualspace a\\par b\\par c\\par\\s2 d\\par\\contextualspace0 e",
         "'a|' before=1; 'b|'; 'c|' after=2; 'd|e' before=1 after=2"},
        {"no space between neighbours, but between cells",
         "\\sb20\\sa40\\contextualspace\\trowd\\cellx1000\\cellx2000\\intbl a\\cell b\\par c\\cell\\row",
         "'a|' before=1 after=2 cell=0,0/2:50pt; 'b|' before=1 cell=0,1/2:50pt; 'c|' after=2 "
         "cell=0,1/2:50pt"},
        {"heights of lines",
         "\\sl360\\slmult1 a\\par\\slmult0\\slmaximum800 b\\par\\sl-240\\slmaximum0 c\\par\\sl0\\slminimum20 "
         "d",
         "'a|' multiple=1.5; 'b|' minimum=18 maximum=40; 'c|' minimum=12 maximum=12; 'd' minimum=1"},
        {"borders",
         "{\\colortbl;\\red255;}\\brdrb\\brdrs\\brdrw20\\brdrcf1\\brsp40 "
         "a\\par\\pard\\box\\brdrdot\\brdrl\\brdrnone "
         "b\\par\\brdrt c{\\brdrw60 d}\\chbrdr\\brdrw80\\par",
         "'a|' line3=1 apart=2 in=1,0,0,1; 'b|cd|' line1=0.5 line2=0.5 line3=0.5"},
        {"borders of rows and of paragraphs in them",
         "\\trowd\\clbrdrb\\brdrs\\brdrw20\\cellx900\\pard\\intbl\\brdrb\\brdrs\\brdrw40\\clbrdrl\\brdrw60 "
         "a\\cell\\row",
         "'a|' line3=2 cell=0,0/1:45pt"},
        {"tabs in whatever order", "\\tqr\\tx400\\tx200\\tqdec\\tx300 a", "'a' tab=10/0 tab=15/3 tab=20/1"},
        {"headings by their styles",
         "{\\stylesheet{Normal;}{\\s3\\sbasedon0 heading 2;}{\\*\\cs4 heading 1;}{\\s5\\outlinelevel0 "
         "x;}{\\s6 y;}}\\s3 a\\par\\s4 b\\par\\s5 c\\par\\s6 d\\par\\s5\\outlinelevel9 d\\par\\pard e",
         "'a|' heading=2; 'b|'; 'c|' heading=1; 'd|d|e'"},
        {"what a style inherits is repeated in the text",
         "{\\stylesheet{\\fs20\\qr Normal;}{\\s4\\sbasedon0\\b x;}}\\s4\\b a", "'a' bold"},
        {"unless the writer leaves it out; later styles, and circles",
         "{\\stylesheet{\\fs20\\qr\\outlinelevel1 Normal;}{\\s4\\sbasedon9\\b x;}{\\*\\cs9\\fs99 c;}"
         "{\\s9\\sbasedon0\\sa40\\i y;}{\\s5\\sbasedon6\\b z;}{\\s6\\sbasedon5\\fs30 w;}}"
         "{\\*\\generator LibreOffice/7}\\intbl\\s4\\i0 a\\par\\itap2\\s4 "
         "b\\par\\nestcell\\cell\\row\\pard\\plain\\s5 c\\s8 d",
         "'a|' size=10 bold align=-3 after=2 heading=2 cell=0,0/1:auto; 'b||' size=10 bold italic align=-3 "
         "after=2 "
         "heading=2 cell=0,0/1:auto cell=0,0/1:auto; '|' size=10 bold italic align=-3 after=2 heading=2 "
         "cell=0,0/1:auto; 'cd' size=15 bold"},
        {"markers look like their paragraphs",
         "{\\*\\generator LibreOffice/7}\\pard\\plain\\fs20{\\listtext\\pard\\plain\\b 1.\\tab}a\\par\\plain "
         "b",
         "'\t' size=10; '1.\t' size=10 bold; 'a|' size=10; 'b'"},
        {"what a style of characters inherits",
         "{\\stylesheet{\\*\\cs4\\i\\fs30\\sbasedon4 c;}{\\*\\cs5\\sbasedon4\\fs20\\fs40 "
         "d;}}{\\*\\generator LibreOffice/7}\\b a{\\cs5\\fs40 b}c{\\cs6 d}",
         "'a' bold; 'b' size=20 bold italic; 'cd' bold"},
        {"lists",
         "{\\*\\listtable{\\list{\\listlevel\\levelnfc0\\levelstartat3{\\*\\levelmarker "
         "(\\{decimal\\})}{\\leveltext\\'01\\'00;}}{\\listlevel\\levelnfc4{\\leveltext\\'04\\'00.\\'01);}}"
         "\\listid7}{\\list{\\listlevel\\levelnfc23{\\leveltext\\'01\\u-3929 "
         "?;}}\\listid8}}{\\*\\listoverridetable{\\listoverride\\listid8\\ls1}{\\listoverride\\listid7{"
         "\\lfolevel\\listoverridestartat\\levelstartat9}\\ls2}}\\ls2 a\\par\\ilvl1 b\\par\\ls1\\ilvl0 "
         "c\\par\\ls3 d",
         "'a|' list=({decimal})@9; 'b|' list=({decimal})@9 list={lower-alpha})@1; 'c|' list={square}@1; 'd'"},
        {"notes have formats of their own", "\\qc a{\\footnote n}b", "'ab|' align=-2; 'n|'"},
        {"lists of the old kind",
         "{\\*\\pn\\pnlvlbody\\pnlcltr\\pnstart2{\\pntxtb (}{\\pntxta )}}a\\par b\\par\\pard "
         "c\\par{\\*\\pn\\pnlvlblt{\\pntxtb\\'b7}}d",
         "'a|b|' list=({lower-alpha})@2; 'c|'; 'd' list={disc}@1"},
    };
    expectRuns(rows);
}

TEST(RTFReading, Tables) {
    const std::string definition = "\\trowd\\cellx1000\\cellx2000 ";
    const Row rows[] = {
        {"rows, then text",
         definition + "\\pard\\intbl a\\par b\\cell c\\cell\\row\\intbl d\\cell\\cell\\row\\pard e",
         "'a|b|' cell=0,0/2:50pt; 'c|' cell=0,1/2:50pt; 'd|' cell=1,0/2:50pt; '|' cell=1,1/2:50pt; 'e'"},
        {"defined after its cells, and not ended", "\\intbl a\\cell b\\cell" + definition + "\\row\\intbl c",
         "'a|' cell=0,0/2:50pt; 'b|' cell=0,1/2:50pt; 'c' cell=1,0/2:50pt"},
        {"frames in cells", definition + "\\intbl a{\\shptxt f}\\cell b\\cell\\row",
         "'a|f|' cell=0,0/2:50pt; 'b|' cell=0,1/2:50pt"},
        {"tables in tables",
         definition + "\\intbl a\\par\\itap2 b\\nestcell "
                      "c\\nestcell{\\*\\nesttableprops\\trowd\\cellx400\\cellx800\\nestrow}{"
                      "\\nonesttables\\par}\\pard\\intbl d\\cell e\\cell\\row",
         "'a|' cell=0,0/2:50pt; 'b|' cell=0,0/2:50pt cell=0,0/2:20pt; 'c|' cell=0,0/2:50pt cell=0,1/2:20pt; "
         "'d|' cell=0,0/2:50pt; 'e|' cell=0,1/2:50pt"},
    };
    expectRuns(rows);
}

TEST(RTFReading, CellLooks) {
    const NSAttributedString text =
        read(document("{\\colortbl;\\red255\\green0\\blue0;}"
                      "\\trowd\\trgaph100\\trpaddb60\\trpaddr40\\trftsWidth2\\trwWidth2500\\trbrdrv\\brdrs\\b"
                      "rdrw30\\clvertalc\\clcbpat1\\clbrdrl\\brdrw40\\brdrs\\brdrcf1\\clbrdrt\\brdrnil\\clpad"
                      "t80\\cellx1000\\cellx2000\\pard\\intbl\\brdrt\\brdrs\\brdrw90 a\\cell b\\cell\\row"));
    const NSTextTableBlock& first = *text.runs()[0].attributes->style().textBlocks.at(0);
    const NSTextTableBlock& second = *text.runs()[1].attributes->style().textBlocks.at(0);
    const NSColor red{1, 0, 0, 1};
    EXPECT_EQ(first.table, second.table);
    EXPECT_EQ(first.table->width, (NSTextBlockLength{50, NSTextBlockLength::Unit::percent}));
    EXPECT_EQ(first.borders, (NSTextTableBlock::Edges<NSTextBlockBorder>{{{2, red}, {}, {1.5, {}}, {}}}));
    EXPECT_EQ(second.borders[0].width, 1.5);
    EXPECT_EQ(first.padding, (NSTextTableBlock::Edges<float>{5, 4, 2, 3}));
    const std::string padded =
        "\\trowd\\clpadl20\\clpadfl3\\clpadt40\\clpadft3\\cellx900\\intbl a\\cell\\row";
    for (const bool isOfPlatform : {false, true}) {
        const NSAttributedString cell = read(document((isOfPlatform ? "\\cocoartf1671" : "") + padded));
        EXPECT_EQ(cell.runs()[0].attributes->style().textBlocks.at(0)->padding[0], isOfPlatform ? 1 : 2);
    }
    EXPECT_EQ(first.verticalAlignment, NSTextBlockVerticalAlignment::middle);
    EXPECT_EQ(first.backgroundColor, red);
    EXPECT_EQ(second.backgroundColor, std::nullopt);
    const NSAttributedString rows = read(document(
        "\\trowd\\trbrdrl\\brdrs\\trcbpat1\\cellx900\\intbl a\\cell\\row\\trowd\\cellx900 b\\cell\\row"));
    EXPECT_EQ(rows.runs()[0].attributes->style().textBlocks.at(0)->borders[0].width, 0.5) << "a hair line";
    EXPECT_EQ(rows.runs()[1].attributes->style().textBlocks.at(0)->borders[0].width, 0) << "of another row";
}

TEST(RTFReading, SharedObjects) {
    const NSAttributedString text = read(
        document("{\\*\\listtable{\\list{\\listlevel\\levelnfc0{\\leveltext\\'01\\'00;}}\\listid7}}{\\*"
                 "\\listoverridetable{\\listoverride\\listid7\\ls1}}\\ls1 a{\\b b}c\\par d{\\b e}\\par\\pard "
                 "f\\par{\\*\\pn\\pnlvlbody\\pndec}g\\par\\qc{\\*\\pn\\pnlvlbody\\pndec}h\\par\\pard "
                 "i\\par{\\*\\pn\\pnlvlbody\\pndec}j"));
    const auto runs = text.runs();
    ASSERT_EQ(runs.size(), 10u);
    EXPECT_EQ(runs[0].attributes, runs[2].attributes) << "equal runs";
    EXPECT_EQ(runs[1].attributes, runs[3].attributes) << "of the next paragraph";
    const auto listOf = [&](std::size_t run) { return runs[run].attributes->style().textLists.at(0); };
    EXPECT_EQ(listOf(0), listOf(3)) << "one list";
    EXPECT_EQ(listOf(6), listOf(7)) << "one list that each paragraph describes";
    EXPECT_NE(listOf(7), listOf(9)) << "another one after plain text";
}

TEST(RTFReading, Pictures) {
    const std::string wmf(18, '\1');
    const Row rows[] = {
        {"kinds and sizes",
         "{\\pict\\pngblip\\picwgoal400\\pichgoal200\\picscalex50\\piccropr100\\piccropt40 0a "
         "0B\r\n0c}{\\pict\\jpegblip\\bin3 }{}}",
         "'\uFFFC' file=picture-1.png/3 width=7.5 height=8; '\uFFFC' file=picture-2.jpg/3"},
        {"metafiles get the header of a file", "{\\pict\\wmetafile8\\picw2540\\pich1270 0102}",
         "'\uFFFC' file=picture-1.wmf/24 width=72 height=36"},
        {"pictures as markers of lists", "{\\listtext{\\pict\\pngblip 01}}a",
         "'\t'; '\uFFFC' file=picture-1.png/1; '\ta'"},
        {"bitmaps get theirs", "{\\pict\\dibitmap0 28000000}", "'\uFFFC' file=picture-1.bmp/18"},
        {"a better one counts for the worse one after it",
         "{\\*\\shppict{\\pict\\pngblip 01}}{\\*\\shppict{\\pict\\pngblip}}{\\nonshppict{\\pict\\jpegblip "
         "02}}",
         "'\uFFFC' file=picture-1.png/1; '\uFFFC' file=picture-2.jpg/1"},
        {"kinds by their contents", "{\\pict 474946383961}", "'\uFFFC' file=picture-1.gif/6"},
        {"the better one of two", "a{\\*\\shppict{\\pict\\pngblip 01}}{\\nonshppict{\\pict\\wmetafile8 02}}b",
         "'a'; '\uFFFC' file=picture-1.png/1; 'b'"},
        {"the worse one when there is none better",
         "{\\*\\shppict{\\pict\\pngblip}}{\\nonshppict{\\pict\\jpegblip 02}}",
         "'\uFFFC' file=picture-1.jpg/1"},
        {"floating ones are as large as their shapes; those in the text of one as they say",
         "{\\shp{\\*\\shpinst\\shpleft-20\\shptop0\\shpright180\\shpbottom60{\\sp{\\sn "
         "pib}{\\sv{\\pict\\pngblip"
         "\\picwgoal20\\pichgoal20 01}}}{\\shptxt{\\pict\\pngblip 02}{\\shp{\\*\\shpinst\\shpleft9{\\sp{\\sn "
         "pib}{\\sv{\\pict\\pngblip 03}}}}}}}}",
         "'\uFFFC' file=picture-1.png/1 width=10 height=3; '|'; '\uFFFC' file=picture-2.png/1; '\uFFFC' "
         "file=picture-3.png/1; '|'"},
        {"of shapes",
         "{\\shp{\\*\\shpinst{\\sp{\\sn pib}{\\sv{\\pict\\pngblip 01}}}{\\sp{\\sn q}{\\sv{\\pict\\pngblip "
         "02}}}}}",
         "'\uFFFC' file=picture-1.png/1"},
        {"cut short", "{\\b{\\pict\\pngblip 0102030", "'\uFFFC' bold file=picture-1.png/3"},
        {"nothing to show", "a{\\pict\\pngblip}{\\pict\\wbitmap0 01}{\\pict 01}b\\u65532?", "'ab'"},
    };
    expectRuns(rows);
}

TEST(RTFReading, HeadersOfPictures) {
    const auto contents = [](std::string_view words, const std::string& bytes) {
        const NSAttributedString text = read("{\\rtf1{\\pict" + std::string(words) + "\\bin" +
                                             std::to_string(bytes.size()) + ' ' + bytes + "}}");
        return std::string(
            text.runs()[0].attributes->attachment->fileWrapper->regularFileContents().characters());
    };
    std::string hex;
    for (const char byte : contents("\\wmetafile8\\picw2540\\pich1270", "x")) {
        constexpr const char* digits = "0123456789abcdef";
        hex += {digits[static_cast<unsigned char>(byte) >> 4], digits[byte & 15]};
    }
    EXPECT_EQ(hex, "d7cdc69a000000000000a005d002a00500000000c15578");
    EXPECT_EQ(contents("\\macpict", "x"), std::string(512, '\0') + 'x');
    const std::tuple<const char*, int, int, int, int, int> rows[] = {
        {"no palette", 40, 24, 0, 0, 54},
        {"as many colours as there can be", 40, 8, 0, 0, 1078},
        {"as many as it says", 40, 8, 0, 3, 66},
        {"no more than there can be", 40, 8, 0, 9999, 1078},
        {"masks", 40, 16, 3, 0, 66},
        {"masks within the longer header", 108, 16, 3, 0, 122},
        {"a header without these", 12, 8, 0, 0, 26},
        {"no longer than the picture", 5000, 24, 0, 0, 2014},
    };
    for (const auto& [name, infoSize, bits, compression, colors, offset] : rows) {
        std::string bytes(2000, '\0');
        for (const auto& [place, value] :
             {std::pair(0, infoSize), {14, bits}, {16, compression}, {32, colors}})
            bytes.replace(static_cast<std::size_t>(place), 2,
                          {static_cast<char>(value), static_cast<char>(value >> 8)});
        const std::string file = contents("\\dibitmap0", bytes);
        const auto number = [&file](std::size_t place) {
            return static_cast<unsigned char>(file[place]) + 256 * file[place + 1];
        };
        ASSERT_EQ(file.size(), 2014u) << name;
        EXPECT_EQ(file.substr(0, 2), "BM");
        EXPECT_EQ(number(2), 2014) << name;
        EXPECT_EQ(number(10), offset) << name;
    }
}

TEST(RTFReading, Packages) {
    const auto wrapper = [](std::string_view contents, const NSString& name) {
        auto file = NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytes(contents));
        file->setPreferredFilename(name);
        return file;
    };
    const auto package = NSFileWrapper::initDirectory();
    package->addFileWrapper(
        wrapper("{\\rtf1{\\fonttbl\\f0 Arial;}{{\\NeXTGraphic a b.png \\width40 \\height60 \\noorient "
                "more}\\'ac} \\'ac{{\\*\\NeXTGraphic u\\'c3\\'bc\\{.txt}\xAC}{{\\NeXTGraphic gone}\\'ac}}",
                u"txt.rtf"));
    package->addFileWrapper(wrapper("12345", u"a b.png"));
    package->addFileWrapper(wrapper("123", u"uu\u0308{.txt"));
    const char* const runs = "'\uFFFC' file=a b.png/5 width=2 height=3; ' \u00AC'; '\uFFFC' "
                             "file=uu\u0308{.txt/3; '\uFFFC' file=gone/0";
    NSDictionary attributes;
    EXPECT_EQ(runsOf(initWithRTFDFileWrapper_documentAttributes(*package, &attributes)), runs);
    EXPECT_EQ(attributes.objectForKey(NSDocumentTypeDocumentAttribute), Value(NSRTFDTextDocumentType));
    EXPECT_EQ(runsOf(initWithRTFD_documentAttributes(package->serializedRepresentation(), nullptr)), runs);
    EXPECT_TRUE(
        initWithRTFDFileWrapper_documentAttributes(*NSFileWrapper::initDirectory(), &attributes).isNil());
    EXPECT_TRUE(attributes.isNil());
    for (const char* const bytes : {"", "{\\rt", "rtfd", "{\\rtf1 y}"}) {
        attributes = NSDictionary::dictionary();
        EXPECT_TRUE(initWithRTFD_documentAttributes(NSData::dataWithBytes(bytes), &attributes).isNil())
            << bytes;
        EXPECT_TRUE(attributes.isNil()) << bytes;
    }
}

TEST(RTFReading, DocumentAttributes) {
    NSDictionary attributes;
    read("{\\rtf1\\ansi\\ansicpg1251\\cocoartf1671\\cocoatextscaling1\\paperw4000\\margl200\\viewkind1\\views"
         "cale150\\vieww400\\viewh200\\deftab100\\hyphauto1\\hyphfactor90{\\info{\\title \\'d3}{\\*\\company "
         "C}{\\keywords a, b c,,d }{\\operator n}{\\editor e}{\\operator o}{\\doccomm k}{\\comment "
         "no}{\\upr{\\author ?}{\\*\\ud{\\author \\u8364?}}}{\\subject "
         "}{\\creatim\\yr2024\\mo5\\timesinceref700}{\\revtim\\yr1601\\mo1\\dy1}}x}",
         &attributes);
    const auto real = [](double value) { return Value(NSNumber::numberWithDouble(value)); };
    const auto integer = [](int value) { return Value(NSNumber::numberWithInt(value)); };
    const std::pair<const char16_t*, Value> expected[] = {
        {NSDocumentTypeDocumentAttribute, NSRTFTextDocumentType},
        {NSUTIDocumentAttribute, u"public.rtf"},
        {NSCocoaVersionDocumentAttribute, integer(1671)},
        {NSPaperSizeDocumentAttribute, NSSize{200, 792}},
        {NSLeftMarginDocumentAttribute, real(10)},
        {NSRightMarginDocumentAttribute, real(90)},
        {NSTopMarginDocumentAttribute, real(72)},
        {NSBottomMarginDocumentAttribute, real(72)},
        {NSViewSizeDocumentAttribute, NSSize{20, 10}},
        {NSViewModeDocumentAttribute, integer(1)},
        {NSViewZoomDocumentAttribute, real(150)},
        {NSDefaultTabIntervalDocumentAttribute, real(5)},
        {NSHyphenationFactorDocumentAttribute, real(0.9)},
        {NSTextScalingDocumentAttribute, integer(1)},
        {NSTitleDocumentAttribute, u"У"},
        {NSCompanyDocumentAttribute, u"C"},
        {NSKeywordsDocumentAttribute, NSArray::arrayWithObjects({u"a", u"b c", u"d"})},
        {NSEditorDocumentAttribute, u"e"},
        {NSCommentDocumentAttribute, u"k"},
        {NSAuthorDocumentAttribute, u"€"},
        {NSCreationTimeDocumentAttribute, NSDate::dateWithTimeIntervalSinceReferenceDate(700)},
    };
    for (const auto& [key, value] : expected)
        EXPECT_EQ(attributes.objectForKey(key), value) << NSString(key).UTF8String();
    EXPECT_EQ(attributes.count(), std::size(expected));
}

TEST(RTFReading, DatesAndHyphens) {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    NSDictionary attributes;
    read("{\\rtf1\\hyphauto0\\hyphfactor90{\\info{\\revtim\\yr2024\\mo5\\dy6\\hr7\\min8\\sec9}}x}",
         &attributes);
    EXPECT_EQ(attributes.objectForKey(NSModificationTimeDocumentAttribute),
              Value(NSDate::dateWithTimeIntervalSinceReferenceDate(736672089)));
    EXPECT_EQ(attributes.objectForKey(NSHyphenationFactorDocumentAttribute),
              Value(NSNumber::numberWithDouble(0)));
}

TEST(RTFReading, CodePages) {
    const char* const rows[][3] = {
        {"", "\\'e4\\'80", "ä€"},
        {"\\mac", "\\'8a", "ä"},
        {"\\pc", "\\'84\\'9b", "ä¢"},
        {"\\pca", "\\'84\\'9b", "äø"},
        {"\\mac\\ansi", "\\'e4", "ä"},
        {"\\ansi\\ansicpg1251", "\\'d3", "У"},
        {"\\ansicpg1251\\ansicpg0", "\\'d3", "У"},
        {"\\ansicpg4711", "\\'e4", "ä"},
        {"\\ansicpg65001{\\fonttbl{\\f0\\fcharset0 A;}{\\f1\\fcharset204 A;}}",
         "\\f0\\'e2\\'82\\'ac\\f1\\'d3", "€У"},
        {"{\\fonttbl{\\f0\\fcharset0\\cpg1251 A;}}", "\\f0\\'d3", "У"},
        {"\\ansicpg1251{\\fonttbl{\\f0\\fcharset1 A;}{\\f1\\fcharset99 A;}}", "\\f0\\'d3\\f1\\'d3", "УУ"},
    };
    for (const auto& [head, bytes, text] : rows)
        EXPECT_EQ(read(std::string("{\\rtf1") + head + bytes + "}").string().UTF8String(), text) << head;
}

TEST(RTFReading, HostileSources) {
#ifdef KELVO_SANITIZED
    constexpr std::size_t cells = 20000; // So many more would take half a minute here.
#else
    constexpr std::size_t cells = 260000;
#endif
    const auto times = [](std::size_t count, std::string_view part) {
        std::string result;
        while (count-- > 0)
            result += part;
        return result;
    };
    const std::tuple<const char*, std::string, std::size_t> rows[] = {
        {"groups within groups", times(100000, "{\\b ") + "x" + times(100000, "}") + "y", 2},
        {"groups that never end", times(100000, "{a"), 100000},
        {"destinations too deep to be kept",
         times(2000, "{") + "a{\\fonttbl b}{\\footnote c}{\\field{\\*\\fldinst d}{\\fldrslt e}}", 3},
        {"notes within notes", times(300, "{\\footnote a"), 308},
        {"binary data past the end", "a\\bin2147483647 bcd", 1},
        {"binary data past the end of what is passed over", "a{\\*\\x\\bin99999999999 }b", 1},
        {"columns without number",
         "\\trowd" + times(30000, "\\cellx1") + "\\intbl" + times(30000, "\\cell") + "\\row", 30000},
        {"more cells than are kept", times(cells, "\\intbl x\\cell\\row"), 2 * cells},
        {"numbers without end",
         "\\fs99999999999\\li-99999999999\\up-2147483648\\dn-2147483648\\f-1\\cf-9\\u-99999999999?"
         "\\tx99999999999\\itap99999999999\\ls-1\\ilvl-9\\trowd\\trleft-99999999999\\cellx99999999999 "
         "x\\cell\\row",
         3},
        {"an end within a word", "a\\", 1},
        {"an end within a byte", "a\\'4", 2},
    };
    for (const auto& [name, body, length] : rows) {
        const std::string source = document(body);
        EXPECT_EQ(read(std::string_view(source).substr(0, source.size() - 1)).length(), length) << name;
    }
    const std::string whole =
        document("{\\*\\listtable{\\list{\\listlevel{\\leveltext\\'01\\'00;}}\\listid1}}"
                 "\\trowd\\cellx9\\intbl{\\pict\\pngblip 00}{\\footnote x}\\u8364?\\'e4{\\field{\\*\\fldinst "
                 "HYPERLINK \"a\"}{\\fldrslt b}}\\cell\\row");
    for (std::size_t size = 5; size < whole.size(); ++size)
        EXPECT_FALSE(read(std::string_view(whole).substr(0, size)).isNil()) << size;
}

} // namespace
} // namespace kelvo
