#include "platform/filekinds/FileKind.h"

#include "platform/foundation/NSPathUtilities.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace kelvo {
namespace {

using namespace std::string_literals;

/// Of two sectors, of which the first is the directory.
std::string compoundFile(const std::string& stream) {
    std::string bytes(3 * 512, '\0');
    bytes.replace(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
    bytes[30] = 9;
    for (std::size_t place = 0; place < stream.size(); ++place)
        bytes[512 + 2 * place] = stream[place];
    return bytes;
}

std::string utf16(const std::string& ascii, bool isBigEndian) {
    std::string bytes = isBigEndian ? "\xFE\xFF" : "\xFF\xFE";
    for (const char letter : ascii)
        bytes += isBigEndian ? std::string{'\0', letter} : std::string{letter, '\0'};
    return bytes;
}

using enum FileKind;

FileKind kindOf(const std::string& bytes, const char16_t* name) {
    return kindOfContents(FileContents(bytes), name);
}

struct KindRow {
    const char* name;
    std::string bytes;
    FileKind kind;
    const char16_t* fileName = u"/a/b.txt";
};

void expectKinds(std::initializer_list<KindRow> rows) {
    for (const KindRow& row : rows)
        EXPECT_EQ(kindOf(row.bytes, row.fileName), row.kind) << row.name;
}

const std::string archiveBeginning =
    "<?xml version=\"1.0\"?><!DOCTYPE plist><plist version=\"1.0\"><dict><key>WebSubresources</key>";

TEST(FileKind, Texts) {
    expectKinds({
        {"empty", "", plainText, u"/a/b.docx"},
        {"by no name", "Dear reader\n", plainText, nullptr},
        {"not what its name says", "Dear reader\n", plainText, u"/a/b.doc"},
        {"nor a picture", "II* 8BPS\n", plainText, u"/a/b.tiff"},
        {"no UTF-8", "na\xEFve\x1B[1m\r\n", plainText},
        {"a mark, then anything", "\xEF\xBB\xBF\0text"s, plainText},
        {"of 16 bits", utf16("Dear reader", false), plainText},
        {"of 32 bits", "\0\0\xFE\xFF\0\0\0A"s, plainText},
        {"of 32 bits, little, is no markup", "\xFF\xFE\0\0<\0\0\0"s, plainText},
        {"about a PDF", "It begins with %PDF-1.4.", plainText, u"/a/b.pdf"},
        {"about a tag of music", "ID3 is one", plainText, u"/a/b.mp3"},
        {"about a compressed file", "BZh\xE9", plainText},
        {"about an archive", "The key is WebMainResource", plainText, u"/a/b.webarchive"},
        {"a character cut at the end of what is looked at",
         "\x07" + std::string((1 << 20) - 3, 'a') + "\xE5\xB8\x86", plainText},
        {"a character cut at the end of all", "\x07" + std::string(100, 'a') + "\xE5\xB8\x86\xE5\xB8", other},
        {"one NUL", "text\0text"s, other},
        {"control characters in no encoding", "\x80\x02\x03", other},
    });
}

TEST(FileKind, Markup) {
    expectKinds({
        {"HTML", "<!DOCTYPE html><p>x", HTML},
        {"HTML after other things",
         "\xEF\xBB\xBF\r\n<?xml version=\"1.0\"?><!-- a --> <!-- b > -->\n<HTML lang=en>", HTML},
        {"HTML of 16 bits", utf16("<html><body>", true), HTML},
        {"HTML on WordML", "<body>http://schemas.microsoft.com/office/word/2003/wordml worddocument", HTML},
        {"a piece of HTML by its name", "<p>x</p>", HTML, u"/a/b.HTM"},
        {"a piece of HTML", "<p>x</p>", plainText},
        {"HTML in a text", "See <html>", plainText},
        {"another element", "<headline>", plainText},
        {"XML with a header", "<?xml version='1.0'?><feed><header/><html/></feed>", plainText, u"/a/b.xml"},
        {"a comment without end", "<!-- <html>", plainText},
        {"SVG", "<?xml version='1.0'?><!-- x --><svg>", SVG},
        {"SVG with entities", "<!DOCTYPE svg [<!ENTITY a 'b'>]><svg:svg>", SVG},
        {"SVG in a page", "<html><svg>", HTML, u"/a/b.svg"},
        {"a web archive", archiveBeginning, webArchive},
        {"a web archive that begins with its contents",
         "<plist><string>" + std::string(3 << 20, 'A') + archiveBeginning, webArchive},
        {"another property list", "<plist><dict><key>x</key>", plainText},
        {"another file with such words", "<list>WebMainResource <plist>", plainText},
        {"flat OpenDocument", tests::flatOpenDocument("<text:p/>"), flatOpenDocument, u"/a/b.xml"},
        {"a flat spreadsheet",
         "<office:document office:mimetype=\"application/vnd.oasis.opendocument.spreadsheet\">", plainText,
         u"/a/b.fodt"},
        {"WordML", tests::wordML("x"), wordML, u"/a/b.xml"},
        {"MIME HTML",
         "From: <Saved>\r\nMIME-Version: 1.0\r\nContent-Type:\r\n\tmultipart/related; "
         "type=\"text/html\"\r\n\r\n",
         MIMEHTML},
        {"MIME HTML alone", "MIME-Version: 1.0\nContent-Type: text/html\n\n<html>", MIMEHTML},
        {"a letter", "MIME-Version: 1.0\nContent-Type: multipart/alternative\n\nContent-Type: text/html",
         plainText, u"/a/b.mht"},
        {"about MIME", "Hello\n\nMIME-Version: 1.0\nContent-Type: text/html\n\n", plainText},
    });
}

TEST(FileKind, PackagesAndContainers) {
    expectKinds({
        {"docx", tests::officeOpenXML("x", "t"), officeOpenXML, u"/a/b.zip"},
        {"odt", tests::openDocument("<text:p/>"), openDocument},
        {"odt without its type", tests::zipPackage({{"content.xml", ""}, {"META-INF/manifest.xml", ""}}),
         openDocument},
        {"sxw", tests::openOfficeText("x"), openOfficeText},
        {"spreadsheet",
         tests::zipPackage({{"mimetype", "application/vnd.oasis.opendocument.spreadsheet"},
                            {"content.xml", ""},
                            {"META-INF/manifest.xml", ""}}),
         spreadsheet, u"/a/b.odt"},
        {"slides", tests::zipPackage({{"[Content_Types].xml", ""}, {"ppt/word/x.xml", ""}}), presentation},
        {"book", tests::zipPackage({{"mimetype", "application/epub+zip"}, {"word/x", ""}}), book},
        {"zip file", tests::zipPackage({{"word.txt", "x"}}), archive, u"/a/b.docx"},
        {"empty zip file", tests::zipPackage({}), archive},
        {"large zip file", "PK\3\4PK\5\6" + std::string(8, '\0') + std::string(8, '\xFF') + "\0\0"s, archive},
        {"zip with its place moved", "PK\3\4" + tests::officeOpenXML("x", "t"), officeOpenXML},
        {"zip with a long comment", tests::officeOpenXML("x", "t") + std::string(0xFFFF, ' '), officeOpenXML},
        {"zip with more than a comment", tests::officeOpenXML("x", "t") + std::string(0x10000, ' '),
         damagedPackage},
        {"doc", compoundFile("WordDocument"), wordDocument},
        {"doc with its directory far off, across pieces",
         compoundFile("").substr(0, 512) + std::string((1 << 20) - 522, '\0') +
             compoundFile("WordDocument").substr(512),
         wordDocument},
        {"encrypted package", compoundFile("EncryptedPackage"), encryptedPackage, u"/a/b.docx"},
        {"spreadsheet of old", compoundFile("Book"), spreadsheet, u"/a/b.doc"},
        {"another compound file", compoundFile("Contents"), other, u"/a/b.doc"},
        {"a compound file that ends before its directory", compoundFile("").substr(0, 1023), damagedPackage},
        {"binary web archive", "bplist00\xD1\x01_\x10\x0FWebMainResource", webArchive},
        {"another binary property list", "bplist00\xD1\x01", other, u"/a/b.webarchive"},
        {"RTF in a .doc", "{\\rtf1 x}", RTF, u"/a/b.doc"},
        {"serialised package", "rtfd\0\0\0\0\3\0\0\0"s, RTFD},
    });
}

TEST(FileKind, BinaryData) {
    expectKinds({
        {"PDF", "%PDF-1.4\n", PDF},
        {"PDF after a text", "HTTP/1.1 200\n\n%PDF-1.4\n1 0 obj\n%%EOF\n", PDF},
        {"PDF after binary data", "\0\1\2%PDF-1.4\n"s, PDF},
        {"PDF too far on", std::string(1020, '\0') + "%PDF-1.4", other},
        {"PostScript", "%!PS-Adobe-3.0\n", postScript},
        {"PostScript with a preview", "\xC5\xD0\xD3\xC6\x1E", postScript},
        {"PostScript by its name", "@PJL\n%!\n", postScript, u"/a/b.ps"},
        {"PNG", tests::smallPNG(), image},
        {"WebP", "RIFF\0\0\0\0WEBP"s, image},
        {"sound", "RIFF\0\0\0\0WAVE"s, audio},
        {"another RIFF by its name", "RIFF\0\0\0\0ACON"s, movie, u"/a/b.AVI"},
        {"HEIC", "\0\0\0\040ftypheic"s, image},
        {"sound in a movie file", "\0\0\0\040ftypM4A "s, audio, u"/a/b.mp4"},
        {"movie", "\0\0\0\040ftypqt  "s, movie},
        {"movie by its name", "\0\0\0\0"s, movie, u"/a/b.mov"},
        {"name and dot only", "\0\0\0\0"s, other, u"/folder.pdf/.png"},
        {"compressed", "BZh91AY&SY", archive},
        {"a page by its name alone", "\0<p>"s, other, u"/a/b.html"},
    });
}

TEST(FileKind, ABrokenPackageSaysSo) {
    const std::string whole = tests::openDocument("<text:p/>");
    for (std::size_t length = 4; length < whole.size(); ++length)
        EXPECT_EQ(kindOf(whole.substr(0, length), nullptr), damagedPackage) << length;
    // Every number of the directory, pointing anywhere.
    for (std::size_t place = 4; place < whole.size(); ++place) {
        std::string broken = whole;
        broken[place] = '\xFF';
        kindOf(broken, nullptr);
        broken.replace(place, std::min<std::size_t>(4, broken.size() - place), 4, '\xFF');
        kindOf(broken, nullptr);
    }
}

TEST(FileKind, OnTheDisk) {
    const tests::TemporaryFolder folder;
    folder.write("package/TXT.rtf", "");
    folder.write("no package.rtfd/TXT.rtf/x", "");
    folder.write("pdf\xFF", "%PDF-1");
    ASSERT_EQ(mkfifo(folder.path("pipe.html").c_str(), 0600), 0);
    const std::string package = tests::officeOpenXML("x", std::string(3 << 20, 't'));
    folder.write("large.docx", package);
    EXPECT_EQ(kindOf(package, nullptr), officeOpenXML);
    // Nobody could read all of these.
    for (const auto& [name, beginning] :
         {std::pair("movie", "\0\0\0\024ftypqt  "s), std::pair("text", "\xEF\xBB\xBF<html>"s)})
        std::filesystem::resize_file(folder.write(name, beginning), std::uintmax_t{1} << 40);
    const std::pair<const char16_t*, FileKind> rows[] = {
        {u"package", RTFD},       {u"no package.rtfd/", FileKind::folder},
        {u"pdf\xDCFF", PDF},      {u"pipe.html", other},
        {u"missing.html", other}, {u"large.docx", officeOpenXML},
        {u"movie", movie},        {u"text", HTML},
    };
    const NSString root = NSString::stringWithUTF8String(folder.path());
    const auto begin = std::chrono::steady_clock::now();
    for (const auto& [name, kind] : rows)
        EXPECT_EQ(kindOfFile(stringByAppendingPathComponent(root, name)), kind)
            << NSString(name).UTF8String();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
    EXPECT_EQ(kindOfFile(nullptr), other);
}

} // namespace
} // namespace kelvo
