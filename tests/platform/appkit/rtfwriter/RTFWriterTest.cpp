#include "platform/appkit/rtfwriter/RTFWriter.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <ctime>

namespace kelvo {
namespace {

/// What stands after the head, whose last line is about tabs.
std::string bodyOf(const NSAttributedString& text) {
    const std::string source =
        RTFWriter(text, [](const NSTextAttachment&) { return "a {b}\xC3.png"; }).write(nullptr);
    constexpr std::string_view end = "\\deftab720\n";
    return source.substr(std::min(source.find(end) + end.size(), source.size()));
}

using Change = void (*)(NSTextAttributes& run, NSParagraphStyle& style);

/// A piece of text with the changed attributes.
struct Piece {
    const char16_t* units;
    Change change = [](NSTextAttributes&, NSParagraphStyle&) {};
};

NSAttributedString textOf(std::initializer_list<Piece> pieces) {
    NSMutableAttributedString text;
    for (const Piece& piece : pieces) {
        NSTextAttributes run;
        NSParagraphStyle style;
        piece.change(run, style);
        run.paragraphStyle = std::make_shared<const NSParagraphStyle>(style);
        text.append(piece.units, std::make_shared<const NSTextAttributes>(run));
    }
    return text.copy();
}

TEST(RTFWriterTest, Head) {
    const std::string source = RTFWriter(NSAttributedString(u"x"), nullptr).write(nullptr);
    EXPECT_EQ(source, "{\\rtf1\\ansi\\ansicpg1252\\cocoartf2822\n"
                      "\\cocoatextscaling0\\cocoaplatform0{\\fonttbl\\f0\\fswiss\\fcharset0 Helvetica;}\n"
                      "{\\colortbl;\\red255\\green255\\blue255;}\n{\\*\\expandedcolortbl;;}\n"
                      "\\deftab720\n\\pard\\pardirnatural\\f0\\fs24\\cf0 x}");
}

/// A paragraph's words; the default's are \pard and \pardirnatural.
TEST(RTFWriterTest, Paragraphs) {
#define STYLE(...) [](NSTextAttributes&, NSParagraphStyle& style) { __VA_ARGS__; }
    const std::tuple<const char*, Change, const char*> rows[] = {
        {"nothing", STYLE((void)style), "\\pard\\pardirnatural"},
        {"an exact height", STYLE(style.minimumLineHeight = style.maximumLineHeight = 12),
         "\\pard\\sl-240\\slmult0\\slminimum240\\slmaximum240\\pardirnatural"},
        {"a least height", STYLE(style.minimumLineHeight = 12; style.maximumLineHeight = 13),
         "\\pard\\sl240\\slmult0\\slminimum240\\slmaximum260\\pardirnatural"},
        {"a greatest height", STYLE(style.maximumLineHeight = 13), "\\pard\\slmaximum260\\pardirnatural"},
        {"a multiple counts before a height",
         STYLE(style.minimumLineHeight = 12; style.lineHeightMultiple = 1.5F),
         "\\pard\\sl360\\slmult1\\slminimum240\\pardirnatural"},
        {"spaces", STYLE(style.lineSpacing = 1; style.paragraphSpacing = 2; style.paragraphSpacingBefore = 3),
         "\\pard\\slleading20\\sb60\\sa40\\pardirnatural"},
        {"indents", STYLE(style.headIndent = 10; style.firstLineHeadIndent = 4; style.tailIndent = -5),
         "\\pard\\li200\\fi-120\\ri100\\pardirnatural"},
        {"tabs",
         STYLE(style.tabStops =
                   {{1}, {2, NSTextTabType::right}, {3, NSTextTabType::center}, {4, NSTextTabType::decimal}};
               style.defaultTabInterval = 9),
         "\\pard\\tx20\\tqr\\tx40\\tqc\\tx60\\tqdec\\tx80\\pardeftab180\\pardirnatural"},
        {"left", STYLE(style.alignment = NSTextAlignment::left), "\\pard\\ql\\pardirnatural"},
        {"right", STYLE(style.alignment = NSTextAlignment::right), "\\pard\\qr\\pardirnatural"},
        {"centred", STYLE(style.alignment = NSTextAlignment::center), "\\pard\\qc\\pardirnatural"},
        {"justified", STYLE(style.alignment = NSTextAlignment::justified), "\\pard\\qj\\pardirnatural"},
        {"rightwards", STYLE(style.baseWritingDirection = NSWritingDirection::leftToRight), "\\pard\\ltrpar"},
        {"right to left, for readers that do not align such text by themselves",
         STYLE(style.baseWritingDirection = NSWritingDirection::rightToLeft), "\\pard\\qr\\qnatural\\rtlpar"},
        {"a heading", STYLE(style.headerLevel = 2), "\\pard\\pardirnatural\\outlinelevel1"},
        {"a heading past outlines", STYLE(style.headerLevel = 12), "\\pard\\pardirnatural\\outlinelevel8"},
    };
#undef STYLE
    for (const auto& [name, change, words] : rows)
        EXPECT_EQ(bodyOf(textOf({{u"x", change}})), std::string(words) + "\\f0\\fs24\\cf0 x}") << name;
}

TEST(RTFWriterTest, Characters) {
#define RUN(...) [](NSTextAttributes& run, NSParagraphStyle&) { __VA_ARGS__; }
    // The word before has the words of plain text.
    const std::tuple<const char*, Change, const char*> rows[] = {
        {"plain", RUN((void)run), "ab"},
        {"bold and italic", RUN(run.font.isBold = run.font.isItalic = true), "a\\b\\i b"},
        {"half points", RUN(run.font.pointSize = 12.5F), "a\\fs25 b"},
        {"finer sizes", RUN(run.font.pointSize = 12.75F), "a\\fs26\\fsmilli12750 b"},
        {"no size", RUN(run.font.pointSize = 0), "a\\fs1 b"},
        {"a font", RUN(run.font.familyName = u"Menlo"), "a\\f1 b"},
        {"a colour", RUN(run.foregroundColor = NSColor{}), "a\\cf2 b"},
        {"lines under it", RUN(run.underlineStyle = NSUnderlineStyleSingle), "a\\ul b"},
        {"two", RUN(run.underlineStyle = NSUnderlineStyleDouble), "a\\uldb b"},
        {"a thick one", RUN(run.underlineStyle = NSUnderlineStyleThick), "a\\ulth b"},
        {"a line through it", RUN(run.strikethroughStyle = NSUnderlineStyleThick), "a{\\strike b}"},
        {"two through it", RUN(run.strikethroughStyle = NSUnderlineStyleDouble), "a{\\striked1 b}"},
        {"above", RUN(run.superscript = 1; run.baselineOffset = 2.5F), "a{\\super1\\up5 b}"},
        {"below", RUN(run.superscript = -2; run.baselineOffset = -3), "a{\\sub2\\dn6 b}"},
        {"spaced", RUN(run.kern = -1), "a{\\expnd-4\\expndtw-20 b}"},
        {"a colour behind it", RUN(run.backgroundColor = NSColor{1, 0, 0, 1}), "a{\\cb2\\chcbpat2 b}"},
        {"a link", RUN(run.link = u"x\"\\\u201D{"),
         "a{\\field{\\*\\fldinst{HYPERLINK \"x\\\\\"\\\\\\\\\\\\\\'94\\{\"}}{\\fldrslt b}}"},
    };
#undef RUN
    for (const auto& [name, change, source] : rows)
        EXPECT_EQ(bodyOf(textOf({{u"a"}, {u"b", change}})),
                  "\\pard\\pardirnatural\\f0\\fs24\\cf0 " + std::string(source) + "}")
            << name;
}

TEST(RTFWriterTest, Texts) {
    const Change bold = [](NSTextAttributes& run, NSParagraphStyle&) { run.font.isBold = true; };
    const Change link = [](NSTextAttributes& run, NSParagraphStyle&) {
        run.font.isBold = true;
        run.link = u"l";
    };
    const Change item = [](NSTextAttributes& run, NSParagraphStyle& style) {
        static const auto list = std::make_shared<const NSTextList>(NSTextList{u"{disc}", 1});
        style.textLists = {list};
        run.font.isItalic = true;
    };
    const Change attachment = [](NSTextAttributes& run, NSParagraphStyle&) {
        run.attachment = std::make_shared<const NSTextAttachment>(
            NSTextAttachment{NSFileWrapper::initRegularFileWithContents(NSData::data()), {2, 3}});
    };
    const std::tuple<const char*, NSAttributedString, const char*> rows[] = {
        {"what is in force is not said again", textOf({{u"a"}, {u"b", bold}, {u"c", bold}, {u"d\n"}, {u"e"}}),
         "a\\b bc\\b0 d\\\ne"},
        {"signs", textOf({{u"\\{}\t\f\u2028\u00E9\u0161\u20AC\u0160\u65E5\xD83D\x01\x7F~"}}),
         "\\\\\\{\\}\t\\page \\line \\'e9\\'9a\\'80\\'8a\\u26085?\\u55357?\\u1?\\u127?~"},
        {"what a link says of its text ends with it",
         textOf({{u"a"}, {u"b", link}, {u"c", bold}, {u"\n", link}, {u"d"}}),
         "a{\\field{\\*\\fldinst{HYPERLINK \"l\"}}{\\fldrslt\\b b}}\\b c{\\field{\\*\\fldinst{HYPERLINK "
         "\"l\"}}{\\fldrslt \\\n}}\\b0 d"},
        {"markers",
         textOf({{u"a\n"},
                 {u"\t-\tb\n", item},
                 {u"\t-c\n", item},
                 {u"\tThe tab after these words ends no marker.\t", item}}),
         "a\\\n\\pard\\ls1\\ilvl0\\pardirnatural{\\listtext\\i \t-\t}\\i b\\\n\t-c\\\n\tThe tab after these "
         "words ends no marker.\t"},
        {"no marker outside of lists", textOf({{u"\t-\tb"}}), "\t-\tb"},
        {"attachments", textOf({{u"a"}, {u"\xFFFCx\xFFFC", attachment}}),
         "a{{\\NeXTGraphic a \\{b\\}\\'c3.png \\width40\\height60}\\'ac}x{{\\NeXTGraphic a \\{b\\}\\'c3.png "
         "\\width40\\height60}\\'ac}"},
    };
    for (const auto& [name, text, source] : rows)
        EXPECT_EQ(bodyOf(text), "\\pard\\pardirnatural\\f0\\fs24\\cf0 " + std::string(source) + "}") << name;
}

TEST(RTFWriterTest, Tables) {
    const auto table = std::make_shared<const NSTextTable>();
    const auto innerTable = std::make_shared<const NSTextTable>();
    NSMutableAttributedString text;
    using Block = std::shared_ptr<const NSTextTableBlock>;
    const auto block = [](const std::shared_ptr<const NSTextTable>& owner, int row, int column, int rowSpan) {
        NSTextTableBlock made;
        made.table = owner;
        made.startingRow = row;
        made.startingColumn = column;
        made.rowSpan = rowSpan;
        return std::make_shared<const NSTextTableBlock>(made);
    };
    const auto add = [&text](const char16_t* units, std::vector<Block> blocks, int superscript = 0) {
        NSParagraphStyle style;
        style.textBlocks = std::move(blocks);
        NSTextAttributes run;
        run.superscript = superscript;
        run.paragraphStyle = std::make_shared<const NSParagraphStyle>(style);
        text.append(units, std::make_shared<const NSTextAttributes>(run));
    };
    const Block spanning = block(table, 0, 0, 2);
    const Block second = block(table, 0, 1, 1);
    add(u"a\n", {spanning});
    add(u"b\n", {spanning}, 1);
    add(u"c\n", {second});
    add(u"d\n", {second, block(innerTable, 0, 0, 1)});
    add(u"e", {block(table, 1, 1, 9)});
    const std::string cells = "\\clvertalt\\clftsWidth1\\cellx4320\n";
    EXPECT_EQ(bodyOf(text.copy()),
              "\\trowd\\irow0\\irowband0\\trftsWidth1\n\\clvmgf" + cells +
                  "\\clvertalt\\clftsWidth1\\cellx8640\n"
                  "\\pard\\intbl\\itap1\\pardirnatural\\f0\\fs24\\cf0 a\\\n{\\super1 b}{\\super1\\cell}\n"
                  "c\\\n\\pard\\intbl\\itap2\\pardirnatural d\\nestcell\n"
                  "{\\*\\nesttableprops\\trowd\\irow0\\irowband0\\lastrow\\trftsWidth1\n" +
                  cells +
                  "\\nestrow}{\\nonesttables\\par}\n\\pard\\intbl\\itap1\\pardirnatural\\cell\n\\row\n"
                  "\\trowd\\irow1\\irowband1\\lastrow\\trftsWidth1\n\\clvmrg" +
                  cells +
                  "\\clvertalt\\clftsWidth1\\cellx8640\n"
                  "\\pard\\intbl\\itap1\\pardirnatural\\cell\ne\\cell\n\\row\n}");
}

TEST(RTFWriterTest, Numbers) {
    EXPECT_EQ(rtfTwips(0.024), 0);
    EXPECT_EQ(rtfTwips(-0.026), -1);
    EXPECT_EQ(rtfTwips(1e300), 1'000'000);
    EXPECT_EQ(rtfTwips(-1e300), -1'000'000);
    EXPECT_EQ(rtfNumber(NAN, 1), 0);
    EXPECT_EQ(rtfNumber(7, 3, 20), 20);
}

TEST(RTFWriterTest, DocumentAttributes) {
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    const NSDictionary attributes = NSMutableDictionary::dictionaryWithObjectsAndKeys({
        {u"t{", NSTitleDocumentAttribute},
        {u"c", NSCompanyDocumentAttribute},
        {NSArray::arrayWithObjects({u"k", u"l"}), NSKeywordsDocumentAttribute},
        {NSDate::dateWithTimeIntervalSinceReferenceDate(86400 * 35 + 3723), NSCreationTimeDocumentAttribute},
        {NSSize{600, 800}, NSPaperSizeDocumentAttribute},
        {NSNumber::numberWithDouble(10), NSTopMarginDocumentAttribute},
        {NSNumber::numberWithInt(1), NSViewModeDocumentAttribute},
        {NSNumber::numberWithDouble(0.5), NSHyphenationFactorDocumentAttribute},
        {NSNumber::numberWithDouble(28), NSDefaultTabIntervalDocumentAttribute},
    });
    RTFOutput output;
    writeRTFDocumentAttributes(attributes, output);
    EXPECT_EQ(output.bytes(),
              "{\\info\n{\\title t\\{}\n{\\*\\company "
              "c}\n{\\creatim\\yr2001\\mo2\\dy5\\hr1\\min2\\sec3\\timesinceref3027723}\n{\\keywords k, "
              "l}}\n\\paperw12000\\paperh16000\\margt200\\viewkind1\n\\deftab560\\hyphauto1\\hyphfactor50\n");
    output.clear();
    writeRTFDocumentAttributes(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                                   {{NSNumber::numberWithDouble(0), NSHyphenationFactorDocumentAttribute}}),
                               output);
    EXPECT_EQ(output.bytes(), "\\deftab720\n") << "nothing to say";
}

} // namespace
} // namespace kelvo
