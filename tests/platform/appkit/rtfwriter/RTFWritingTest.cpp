#include "platform/appkit/rtfwriter/RTFWriting.h"
#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfreader/NSTextStorage.h"
#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "support/RichTextGenerator.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvo {
namespace {

using namespace NSAttributedStringKitAdditions;
using tests::RichTextGenerator;

NSData rtfd(const NSAttributedString& text, const NSDictionary& attributes = nullptr) {
    return RTFDFromRange_documentAttributes(text, {0, text.length()}, attributes);
}

std::string rtf(const NSAttributedString& text) {
    return std::string(RTFFromRange_documentAttributes(text, {0, text.length()}, nullptr).characters());
}

std::u16string withoutUnit(const NSString& string, char16_t unit) {
    std::u16string units(string.characters());
    std::erase(units, unit);
    return units;
}

/// "" when the source is one group of 7-bit bytes that closes at its end.
std::string faultOf(std::string_view source) {
    int depth = 0;
    for (std::size_t index = 0; index < source.size(); ++index) {
        const char byte = source[index];
        if (byte == '\\')
            ++index;
        else if (static_cast<unsigned char>(byte) >= 0x80 || byte == '\0')
            return "a byte that is not ASCII";
        else if (byte == '{')
            ++depth;
        else if (byte == '}' && --depth == 0)
            return index + 1 == source.size() ? "" : "closes too early";
    }
    return "does not close";
}

TEST(RTFWritingTest, ReadsBackWhatItWrites) {
    for (unsigned seed = 0; seed < 120; ++seed) {
        const NSAttributedString text = RichTextGenerator(seed).text(8);
        const auto again = NSTextStorage::initWithRTFD_documentAttributes(rtfd(text), nullptr);
        ASSERT_TRUE(again) << seed;
        EXPECT_EQ(again->copy().string().UTF8String(), text.string().UTF8String()) << seed;
        ASSERT_TRUE(again->copy() == text) << seed;
        EXPECT_EQ(faultOf(rtf(text)), "") << seed;
        EXPECT_EQ(withoutUnit(
                      initWithRTF_documentAttributes(NSData::dataWithBytes(rtf(text)), nullptr).string(), 0),
                  withoutUnit(text.string(), NSAttachmentCharacter))
            << seed;
    }
}

/// Text whose lists and cells say anything: rows out of order, columns far outside, spans of any length,
/// cells that end in the middle of a line, tables and lists that are not there.
NSAttributedString lyingText(unsigned seed) {
    RichTextGenerator random(seed);
    const auto number = [&random] {
        static constexpr int numbers[] = {0,  0,  1,  1,    2,  3,          5,
                                          62, 63, 64, 1000, -1, 0x7FFFFFFF, -0x7FFFFFFF - 1};
        return numbers[random.below(std::size(numbers))];
    };
    const auto length = [&random] {
        static constexpr float lengths[] = {0, 1, -5, 3e38F, -3e38F, NAN, INFINITY};
        return lengths[random.below(std::size(lengths))];
    };
    std::vector<std::shared_ptr<const NSTextTable>> tables{nullptr};
    std::vector<std::shared_ptr<const NSTextTableBlock>> blocks{nullptr};
    std::vector<std::shared_ptr<const NSTextList>> lists{nullptr};
    for (int count = 0; count < 3; ++count) {
        tables.push_back(std::make_shared<const NSTextTable>(
            NSTextTable{number(), false, NSTextBlockLength{length()}, {}}));
        lists.push_back(std::make_shared<const NSTextList>(
            NSTextList{count == 0 ? NSString() : NSString(std::u16string_view(random.words())), number()}));
    }
    for (int count = 0; count < 12; ++count) {
        NSTextTableBlock block;
        block.table = tables[random.below(tables.size())];
        block.startingRow = number();
        block.startingColumn = number();
        block.rowSpan = number();
        block.columnSpan = number();
        block.width = NSTextBlockLength{length(), static_cast<NSTextBlockLength::Unit>(random.below(2))};
        block.borders.fill({length(), NSColor{length(), length(), length(), length()}});
        block.padding.fill(length());
        blocks.push_back(std::make_shared<const NSTextTableBlock>(block));
    }
    NSMutableAttributedString text;
    for (std::size_t count = random.below(30); count > 0; --count) {
        NSParagraphStyle style;
        for (std::size_t depth = random.below(random.below(20) == 0 ? 100 : 4); depth > 0; --depth)
            style.textBlocks.push_back(blocks[random.below(blocks.size())]);
        for (std::size_t depth = random.below(12); depth > 8; --depth)
            style.textLists.push_back(lists[random.below(lists.size())]);
        style.headIndent = style.tailIndent = style.lineHeightMultiple = style.minimumLineHeight = length();
        style.tabStops.push_back({length(), NSTextTabType::decimal});
        style.headerLevel = number();
        NSTextAttributes attributes;
        attributes.paragraphStyle = std::make_shared<const NSParagraphStyle>(style);
        attributes.font.familyName = random.below(2) == 0 ? NSString() : NSString(u";\n;");
        attributes.font.pointSize = attributes.kern = attributes.baselineOffset = length();
        attributes.superscript = number();
        attributes.attachment = std::make_shared<const NSTextAttachment>();
        attributes.link = random.below(3) == 0 ? NSString(u"a\n\"}") : NSString();
        text.append(random.words() + (random.below(2) == 0 ? u"\n" : u""),
                    std::make_shared<const NSTextAttributes>(attributes));
    }
    return std::move(text).copy();
}

TEST(RTFWritingTest, LosesNoTextThatLies) {
    for (unsigned seed = 0; seed < 80; ++seed) {
        const NSAttributedString text = lyingText(seed);
        const std::string source = rtf(text);
        ASSERT_EQ(faultOf(source), "") << seed;
        EXPECT_LT(source.size(), 20000 + 20000 * text.runs().size()) << seed;
        // Cells that had no end have one now.
        const NSAttributedString again =
            initWithRTF_documentAttributes(NSData::dataWithBytes(source), nullptr);
        ASSERT_EQ(withoutUnit(again.string(), u'\n'), withoutUnit(text.string(), u'\n')) << seed;
    }
}

TEST(RTFWritingTest, DocumentAttributesComeBack) {
    const NSDictionary attributes = NSMutableDictionary::dictionaryWithObjectsAndKeys({
        {NSSize{595, 842.5F}, NSPaperSizeDocumentAttribute},
        {NSNumber::numberWithDouble(10.5), NSLeftMarginDocumentAttribute},
        {NSNumber::numberWithDouble(20), NSRightMarginDocumentAttribute},
        {NSNumber::numberWithDouble(0), NSTopMarginDocumentAttribute},
        {NSNumber::numberWithDouble(-3), NSBottomMarginDocumentAttribute},
        {NSSize{800, 600}, NSViewSizeDocumentAttribute},
        {NSNumber::numberWithDouble(125), NSViewZoomDocumentAttribute},
        {NSNumber::numberWithInt(1), NSViewModeDocumentAttribute},
        {NSNumber::numberWithDouble(0.25), NSHyphenationFactorDocumentAttribute},
        {NSNumber::numberWithDouble(28), NSDefaultTabIntervalDocumentAttribute},
        {NSNumber::numberWithInt(1), NSTextScalingDocumentAttribute},
        {u"Title {\u6F22} \\ \u00E9", NSTitleDocumentAttribute},
        {u"two\nlines", NSCommentDocumentAttribute},
        {u"Company", NSCompanyDocumentAttribute},
        {u"Copyright", NSCopyrightDocumentAttribute},
        {u"Subject", NSSubjectDocumentAttribute},
        {u"Author", NSAuthorDocumentAttribute},
        {u"Editor", NSEditorDocumentAttribute},
        {u"Manager", NSManagerDocumentAttribute},
        {u"Category", NSCategoryDocumentAttribute},
        {NSArray::arrayWithObjects({u"one", u"two words"}), NSKeywordsDocumentAttribute},
        {NSDate::dateWithTimeIntervalSinceReferenceDate(736671889), NSCreationTimeDocumentAttribute},
        {NSDate::dateWithTimeIntervalSinceReferenceDate(-5), NSModificationTimeDocumentAttribute},
    });
    NSDictionary again;
    NSTextStorage::initWithRTFD_documentAttributes(rtfd(NSAttributedString(u"x"), attributes), &again);
    for (const auto& [key, value] : attributes)
        EXPECT_TRUE(again.objectForKey(key) == value)
            << key.description().UTF8String() << ": " << again.objectForKey(key).description().UTF8String();
    NSMutableDictionary odd = NSMutableDictionary::dictionary();
    for (const auto& [key, value] : attributes)
        odd.setObject_forKey(key.string() == NSCreationTimeDocumentAttribute
                                 ? Value(NSDate::dateWithTimeIntervalSinceReferenceDate(NAN))
                                 : Value(NSNull()),
                             key);
    EXPECT_EQ(rtfd(NSAttributedString(u"x"), odd).characters(), rtfd(NSAttributedString(u"x")).characters())
        << "values of other kinds are left out";
}

TEST(RTFWritingTest, AttachmentsGetNamesThatTheTextCanMention) {
    const auto attach = [](const std::string& contents, const NSString& name) {
        const auto file = NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytes(contents));
        file->setPreferredFilename(name);
        NSTextAttributes attributes;
        attributes.attachment = std::make_shared<const NSTextAttachment>(NSTextAttachment{file, {}});
        return NSAttributedString(u"\xFFFC", attributes);
    };
    NSMutableAttributedString text;
    const std::pair<std::string, NSString> files[] = {
        {"1", u"a.png"}, {"2", u"A.png"},     {"1", u"a.png"}, {"3", u"txt.RTF"},
        {"4", nullptr},  {"5", u" a/b\\\n "}, {"6", u"."},     {"7", u"caf\xDCE9"},
    };
    for (const auto& [contents, name] : files)
        text.append(attach(contents, name));
    const NSAttributedString whole = text.copy();
    const auto package = RTFDFileWrapperFromRange_documentAttributes(whole, {0, whole.length()}, nullptr);
    std::vector<std::string> names;
    for (const auto& [name, file] : package->fileWrappers())
        names.push_back(name.UTF8String());
    EXPECT_EQ(names, (std::vector<std::string>{"a.png", "A-2.png", "TXT-2.rtf", "Unnamed", "a-b\\-",
                                               "Unnamed-2", NSString(u"caf\xDCE9").UTF8String(), "TXT.rtf"}));
    const NSAttributedString again = initWithRTFDFileWrapper_documentAttributes(*package, nullptr);
    ASSERT_EQ(again.length(), whole.length());
    for (std::size_t index = 0; index < std::size(files); ++index)
        EXPECT_EQ(
            again.runAtIndex(index).attributes->attachment->fileWrapper->regularFileContents().characters(),
            files[index].first);
    EXPECT_EQ(rtf(whole).find("NeXTGraphic"), std::string::npos) << "plain RTF has no files";
}

