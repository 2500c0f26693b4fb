#include "platform/appkit/documents/DocumentKind.h"

#include "platform/appkit/documents/PlainTextReading.h"
#include "support/OfficeDocuments.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

using namespace std::string_literals;

struct KindRow {
    const char* name;
    std::string bytes;
    DocumentKind kind;
    const char16_t* path = u"/a/b.txt";
};

std::string compoundFile(const std::string& stream) {
    std::string directory;
    for (const char letter : stream)
        directory += {letter, '\0'};
    return "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + std::string(504, '\0') + directory + std::string(64, '\0');
}

std::string utf16(const std::string& ascii, bool isBigEndian) {
    std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char letter : ascii)
        bytes += isBigEndian ? std::string{'\0', letter} : std::string{letter, '\0'};
    return bytes;
}

TEST(DocumentKind, ContentsDecide) {
    const std::string archive =
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>WebMainResource</key>";
    const KindRow rows[] = {
        {"empty", "", DocumentKind::plainText, u"/a/b.docx"},
        {"text", "Dear reader\n", DocumentKind::plainText, u"/a/b.doc"},
        {"text that is no UTF-8", "na\xEFve\x1B[1m\r\n", DocumentKind::plainText},
        {"text behind a mark", "\xEF\xBB\xBF\0text"s, DocumentKind::plainText},
        {"text of 16 bits", utf16("Dear reader", false), DocumentKind::plainText},
        {"text of 32 bits", "\0\0\xFE\xFF\0\0\0A"s, DocumentKind::plainText},
        {"PostScript", "%!PS-Adobe-3.0\n", DocumentKind::plainText},
        {"RTF", "{\\rtf1 x}", DocumentKind::RTF},
        {"RTF in a .doc", "{\\rtf1 x}", DocumentKind::RTF, u"/a/b.doc"},
        {"serialised package", "rtfd\0\0\0\0\3\0\0\0"s, DocumentKind::RTFD},
        {"HTML", "<!DOCTYPE html><p>x", DocumentKind::HTML},
        {"HTML behind other things",
         "\xEF\xBB\xBF\r\n<?xml version=\"1.0\"?><!-- a --> <!-- b > -->\n<HTML lang=en>",
         DocumentKind::HTML},
        {"HTML of 16 bits", utf16("<html><body>", true), DocumentKind::HTML},
        {"a piece of HTML by its name", "<p>x</p>", DocumentKind::HTML, u"/a/b.HTM"},
        {"a piece of HTML", "<p>x</p>", DocumentKind::plainText},
        {"HTML in a text", "See <html>", DocumentKind::plainText},
        {"another element", "<headline>", DocumentKind::plainText},
        {"a comment without end", "<!-- <html>", DocumentKind::plainText},
        {"web archive", "bplist00\xD1\x01_\x10\x0FWebMainResource", DocumentKind::webArchive},
        {"web archive as XML", archive, DocumentKind::webArchive},
        {"another binary property list", "bplist00\xD1\x01", DocumentKind::none},
        {"MIME HTML",
         "From: <Saved>\r\nMIME-Version: 1.0\r\nContent-Type:\r\n\tmultipart/related; "
         "type=\"text/html\"\r\n\r\n",
         DocumentKind::MIMEHTML},
        {"a letter", "MIME-Version: 1.0\nContent-Type: multipart/alternative\n\n", DocumentKind::plainText},
        {"about MIME", "Hello\n\nMIME-Version: 1.0\nContent-Type: text/html\n\n", DocumentKind::plainText},
        {"docx", tests::officeOpenXML("x", "t"), DocumentKind::officeOpenXML, u"/a/b.zip"},
        {"odt", tests::openDocument("<text:p/>"), DocumentKind::openDocument},
        {"odt as XML", tests::flatOpenDocument("<text:p/>"), DocumentKind::flatOpenDocument, u"/a/b.xml"},
        {"sxw", tests::openOfficeText("x"), DocumentKind::openOfficeText},
        {"WordML", tests::wordML("x"), DocumentKind::wordML, u"/a/b.xml"},
        {"spreadsheet", tests::zipPackage({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"}}),
         DocumentKind::none, u"/a/b.odt"},
        {"slides", tests::zipPackage({{"[Content_Types].xml", ""}, {"ppt/word/x.xml", ""}}),
         DocumentKind::none},
        {"zip file", tests::zipPackage({{"word.txt", "x"}}), DocumentKind::none, u"/a/b.docx"},
        {"empty zip file", tests::zipPackage({}), DocumentKind::none},
        {"doc", compoundFile("WordDocument"), DocumentKind::wordDocument},
        {"encrypted package", compoundFile("EncryptedPackage"), DocumentKind::none, u"/a/b.docx"},
        {"PDF", "%PDF-1.4\n", DocumentKind::none},
        {"PNG", tests::smallPNG(), DocumentKind::none},
        {"one NUL", "text\0text"s, DocumentKind::none},
        {"control characters in no encoding", "\x80\x02\x03", DocumentKind::none},
    };
    for (const KindRow& row : rows)
        EXPECT_EQ(kindOfDocument(row.bytes, row.path), row.kind) << row.name;
}

TEST(DocumentKind, ABrokenPackageIsNone) {
    const std::string whole = tests::openDocument("<text:p/>");
    for (std::size_t length = 4; length < whole.size(); ++length)
        EXPECT_EQ(kindOfDocument(std::string_view(whole).substr(0, length), nullptr), DocumentKind::none)
            << length;
    // Every number of the directory, pointing anywhere.
    for (std::size_t place = 4; place < whole.size(); ++place) {
        std::string broken = whole;
        broken[place] = '\xFF';
        kindOfDocument(broken, nullptr);
        broken.replace(place, std::min<std::size_t>(4, broken.size() - place), 4, '\xFF');
        kindOfDocument(broken, nullptr);
    }
}

TEST(PlainText, EncodingsInTheirOrder) {
    struct Row {
        const char* name;
        std::string bytes;
        const char16_t* text;
        NSStringEncoding encoding;
    };
    const Row rows[] = {
        {"empty", "", u"", NSUTF8StringEncoding},
        {"UTF-8", "\xC3\xA4\r\n", u"\u00E4\r\n", NSUTF8StringEncoding},
        {"UTF-8 with a mark", "\xEF\xBB\xBF\xC3\xA4\xC3", u"\u00E4\uFFFD", NSUTF8StringEncoding},
        {"UTF-16, big", "\xFE\xFF\x20\xAC"s, u"\u20AC", NSUnicodeStringEncoding},
        {"UTF-16, little, cut off", "\xFF\xFE\xAC\x20\x41"s, u"\u20AC", NSUnicodeStringEncoding},
        {"UTF-32, little", "\xFF\xFE\0\0\xAC\x20\0\0"s, u"\u20AC", NSUTF32StringEncoding},
        {"UTF-32, big", "\0\0\xFE\xFF\0\x01\xF6\0\0"s, u"\U0001F600", NSUTF32StringEncoding},
        {"Windows Latin 1", "\x80\xE4", u"\u20AC\u00E4", NSWindowsCP1252StringEncoding},
    };
    for (const Row& row : rows) {
        NSStringEncoding encoding = 0;
        EXPECT_EQ(stringWithPlainText(NSData::dataWithBytes(row.bytes), &encoding), NSString(row.text))
            << row.name;
        EXPECT_EQ(encoding, row.encoding) << row.name;
    }
    // Whatever the bytes, they are a text.
    NSStringEncoding encoding = 0;
    for (int byte = 0x80; byte <= 0xFF; ++byte)
        EXPECT_EQ(
            stringWithPlainText(NSData::dataWithBytes(std::string(1, static_cast<char>(byte))), &encoding)
                .length(),
            1U)
            << byte;
    EXPECT_TRUE(stringWithPlainText(NSData::dataWithBytes("\0\0\xFE\xFF\x7F\0\0\0"s), &encoding).isNil());
    EXPECT_TRUE(stringWithPlainText(nullptr, &encoding).isNil());
}

} // namespace
} // namespace kelvo
