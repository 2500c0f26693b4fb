#include "cli/JSONView.h"
#include "cli/Printable.h"
#include "cli/RichTextView.h"
#include "cli/TextView.h"
#include "platform/appkit/NSFileWrapper.h"

#include <fcntl.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstdlib>

namespace kelvo::cli {
namespace {

using namespace std::string_literals;

TEST(Printable, LeavesNothingThatATerminalObeys) {
    const NSString hostile(std::u16string_view(u"a\x1B[2Jb\x7F\x9B\tc\r\nd\re\x202E\xD800\0", 18));
    EXPECT_EQ(printable(hostile), "a\\x1B[2Jb\\x7F\\x9B\\x09c\\x0D\\x0Ad\\x0De\\u{202E}\uFFFD\\x00");
    EXPECT_EQ(printable(hostile, LineEnds::kept), "a\\x1B[2Jb\\x7F\\x9B\tc\nd\ne\\u{202E}\uFFFD\\x00");
    EXPECT_EQ(printable(u"ł 帆 \U0001F600"), "ł 帆 \U0001F600");
    EXPECT_EQ(printableFileName("caf\xE9 \xE5\xB8\x86\n"), "caf\\xE9 帆\\x0A");
    EXPECT_EQ(printable(u"\x061C\x200E\x200F\x2028\x202E\x2066\x2069"),
              "\\u{061C}\\u{200E}\\u{200F}\\u{2028}\\u{202E}\\u{2066}\\u{2069}");
    for (unsigned unit = 0; unit < 0x10000; ++unit) {
        const char16_t character = static_cast<char16_t>(unit);
        for (const unsigned char byte : printable({&character, 1}, LineEnds::kept))
            ASSERT_TRUE((byte >= 0x20 && byte != 0x7F) || byte == '\n' || byte == '\t') << unit;
    }
}

TEST(Printable, Figures) {
    const std::pair<std::uint64_t, const char*> counts[] = {
        {0, "0 bytes"},        {1, "1 byte"},       {999, "999 bytes"},           {1000, "1.0 KB"},
        {999'949, "999.9 KB"}, {999'950, "1.0 MB"}, {UINT64_MAX, "18446744.1 TB"}};
    for (const auto& [count, text] : counts)
        EXPECT_EQ(printableByteCount(count), text);
    EXPECT_EQ(printableMilliseconds(0.416), "0.42 ms");
    EXPECT_EQ(printableMilliseconds(12.34), "12.3 ms");
    EXPECT_EQ(printableMilliseconds(15000), "15.00 s");
    const std::pair<double, const char*> uptimes[] = {
        {-1, "0 s"}, {59.9, "59 s"}, {60, "1 min 0 s"}, {7199, "1 h 59 min"}, {90000, "1 d 1 h"}};
    for (const auto& [seconds, text] : uptimes)
        EXPECT_EQ(printableUptime(seconds), text);
}

TEST(TextView, WholeTextsArePrintableOnTerminals) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(terminal, 0);
    EXPECT_EQ(linesOfText(u"a\x1B[2J\fb\x2028"
                          u"c\x2029"
                          u"d\n",
                          Output(terminal)),
              "a\\x1B[2J\nb\nc\nd\n");
    close(terminal);
    EXPECT_EQ(linesOfText(u"\x1B\f", Output(-1)), "\x1B\f\n");
    EXPECT_EQ(linesOfText(u"", Output(-1)), "");
}

TEST(JSONView, EveryKindOfValue) {
    const NSData written = NSData::dataWithBytes("written");
    NSMutableDictionary all = NSMutableDictionary::dictionary();
    all.setObject_forKey(NSNull(), u"null");
    all.setObject_forKey(NSNumber::numberWithBool(true), u"bool");
    all.setObject_forKey(NSData::dataWithBytes("\0\1", 2), u"data");
    all.setObject_forKey(written, u"file");
    all.setObject_forKey(NSDate::dateWithTimeIntervalSinceReferenceDate(0), u"date");
    all.setObject_forKey(NSDate::dateWithTimeIntervalSinceReferenceDate(1e15), u"far date");
    all.setObject_forKey(NSURL::URLWithString_relativeToURL(u"b", NSURL::URLWithString(u"http://h/a")),
                         u"url");
    all.setObject_forKey(NSSize{612, 0.5f}, u"size");
    all.setObject_forKey(NSColor{0, 0.25f, 1, 0.5f}, u"color");
    all.setObject_forKey(NSArray::arrayWithObjects({u"\x1B\"", NSData::data()}), u"array");
    all.setObject_forKey(u"by number", NSNumber::numberWithInt(7));
    EXPECT_EQ(
        lineOfJSON(all, {written, "out"}),
        R"({"null":null,"bool":true,"data":{"bytes":2,"base64":"AAE="},"file":{"bytes":7,"file":"out"},)"
        R"("date":"2001-01-01T00:00:00Z","far date":"1e+15","url":"http://h/b","size":"{612, 0.5}",)"
        R"("color":{"red":0.0,"green":0.25,"blue":1.0,"alpha":0.5},)"
        R"("array":["\u001b\"",{"bytes":0,"base64":""}],"7":"by number"})"
        "\n");
    EXPECT_EQ(lineOfJSON(nullptr), "null\n");
}

TEST(TextView, LinesForPeople) {
    NSMutableDictionary inner = NSMutableDictionary::dictionary();
    inner.setObject_forKey(NSNumber::numberWithFloat(1.5f), u"Depth");
    NSMutableDictionary all = NSMutableDictionary::dictionary();
    all.setObject_forKey(u"one\r\n\ntwo \x1B[31m", u"String");
    all.setObject_forKey(NSNumber::numberWithBool(false), u"Alpha");
    all.setObject_forKey(inner, u"Properties");
    all.setObject_forKey(NSArray::arrayWithObjects({u"x", u"y"}), u"Keywords");
    all.setObject_forKey(NSData::dataWithBytes("12"), u"Thumbnail");
    const Output nowhere(-1);
    EXPECT_EQ(textOfResult(all, {all.objectForKey(u"Thumbnail").data(), "t\n.tiff"}, nowhere),
              "String\n    one\n\n    two \\x1B[31m\nAlpha       no\nProperties\n    Depth  1.5\n"
              "Keywords\n    -  x\n    -  y\nThumbnail   2 bytes, written to t\\x0A.tiff\n");
    EXPECT_EQ(firstLines(u"\n  one\n\n \ttwo\tcells\fthree", 2, 40),
              (std::vector<std::string>{"one", "two cells"}));
    EXPECT_EQ(firstLines(u"ab\U0001F600c", 1, 3), std::vector<std::string>{"ab…"});
}

TEST(RichTextView, PicturesAreNamedEachTimeTheyAreShown) {
    const auto package = NSFileWrapper::initDirectory();
    const auto add = [&](const char16_t* name, const std::string& contents) {
        const auto file = NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytes(contents));
        file->setPreferredFilename(name);
        package->addFileWrapper(file);
    };
    const std::string picture = "{{\\NeXTGraphic a.gif \\width180\\height180}\\'ac}";
    add(u"TXT.rtf",
        "{\\rtf1 Low" + picture + picture + "{{\\NeXTGraphic b.gif \\width180\\height180}\\'ac} water}");
    add(u"a.gif", "one");
    add(u"b.gif", "two");
    EXPECT_EQ(textOfRichText(package->serializedRepresentation()), u"Low[a.gif][a.gif][b.gif] water");
    EXPECT_TRUE(textOfRichText(NSData::dataWithBytes("no rich text")).isNil());
}

} // namespace
} // namespace kelvo::cli
