#include "importers/fonts/FontImport.h"

#include "support/Attributed.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::attributesOf;
using tests::one;

Attributed attributesOfFont(const std::string& file) {
    return attributesOf(importFont, file, "public.truetype-ttf-font");
}

std::string bigEndian(std::size_t value, int bytes) {
    std::string text;
    while (bytes-- > 0)
        text += static_cast<char>(value >> (8 * bytes) & 0xFF);
    return text;
}

struct Name {
    int platform;
    int encoding;
    int language;
    int number;
    std::string bytes;
};

std::string tableOfNames(const std::vector<Name>& names) {
    std::string records;
    std::string storage;
    for (const Name& name : names) {
        for (const int number : {name.platform, name.encoding, name.language, name.number})
            records += bigEndian(static_cast<std::size_t>(number), 2);
        records += bigEndian(name.bytes.size(), 2) + bigEndian(storage.size(), 2);
        storage += name.bytes;
    }
    return bigEndian(0, 2) + bigEndian(names.size(), 2) + bigEndian(6 + records.size(), 2) + records +
           storage;
}

/// A font of empty outlines, with these names and a letter for each character from U+0410 on, that begins at `start` of
/// its file.
std::string fontOf(const std::vector<Name>& names, std::size_t letters = 32, std::size_t start = 0) {
    const std::string head = bigEndian(0x10000, 4) + std::string(8, '\0') + bigEndian(0x5F0F3CF5, 4) +
                             bigEndian(0, 2) + bigEndian(1000, 2) + std::string(34, '\0');
    const std::string groups = bigEndian(12, 2) + bigEndian(0, 2) + bigEndian(28, 4) + bigEndian(0, 4) +
                               bigEndian(1, 4) + bigEndian(0x410, 4) + bigEndian(0x410 + letters - 1, 4) +
                               bigEndian(1, 4);
    const std::vector<std::pair<std::string, std::string>> tables = {
        {"OS/2", bigEndian(4, 2) + bigEndian(500, 2) + bigEndian(700, 2) + std::string(90, '\0')},
        {"cmap",
         bigEndian(0, 2) + bigEndian(1, 2) + bigEndian(3, 2) + bigEndian(10, 2) + bigEndian(12, 4) + groups},
        {"glyf", bigEndian(0, 4)},
        {"head", head},
        {"hhea", bigEndian(0x10000, 4) + std::string(30, '\0') + bigEndian(1, 2)},
        {"hmtx", bigEndian(500, 4)},
        {"loca", std::string(2 * (letters + 2), '\0')},
        {"maxp", bigEndian(0x5000, 4) + bigEndian(letters + 1, 2)},
        {"name", tableOfNames(names)},
    };
    std::string directory = bigEndian(0x10000, 4) + bigEndian(tables.size(), 2) + std::string(6, '\0');
    std::string contents;
    for (const auto& [tag, table] : tables) {
        directory += tag + bigEndian(0, 4) + bigEndian(start + 12 + 16 * tables.size() + contents.size(), 4) +
                     bigEndian(table.size(), 4);
        contents += table + std::string((4 - table.size() % 4) % 4, '\0');
    }
    return directory + contents;
}

std::string wide(const std::string& text) {
    std::string bytes;
    for (const char byte : text)
        bytes += {'\0', byte};
    return bytes;
}

