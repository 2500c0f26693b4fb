#include "importers/archives/ArchiveImport.h"

#include "support/Attributed.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace kelvo::importers {
namespace {

using namespace std::string_literals;
using tests::Attributed;
using tests::attributesOf;
using tests::one;

/// What bsdtar makes of two files in a folder.
class Packed {
public:
    Packed() {
        folder_.write("in/a.txt", std::string(1000, 'a'));
        folder_.write("in/sub/é.txt", "b");
    }
    std::string file(const std::string& name, const std::string& options) const {
        return made(name,
                    "bsdtar -cf ../" + name + ".made " + options + " a.txt sub && cat ../" + name + ".made");
    }
    std::string made(const std::string& name, const std::string& command) const {
        const std::string line =
            "cd " + folder_.path("in") + " && LC_ALL=C.UTF-8 " + command + " > ../" + name;
        return std::system(line.c_str()) == 0 ? folder_.read(name) : "";
    }

private:
    tests::TemporaryFolder folder_;
};

/// A file without compression in a zip file, with the directory at the end. `flags` 0x800: the name is UTF-8.
std::string zipOf(const std::string& name, int flags = 0) {
    const auto number = [](std::size_t value, int bytes) {
        std::string text;
        for (; bytes-- > 0; value >>= 8)
            text += static_cast<char>(value & 0xFF);
        return text;
    };
    // CRC-32 of "x", and its length, twice.
    const std::string facts = number(0x8CDC1683, 4) + number(1, 4) + number(1, 4) + number(name.size(), 2);
    const std::string head =
        number(20, 2) + number(static_cast<std::size_t>(flags), 2) + std::string(6, '\0');
    const std::string file = "PK\3\4" + head + facts + number(0, 2) + name + "x";
    const std::string directory = "PK\1\2" + number(20, 2) + head + facts + std::string(16, '\0') + name;
    return file + directory + "PK\5\6" + number(0, 4) + number(1, 2) + number(1, 2) +
           number(directory.size(), 4) + number(file.size(), 4) + number(0, 2);
}

TEST(ArchiveImport, ListsEachFormat) {
    const Packed packed;
    const struct {
        const char* name;
        const char* type;
        const char* options;
    } rows[] = {
        {"a.zip", "public.zip-archive", "--format zip"},
        {"a.tar", "public.tar-archive", ""},
        {"a.tgz", "org.gnu.gnu-zip-tar-archive", "-z"},
        {"a.tar.gz", "org.gnu.gnu-zip-archive", "-z"},
        {"a.tbz2", "public.tar-bzip2-archive", "-j"},
        {"a.txz", "org.tukaani.tar-xz-archive", "-J"},
        {"a.tar.zst", "dyn.ah62d4rv4ge81y65y", "--zstd"},
        {"a.7z", "org.7-zip.7-zip-archive", "--format 7zip"},
        {"a.cpio", "public.cpio-archive", "--format newc"},
        {"a.pax", "public.cpio-archive", "--format pax"},
        {"a.iso", "public.iso-image", "--format iso9660"},
        {"a.xar", "com.apple.xar-archive", "--format xar"},
    };
    for (const auto& row : rows) {
        const Attributed attributes =
            attributesOf(importArchive, packed.file(row.name, row.options), row.type);
        EXPECT_EQ(one(attributes, "plumwick_files"), "2") << row.name;
        EXPECT_EQ(one(attributes, "plumwick_unpackedSize"), "1001") << row.name;
        EXPECT_NE(one(attributes, "TextContent").find("a.txt"), std::string::npos) << row.name;
        EXPECT_NE(one(attributes, "TextContent").find("sub/é.txt"), std::string::npos) << row.name;
        EXPECT_EQ(one(attributes, "note"), "absent") << row.name;
    }
}

TEST(ArchiveImport, NamesAreText) {
    const struct {
        const char* name;
        std::string file;
        const char* text;
    } rows[] = {
        {"UTF-8", zipOf("\xC3\xA9.txt", 0x800), "é.txt"},
        {"UTF-8 that does not say so", zipOf("\xC3\xA9.txt"), "é.txt"},
        {"DOS",
         zipOf("gr\x94\xE1"
               "e.txt"),
         "größe.txt"},
        {"Windows",
         zipOf("Stra\xDF"
               "e.txt"),
         "Straße.txt"},
        {"Cyrillic of DOS", zipOf("\x8F\xE0\xA8\xA2\xA5\xE2.txt"), "Привет.txt"},
        {"Cyrillic of Windows", zipOf("\xCF\xF0\xE8\xE2\xE5\xF2.txt"), "Привет.txt"},
        {"KOI8", zipOf("\xF0\xD2\xC9\xD7\xC5\xD4.txt"), "Привет.txt"},
        {"Shift JIS", zipOf("\x83\x74\x83\x40\x83\x43\x83\x8B.txt"), "ファイル.txt"},
        {"GBK", zipOf("\xD6\xD0\xCE\xC4\xCE\xC4\xBC\xFE.txt"), "中文文件.txt"},
        {"Big5", zipOf("\xA4\xA4\xA4\xE5\xC0\xC9\xAE\xD7.txt"), "中文檔案.txt"},
        {"EUC-KR", zipOf("\xB9\xAE\xBC\xAD.txt"), "문서.txt"},
        {"none", zipOf("a\xFF\xFE.txt"), "aÿþ.txt"},
        {"climbs", zipOf("../../x\n/y"), "../../x /y"},
        {"absolute", zipOf("/etc/passwd"), "/etc/passwd"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(one(attributesOf(importArchive, row.file, "public.zip-archive"), "TextContent"), row.text)
            << row.name;
}

TEST(ArchiveImport, SaysWhatKeepsItFromListing) {
    const Packed packed;
    const std::string zip = zipOf("x");
    const std::string gzip = packed.made("a.gz", "gzip -c a.txt");
    const std::string tar = packed.file("a.tar", "--format ustar");
    const struct {
        const char* name;
        std::string file;
        const char* type;
        const char* attribute;
        const char* value;
    } rows[] = {
        {"encrypted", zipOf("secret", 1), "public.zip-archive", "SecurityMethod", "Password Encrypted"},
        {"names of encrypted files", zipOf("secret", 1), "public.zip-archive", "TextContent", "secret"},
        {"a single file", gzip, "org.gnu.gnu-zip-archive", "TextContent", "a.txt"},
        {"size of a single file", gzip, "org.gnu.gnu-zip-archive", "plumwick_unpackedSize", "1000"},
        {"no archive in it", gzip, "org.gnu.gnu-zip-tar-archive", "note",
         "broken: the file is damaged, or no archive"},
        {"bytes before it", "a stub" + zip, "public.zip-archive", "TextContent", "x"},
        {"directory misplaced", zip.substr(0, zip.size() - 6) + "\xFF\0\0\0\0\0"s, "public.zip-archive",
         "TextContent", "x"},
        {"no directory", zip.substr(0, 32), "public.zip-archive", "note", "answered: the archive is damaged"},
        {"cut short", tar.substr(0, 1000), "public.tar-archive", "note", "answered: the archive is damaged"},
        {"empty", "", "public.zip-archive", "note", "broken: the file is damaged, or no archive"},
        {"text", "Dear Sir or Madam", "org.gnu.gnu-zip-archive", "note",
         "broken: the file is damaged, or no archive"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(one(attributesOf(importArchive, row.file, row.type), row.attribute), row.value) << row.name;
}

} // namespace
} // namespace kelvo::importers
