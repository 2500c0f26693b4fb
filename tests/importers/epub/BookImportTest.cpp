#include "importers/epub/BookImport.h"

#include "importers/epub/BookPackage.h"
#include "support/Attributed.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::attributesOf;
using tests::one;

using Files = std::map<std::string, std::string>;

std::string bookOf(const Files& files) {
    const tests::TemporaryFolder folder;
    for (const auto& [path, contents] : files)
        folder.write("in/" + path, contents);
    const std::string command =
        "cd " + folder.path("in") + " && LC_ALL=C.UTF-8 bsdtar -cf ../book.zip --format zip *";
    return std::system(command.c_str()) == 0 ? folder.read("book.zip") : "";
}

std::string chapter(const std::string& text) {
    return "<html><head><title>no</title></head><body><p>" + text + "</p></body></html>";
}

std::string package(const std::string& metadata) {
    return "<package unique-identifier='b' xmlns:dc='d'><metadata>" + metadata +
           "</metadata><manifest><item id='z' href='z.xhtml'/><item id='a' href='sub/a%20b.xhtml'/>"
           "<item id='cover' href='cover.xhtml'/></manifest>"
           "<spine><itemref idref='z'/><itemref idref='nothing'/><itemref idref='a'/></spine></package>";
}

/// The chapters stand in the archive in the opposite order.
Files filesOfBook(const std::string& metadata) {
    return {{"META-INF/container.xml", "<container><rootfiles><rootfile full-path='O%20P/x.opf'/>"
                                       "<rootfile full-path='second.opf'/></rootfiles></container>"},
            {"O P/cover.xhtml", chapter("cover")},
            {"O P/sub/a b.xhtml", chapter("Second &#233;")},
            {"O P/x.opf", package(metadata)},
            {"O P/z.xhtml", chapter("First")}};
}

TEST(BookImport, SetsWhatABookSays) {
    const std::string book = bookOf(filesOfBook(
        "<dc:title id='s'>Subtitle</dc:title><dc:title id='t'>Tides</dc:title>"
        "<meta refines='#t' property='title-type'>main</meta><dc:creator>Ada Lindqvist</dc:creator>"
        "<dc:creator>Per Ek</dc:creator><dc:contributor id='c'>Press 1</dc:contributor>"
        "<meta refines='#c' property='role'>bkp</meta><dc:contributor>Bo</dc:contributor>"
        "<dc:language>sv</dc:language><dc:publisher>Quay</dc:publisher><dc:subject>sea</dc:subject>"
        "<dc:subject>moon</dc:subject><dc:description>&lt;p>Of &lt;b>water&lt;/b></dc:description>"
        "<dc:rights>Free</dc:rights><dc:identifier>other</dc:identifier><dc:identifier "
        "id='b'>urn:1</dc:identifier>"
        "<dc:date>2020-02-29</dc:date><meta property='dcterms:modified'>2021-03-04T05:06:07Z</meta>"
        "<meta name='cover' content='x'/>"));
    const Attributed expected{{"Title", "Tides"},
                              {"Authors", "<Ada Lindqvist><Per Ek>"},
                              {"Contributors", "<Bo>"},
                              {"Creator", "Press 1"},
                              {"Languages", "<sv>"},
                              {"Publishers", "<Quay>"},
                              {"Keywords", "<sea><moon>"},
                              {"Description", "Of water"},
                              {"Rights", "Free"},
                              {"Identifier", "urn:1"},
                              {"ContentCreationDate", "2020-02-29 05:00:00 +0000"},
                              {"ContentModificationDate", "2021-03-04 05:06:07 +0000"},
                              {"TextContent", "First\n\nSecond é"}};
    const tests::ScopedVariable zone("TZ", "America/New_York");
    EXPECT_EQ(attributesOf(importBook, book, "org.idpf.epub-container"), expected);
}

TEST(BookImport, ReadsWhatBooksComeAs) {
    const auto with = [](const Files& changes) {
        Files files = filesOfBook("<dc:title>x</dc:title>");
        for (const auto& [path, contents] : changes) {
            if (contents.empty())
                files.erase(path);
            else
                files[path] = contents;
        }
        return bookOf(files);
    };
    const auto encrypted = [](const std::string& path) {
        return "<encryption><EncryptedData><CipherData><CipherReference URI='" + path +
               "'/></CipherData></EncryptedData></encryption>";
    };
    const std::string whole = with({});
    const struct {
        const char* name;
        std::string file;
        const char* attribute;
        const char* value;
    } rows[] = {
        {"no container", with({{"META-INF/container.xml", ""}}), "TextContent", "First\n\nSecond é"},
        {"year", bookOf(filesOfBook("<dc:Date>1949</dc:Date>")), "ContentCreationDate",
         "1949-01-01 05:00:00 +0000"},
        {"month", bookOf(filesOfBook("<dc:date>2019-08</dc:date>")), "ContentCreationDate",
         "2019-08-01 04:00:00 +0000"},
        {"day", bookOf(filesOfBook("<dc:date>2019-08-23</dc:date>")), "ContentCreationDate",
         "2019-08-23 04:00:00 +0000"},
        {"date of an event",
         bookOf(filesOfBook(
             "<dc:date event='creation'>2001</dc:date><dc:date event='publication'>2002</dc:date>")),
         "ContentCreationDate", "2002-01-01 05:00:00 +0000"},
        {"chapter missing", with({{"O P/z.xhtml", ""}}), "note", "answered: a part of the book is missing"},
        {"the other chapter", with({{"O P/z.xhtml", ""}}), "TextContent", "Second é"},
        {"an encrypted chapter", with({{"META-INF/encryption.xml", encrypted("O%20P/z.xhtml")}}),
         "TextContent", "Second é"},
        {"is said to be", with({{"META-INF/encryption.xml", encrypted("O%20P/z.xhtml")}}), "note",
         "answered: the book is encrypted"},
        {"an encrypted font", with({{"META-INF/encryption.xml", encrypted("O%20P/f.otf")}}), "note",
         "absent"},
        {"a chapter that explodes", with({{"O P/z.xhtml", chapter(std::string(9 << 20, 'x'))}}), "Title",
         "x"},
        {"cut short", whole.substr(0, whole.find("O P/z.xhtml") + 20), "note",
         "answered: a part of the book is missing"},
        {"no package", with({{"O P/x.opf", ""}}), "note", "broken: the file is damaged, or no book"},
        {"no book", bookOf({{"a.txt", "a"}}), "note", "broken: the file is damaged, or no book"},
        {"empty", "", "note", "broken: the file is damaged, or no book"},
    };
    const tests::ScopedVariable zone("TZ", "America/New_York");
    for (const auto& row : rows)
        EXPECT_EQ(one(attributesOf(importBook, row.file, "org.idpf.epub-container"), row.attribute),
                  row.value)
            << row.name;
}

TEST(BookPackage, ReferencesStayInTheArchive) {
    const struct {
        const char* document;
        const char* reference;
        const char* path;
    } rows[] = {
        {"O/x.opf", "a.html#top", "O/a.html"},
        {"O/P/x.opf", "../a%2eb", "O/a.b"},
        {"x.opf", "../../a", "a"},
        {"O/x.opf", "/a", "a"},
        {"O/x.opf", "./a//b/.", "O/a/b"},
        {"O/x.opf", "a%2", "O/a%2"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(pathOfLink(row.document, row.reference), row.path) << row.reference;
}

} // namespace
} // namespace kelvo::importers