TEST(FontImport, SetsWhatAFontSays) {
    const auto name = [](int number, const std::string& text) {
        return Name{3, 1, 0x409, number, wide(text)};
    };
    const std::string font =
        fontOf({name(0, "(c) Quay"), name(1, "Tide Bold"), name(2, "Regular"), name(4, "Tide Bold Text"),
                name(5, "Version 1.5"), name(6, "Tide-Bold"), name(7, "Tide(TM)"), name(8, "Quay"),
                name(9, "Ada"), name(10, "For signs"), name(11, "http://x.org"), name(13, "Free"),
                name(16, "Tide"), name(17, "Bold")});
    const Attributed expected{{"Title", "Tide Bold Text"},
                              {"Fonts", "<Tide Bold Text>"},
                              {"plumwick_fontFamilies", "<Tide>"},
                              {"plumwick_fontStyles", "<Bold>"},
                              {"plumwick_postScriptNames", "<Tide-Bold>"},
                              {"plumwick_fontWeight", "700"},
                              {"plumwick_glyphs", "33"},
                              {"plumwick_scripts", "<Cyrillic>"},
                              {"plumwick_trademark", "Tide(TM)"},
                              {"Version", "1.5"},
                              {"Copyright", "(c) Quay"},
                              {"Publishers", "<Quay>"},
                              {"Authors", "<Ada>"},
                              {"Description", "For signs"},
                              {"URL", "http://x.org"},
                              {"Rights", "Free"}};
    EXPECT_EQ(attributesOfFont(font), expected);
}

TEST(FontImport, ReadsWhatFontsComeAs) {
    const std::string font = fontOf({{3, 1, 0x409, 4, wide("x")}});
    const std::string header = "ttcf" + bigEndian(0x10000, 4) + bigEndian(2, 4);
    const struct {
        const char* name;
        std::string file;
        const char* attribute;
        const char* value;
    } rows[] = {
        {"English before others",
         fontOf({{3, 1, 0x407, 4, wide("de")}, {1, 0, 0, 4, "mac"}, {3, 1, 0x409, 4, wide("en")}}), "Title",
         "en"},
        {"in whatever order",
         fontOf({{3, 1, 0x409, 4, wide("en")}, {1, 0, 0, 4, "mac"}, {3, 1, 0x407, 4, wide("de")}}), "Title",
         "en"},
        {"for want of English", fontOf({{3, 1, 0x407, 4, wide("de")}}), "Title", "de"},
        {"Mac Roman", fontOf({{1, 0, 0, 4, "\x8A"}}), "Title", "ä"},
        {"Mac Japanese", fontOf({{1, 1, 11, 4, "\x83\x41"}}), "Title", "ア"},
        {"too few letters for a script", fontOf({{3, 1, 0x409, 4, wide("x")}}, 5), "plumwick_scripts",
         "absent"},
        {"no names", fontOf({}), "plumwick_glyphs", "33"},
        {"names past the end", fontOf({{3, 1, 0x409, 4, wide("x")}}).substr(0, font.size() - 3), "Title",
         "absent"},
        {"collection",
         header + bigEndian(20, 4) + bigEndian(20, 4) + fontOf({{3, 1, 0x409, 4, wide("x")}}, 32, 20),
         "Fonts", "<x>"},
        {"collection with its tables out of place", header + bigEndian(20, 4) + bigEndian(20, 4) + font,
         "note", "broken: the file is damaged, or no font"},
        {"tables cut off", font.substr(0, 200), "note", "broken: the file is damaged, or no font"},
        {"empty", "", "note", "broken: the file is damaged, or no font"},
        {"text", "Dear Sir or Madam", "note", "broken: the file is damaged, or no font"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(one(attributesOfFont(row.file), row.attribute), row.value) << row.name;
}

TEST(FontImport, AgreesWithFontconfig) {
    const std::string path = "/usr/share/fonts/truetype/liberation/LiberationSans-Bold.ttf";
    const std::string command = "fc-scan -f '%{fullname}|%{family}|%{style}|%{postscriptname}' " + path;
    std::string theirs;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    for (int byte = std::fgetc(pipe.get()); byte != EOF; byte = std::fgetc(pipe.get()))
        theirs += static_cast<char>(byte);
    std::ifstream file(path, std::ios::binary);
    const Attributed attributes = attributesOfFont({std::istreambuf_iterator<char>(file), {}});
    std::string ours = one(attributes, "Title");
    for (const char* name : {"plumwick_fontFamilies", "plumwick_fontStyles", "plumwick_postScriptNames"})
        ours += '|' + one(attributes, name).substr(1, one(attributes, name).size() - 2);
    EXPECT_EQ(ours, theirs);
}

} // namespace
} // namespace kelvo::importers
