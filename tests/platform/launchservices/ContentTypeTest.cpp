#include "platform/launchservices/LaunchServices.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSLog.h"
#include "platform/launchservices/ContentSniffing.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"
#include "support/ZipPackage.h"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <tuple>

namespace kelvo {
namespace {

using namespace std::string_literals;

std::string typeOf(const std::string& path) {
    const NSString type = LSCopyItemAttribute(
        NSFileManager::defaultManager().stringWithFileSystemRepresentation(path), kLSItemContentType);
    return type.isNil() ? "(nil)" : type.UTF8String();
}

/// Its directory, in sector 1, has the stream as its second entry.
std::string compoundFile(const std::string& stream) {
    std::string bytes = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + std::string(1656, '\0');
    bytes[30] = 9;
    bytes[48] = 1;
    for (std::size_t index = 0; index < stream.size(); ++index)
        bytes[1024 + 128 + 2 * index] = stream[index];
    return bytes;
}

std::string appleDouble(const std::string& code) {
    return "\0\5\x16\7\0\2\0\0"s + std::string(16, '\0') + "\0\1\0\0\0\x9\0\0\0\x26\0\0\0\x20"s + code +
           std::string(28, '\0');
}

TEST(ContentType, OfFiles) {
    const std::string png = "\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR"s;
    const std::string text = "Dear reader\n";
    const std::string cover = "[Content_Types].xml";
    const std::tuple<const char*, std::string, const char*> rows[] = {
        // By their names, whatever they hold.
        {"a.PDF", text, "com.adobe.pdf"},
        {"b.tar.gz", text, "org.gnu.gnu-zip-tar-archive"},
        {"c.b.TAR.GZ", text, "org.gnu.gnu-zip-tar-archive"},
        {"d.1.gz", text, "org.gnu.gnu-zip-archive"},
        {".tar.gz", text, "org.gnu.gnu-zip-archive"},
        {"e.pages", text, "com.apple.iWork.Pages.sffpages"},
        {"f.rtfd", "", "com.apple.flat-rtfd"},
        {"g.chm", "", "com.microsoft.chm-archive"},
        {"h.fods", "", "org.oasis-open.opendocument.spreadsheet-flat-xml"},
        // By their contents.
        {"png", png, "public.png"},
        {"png.unknown", png, "public.png"},
        {"Dear Mr. Smith", png, "public.png"},
        {"pdf", "%PDF-1.4\n", "com.adobe.pdf"},
        {"eps", "%!PS-Adobe-3.0 EPSF-3.0\n", "com.adobe.encapsulated-postscript"},
        {"script", "#!/bin/sh\n", "public.shell-script"},
        {"python", "#! /usr/bin/env python3\n", "public.python-script"},
        {"feed", "<?xml version='1.0'?><feed xmlns='http://www.w3.org/2005/Atom'>", "public.xml"},
        {"picture of no known sort", "gimp xcf file\0\0\0"s, "public.image"},
        {"movie of no known sort", "\0\0\0\x18"s + "ftypzzzz\0\0\0\0"s, "public.movie"},
        {"odt", tests::zipPackage({{"mimetype", "application/vnd.oasis.opendocument.text-template"}}),
         "org.oasis-open.opendocument.text-template"},
        {"fodt", tests::flatOpenDocument(""), "org.oasis-open.opendocument.text-flat-xml"},
        {"docx", tests::zipPackage({{cover, ""}, {"word/a", ""}}),
         "org.openxmlformats.wordprocessingml.document"},
        {"xlsx", tests::zipPackage({{cover, ""}, {"xl/a", ""}}), "org.openxmlformats.spreadsheetml.sheet"},
        {"zip", tests::zipPackage({{"xl/a", ""}}), "public.zip-archive"},
        {"xls", compoundFile("Workbook"), "com.microsoft.excel.xls"},
        {"ppt", compoundFile("PowerPoint Document"), "com.microsoft.powerpoint.ppt"},
        {"old xls", compoundFile("Book"), "com.microsoft.excel.xls"},
        {"compound", compoundFile("Books"), "public.data"},
        // By nothing.
        {"text", text, "public.data"},
        {"empty", "", "public.data"},
        {"a.xyz", text, "dyn.ah62d4rv4ge81u8p4"},
        {"A.XYZ", "", "dyn.ah62d4rv4ge81u8p4"},
        {".hidden", text, "public.data"},
        {"Dear Mr. Jones", text, "public.data"},
        {"comment", "/* text */\n", "public.data"},
        {"text that begins like a picture", "BM of 1997: xxxxxxxxx\n", "public.data"},
        {"not.UTF-\xE9", text, "dyn.ah62d4rv4ge81n7dgf1yu"},
    };
    const tests::TemporaryFolder folder;
    for (const auto& [name, contents, type] : rows)
        EXPECT_EQ(typeOf(folder.write(name, contents)), type) << name;

    const std::string program = folder.write("program", text);
    ::chmod(program.c_str(), 0755);
    EXPECT_EQ(typeOf(program), "public.unix-executable");
    const std::string code = folder.write("code.xyz", png);
    folder.write("._code.xyz", appleDouble("GIFf"));
    EXPECT_EQ(typeOf(code), "com.compuserve.gif");
    folder.write("._code.xyz", appleDouble("????"));
    EXPECT_EQ(typeOf(code), "public.png");
    const std::string unreadable = folder.write("unreadable.xyz", png);
    ::chmod(unreadable.c_str(), 0);
    EXPECT_EQ(typeOf(unreadable), ::geteuid() == 0 ? "public.png" : "dyn.ah62d4rv4ge81u8p4");
}

TEST(ContentType, OfFoldersLinksAndPipes) {
    const tests::TemporaryFolder folder;
    folder.write("Plain/a", "");
    folder.write("Named.pdf/a", "");
    folder.write("Text.RTFD/a", "");
    folder.write("Rich text/TXT.rtf", "{\\rtf1}");
    folder.write("Some.framework/a", "");
    folder.write("Some.xyz/Contents/Info.plist", "");
    folder.write("a.png", "");
    std::filesystem::create_symlink("a.png", folder.path("link"));
    std::filesystem::create_symlink("nothing", folder.path("a.gif"));
    std::filesystem::create_symlink("Plain", folder.path("b.gif"));
    ::mkfifo(folder.path("pipe.png").c_str(), 0600);
    const std::tuple<const char*, const char*> rows[] = {
        {"Plain", "public.folder"},
        {"Plain/", "public.folder"},
        {"Named.pdf", "public.folder"},
        {"Text.RTFD", "com.apple.rtfd"},
        {"Text.RTFD/", "com.apple.rtfd"},
        {"Rich text", "com.apple.rtfd"},
        {"Some.framework", "com.apple.framework"},
        {"link", "public.data"},
        {"a.gif", "(nil)"},
        {"b.gif", "public.folder"},
        {"pipe.png", "public.item"},
        {"missing.png", "(nil)"},
        {"../../../../../../../proc", "public.volume"},
    };
    for (const auto& [name, type] : rows)
        EXPECT_EQ(typeOf(folder.path(name)), type) << name;
    EXPECT_EQ(typeOf("/"), "public.volume");
    EXPECT_TRUE(typeOf(folder.path("Some.xyz")).starts_with("dyn."));
    EXPECT_EQ(LSCopyItemAttribute(nullptr, kLSItemContentType), nullptr);
    EXPECT_EQ(LSCopyItemAttribute(u"/", u"LSItemSize"), nullptr);
}

struct MagicRow {
    const char* name;
    std::string rules;
    std::string bytes;
    const char* type;
};

std::string magicFile(const std::string& rules) {
    return "MIME-Magic\0\n"s + rules;
}

TEST(MIMEMagic, Rules) {
    const std::string png = "[40:image/png]\n>1=\0\3PNG\n"s;
    const std::string either = "[50:a/b]\n>0=\0\1a\n1>1=\0\1b\n2>2=\0\1c\n1>1=\0\1d\n>0=\0\1z\n"s;
    const MagicRow rows[] = {
        {"at its place", png, "xPNG", "image/png"},
        {"not there", png, "PNG", ""},
        {"the end of it missing", png, "xPN", ""},
        {"nothing", png, "", ""},
        {"a line feed in it", "[50:a/b]\n>0=\0\3a\n[\n"s, "a\n[", "a/b"},
        {"first of the places", "[50:a/b]\n>2=\0\2ab+3\n"s, "xxab", "a/b"},
        {"last of the places", "[50:a/b]\n>2=\0\2ab+3\n"s, "xxxxabx", "a/b"},
        {"past the places", "[50:a/b]\n>2=\0\2ab+3\n"s, "xxxxxab", ""},
        {"under a mask", "[50:a/b]\n>0=\0\2\x10\0&\xF0\0+2\n"s, "x\x1F"s + "y", "a/b"},
        {"masked bytes differ", "[50:a/b]\n>0=\0\2\x10\0&\xF0\0\n"s, " y", ""},
        {"words of the machine", "[50:a/b]\n>0=\0\4\1\2\3\4~2\n"s, "\2\1\4\3", "a/b"},
        {"below, first", either, "abc", "a/b"},
        {"below, second", either, "ad", "a/b"},
        {"below, not to the bottom", either, "ab", ""},
        {"below, not without what is above", either, "xd", ""},
        {"beside", either, "z", "a/b"},
        {"the first type", png + "[50:a/b]\n>1=\0\1P\n"s, "xPNG", "image/png"},
        {"a weak rule", "[39:a/b]\n>1=\0\1P\n"s + png, "xPNG", "image/png"},
    };
    for (const MagicRow& row : rows)
        EXPECT_EQ(MIMEMagic(magicFile(row.rules), 40).typeOfBytes(row.bytes), row.type) << row.name;
}

// What is in order before the fault counts, and nothing after it.
TEST(MIMEMagic, BrokenFiles) {
    const std::string good = "[50:a/a]\n>0=\0\1a\n"s;
    const std::string broken[] = {
        "[50:a/b]\n>0=\xFF\xFFx\n",
        "[50:a/b]\n>0=\0\1"s,
        "[50:a/b]\n>0=\0\1b&"s,
        "[50:a/b]\n>0=\0"s,
        "[50:a/b]\n>0=\0\0\n>0=\0\1b\n"s,
        "[50:a/b]\n1>0=\0\1b\n"s,
        "[50:a/b]\n>0=\0\1b\n2>0=\0\1b\n"s,
        "[50:a/b]\n>99999999999999999999=\0\1b\n"s,
        "[50:a/b]\n>0=\0\1b+\n"s,
        "[50:a/b]\n>0=\0\1b+0\n"s,
        "[50:a/b]\n>0=\0\1b~0\n"s,
        "[50:a/b]\n>0=\0\2bb~4\n"s,
        "[50:a/b]\n>0=\0\1bb\n"s,
        "[50:a/b>0=\0\1b\n"s,
        "[:a/b]\n>0=\0\1b\n"s,
        "[50:a/b]\n>=\0\1b\n"s,
    };
    for (const std::string& fault : broken) {
        const MIMEMagic magic(magicFile(good + fault + "[50:a/c]\n>0=\0\1c\n"s), 0);
        EXPECT_EQ(magic.typeOfBytes("a"), "a/a") << fault;
        EXPECT_EQ(magic.typeOfBytes("bb"), "") << fault;
        EXPECT_EQ(magic.typeOfBytes("c"), "") << fault;
    }
    EXPECT_TRUE(MIMEMagic(good, 0).isEmpty());
    const NSLogCapture log;
    const tests::TemporaryFolder folder;
    const MIMEDatabase nothing(folder.path());
    EXPECT_EQ(typeOfContents(FileContents("%PDF-1.4\n"), nothing), u"com.adobe.pdf");
    EXPECT_EQ(typeOfContents(FileContents("#!/bin/sh\n"), nothing), nullptr);
}

TEST(MIMEDatabase, NamesLeadToTypes) {
    const tests::TemporaryFolder folder;
    folder.write("magic", magicFile("[50:application/pdf]\n>0=\0\3GIF\n[50:a/named]\n>0=\0\1A\n"
                                    "[50:a/old]\n>0=\0\1O\n[50:a/cycle]\n>0=\0\1C\n[50:a/deep]\n>0=\0\1D\n"
                                    "[50:a/text]\n>0=\0\1T\n[50:image/x-new]\n>0=\0\1I\n"
                                    "[50:a/song]\n>0=\0\1S\n[39:image/gif]\n>0=\0\1W\n"s));
    folder.write("aliases", "application/pdf a/named\nbroken\n\na/old image/gif\nimage/png a/grandparent");
    folder.write("subclasses", "a/cycle a/cycle2\na/cycle2 a/cycle\na/deep a/parent\na/parent a/grandparent\n"
                               "a/text text/plain\na/song audio/x-any\n");
    const MIMEDatabase database(folder.path());
    const std::tuple<const char*, std::string, const char16_t*> rows[] = {
        {"another name", "A\0"s, u"com.adobe.pdf"},
        {"an old name", "O\0"s, u"com.compuserve.gif"},
        {"a kind of itself", "C\0"s, nullptr},
        {"a kind of a kind", "D\0"s, u"public.png"},
        {"a text", "T\0"s, nullptr},
        {"an unknown picture", "I\0"s, u"public.image"},
        {"a kind of an unknown sound", "S\0"s, u"public.audio"},
        {"a weak rule", "W\0"s, nullptr},
        {"text that begins like something", "D is a letter", nullptr},
        {"a picture, whatever the rules say", "GIF89a\0"s, u"public.image"},
    };
    for (const auto& [name, contents, type] : rows)
        EXPECT_EQ(typeOfContents(FileContents(contents), database), type) << name;
}

} // namespace
} // namespace kelvo