TEST(RTFWritingTest, WritesTheRangeOrNothing) {
    const NSAttributedString text(u"one two");
    const auto part = RTFFromRange_documentAttributes(text, {4, 3}, nullptr);
    EXPECT_EQ(initWithRTF_documentAttributes(part, nullptr).string(), u"two");
    EXPECT_TRUE(RTFFromRange_documentAttributes(nullptr, {}, nullptr).isNil());
    EXPECT_FALSE(RTFDFileWrapperFromRange_documentAttributes(nullptr, {}, nullptr));
    EXPECT_TRUE(RTFDFromRange_documentAttributes(nullptr, {}, nullptr).isNil());
    EXPECT_THROW(RTFFromRange_documentAttributes(text, {4, 4}, nullptr), NSException);
    EXPECT_EQ(initWithRTFD_documentAttributes(rtfd(NSAttributedString(u"")), nullptr).length(), 0u);
    EXPECT_FALSE(NSTextStorage::initWithRTFD_documentAttributes(NSData::dataWithBytes("no RTFD"), nullptr));
}

TEST(RTFWritingTest, OtherReadersSeeTheText) {
    const tests::TemporaryFolder folder;
    NSMutableAttributedString text;
    const auto add = [&text](std::u16string_view units, auto change) {
        NSTextAttributes attributes;
        change(attributes);
        text.append(units, std::make_shared<const NSTextAttributes>(attributes));
    };
    add(u"{braces} \u6F22 ", [](NSTextAttributes&) {});
    add(u"strong", [](NSTextAttributes& run) { run.font.isBold = true; });
    add(u" and\n", [](NSTextAttributes&) {});
    add(u"raised", [](NSTextAttributes& run) { run.superscript = 1; });
    add(u" low\n", [](NSTextAttributes& run) { run.backgroundColor = NSColor{1, 1, 0, 1}; });
    add(u"\t1.\titem\n", [](NSTextAttributes& run) {
        NSParagraphStyle style;
        style.textLists = {std::make_shared<const NSTextList>(NSTextList{u"{decimal}.", 1})};
        run.paragraphStyle = std::make_shared<const NSParagraphStyle>(style);
    });
    add(u"end\n", [](NSTextAttributes&) {});
    const std::string file = folder.write("a.rtf", rtf(text.copy()));
    ASSERT_EQ(std::system(("unrtf --html '" + file + "' > '" + file + ".html' 2> /dev/null").c_str()), 0);
    const std::string page = folder.read("a.rtf.html");
    const std::string body = page.substr(std::min(page.find("<body>"), page.size()));
    std::string plain;
    for (bool isTag = false; const char byte : body) {
        isTag = byte == '<' || (isTag && byte != '>');
        if (!isTag && byte != '>' && byte != '\n')
            plain += byte;
    }
    EXPECT_EQ(plain, "{braces} &#28450; strong andraised low 1. itemend") << page;
    EXPECT_NE(page.find("<b>strong</b>"), std::string::npos) << page;
    EXPECT_NE(page.find("<sup>raised</sup>"), std::string::npos) << page;
    EXPECT_NE(page.find("<span style=\"background:#ffff00\"> low"), std::string::npos) << page;
}

} // namespace
} // namespace kelvo
