#include "importers/pdf/PDFImport.h"
#include "platform/foundation/Value.h"
#include "support/Attributed.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::one;

/// A document of these objects, numbered from 1, the first of which is the catalog.
std::string pdfOf(const std::vector<std::string>& objects, const std::string& trailer = "") {
    std::string pdf = "%PDF-1.4\n";
    std::string table = "0000000000 65535 f \n";
    for (std::size_t index = 0; index < objects.size(); ++index) {
        char entry[32];
        std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", pdf.size());
        table += entry;
        pdf += std::to_string(index + 1) + " 0 obj\n" + objects[index] + "\nendobj\n";
    }
    const std::string size = std::to_string(objects.size() + 1);
    return pdf + "xref\n0 " + size + "\n" + table + "trailer\n<</Size " + size + "/Root 1 0 R" + trailer +
           ">>\nstartxref\n" + std::to_string(pdf.size()) + "\n%%EOF\n";
}

std::string textAt(int x, int y, const std::string& text) {
    return "BT/F 12 Tf " + std::to_string(x) + ' ' + std::to_string(y) + " Td(" + text + ")Tj ET ";
}

/// One page for each of the contents.
std::string pdfOfPages(const std::vector<std::string>& contents, const std::string& information = "",
                       const std::string& boxes = "/MediaBox[0 0 300 200]") {
    std::string kids;
    std::vector<std::string> objects{"<</Type/Catalog/Pages 2 0 R>>", "",
                                     "<</Type/Font/Subtype/Type1/BaseFont/Helvetica>>",
                                     "<<" + information + ">>"};
    for (const std::string& content : contents) {
        const std::string stream = std::to_string(objects.size() + 1);
        objects.push_back("<</Length " + std::to_string(content.size()) + ">>stream\n" + content +
                          "\nendstream");
        objects.push_back("<</Type/Page/Parent 2 0 R/Resources<</Font<</F 3 0 R>>>>/Contents " + stream +
                          " 0 R" + boxes + ">>");
        kids += std::to_string(objects.size()) + " 0 R ";
    }
    objects[1] = "<</Type/Pages/Kids[" + kids + "]/Count " + std::to_string(contents.size()) + ">>";
    return pdfOf(objects, "/Info 4 0 R");
}

/// A document with a title, of the encryption that came first: RC4 with a key of 40 bits made of the passwords.
std::string encryptedPDF(const std::string& owner, const std::string& user, const std::string& title) {
    return pdfOf({"<</Type/Catalog/Pages 2 0 R>>", "<</Type/Pages/Kids[3 0 R]/Count 1>>",
                  "<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>", "<</Title<" + title + ">>>",
                  "<</Filter/Standard/V 1/R 2/P -4/O<" + owner + ">/U<" + user + ">>>"},
                 "/Info 4 0 R/Encrypt 5 0 R/ID[<00000000000000000000000000000000>"
                 "<00000000000000000000000000000000>]");
}

NSData dataOf(const std::string& bytes) {
    return NSData::dataWithBytes(bytes.data(), bytes.size());
}

Attributed attributesOf(const std::string& pdf, Import& import = importPDF) {
    return tests::attributesOf(import, pdf, "com.adobe.pdf");
}

TEST(PDFImport, SetsWhatADocumentSays) {
    const std::string pdf =
        pdfOfPages({textAt(10, 150, "First page"), "", textAt(10, 150, "Third")},
                   "/Title( The  Tide\nTable )/Author(Ada Lindqvist)/Subject(Water)"
                   "/Keywords(tide, harbour; Grand Quay,)/Creator(Pen)/Producer(Press)"
                   "/CreationDate(D:20200229123456+05'30')/ModDate(D:20200301120000-08'00')");
    const Attributed expected{{"Title", "The Tide Table"},
                              {"Authors", "<Ada Lindqvist>"},
                              {"Subject", "Water"},
                              {"Keywords", "<tide><harbour><Grand Quay>"},
                              {"Creator", "Pen"},
                              {"EncodingApplications", "<Press>"},
                              {"ContentCreationDate", "2020-02-29 07:04:56 +0000"},
                              {"ContentModificationDate", "2020-03-01 20:00:00 +0000"},
                              {"Version", "1.4"},
                              {"SecurityMethod", "None"},
                              {"NumberOfPages", "3"},
                              {"PageWidth", "300"},
                              {"PageHeight", "200"},
                              {"TextContent", "First page\n\nThird"}};
    EXPECT_EQ(attributesOf(pdf), expected);
    // Nothing is made of what is not there, or is of another type.
    const Attributed bare{{"Version", "1.4"},   {"SecurityMethod", "None"}, {"NumberOfPages", "1"},
                          {"PageWidth", "300"}, {"PageHeight", "200"},      {"TextContent", ""}};
    EXPECT_EQ(attributesOf(pdfOfPages({""}, "/Title()/Author 5/Keywords( ;, )/ModDate(soon)")), bare);
}

TEST(PDFImport, UnderstandsEachFact) {
    struct Row {
        const char* name;
        std::string information;
        std::string boxes;
        std::string attribute;
        std::string value;
    };
    const std::string box = "/MediaBox[0 0 300 200]";
    const Row rows[] = {
        {"surname first", "/Author(Lindqvist, Ada)", box, "Authors", "<Lindqvist, Ada>"},
        {"a firm", "/Author(Quay & Sons, Ltd.)", box, "Authors", "<Quay & Sons, Ltd.>"},
        {"two names", "/Author(Ada Lindqvist, Per Ek)", box, "Authors", "<Ada Lindqvist><Per Ek>"},
        {"semicolons", "/Author(Lindqvist, Ada; Ek, Per)", box, "Authors", "<Lindqvist, Ada><Ek, Per>"},
        {"UTF-16", "/Title<FEFF0141D83DDE000000>", box, "Title", "Ł😀"},
        {"UTF-8", "/Title<EFBBBFC581C3A9>", box, "Title", "Łé"},
        {"PDFDocEncoding", "/Title<80208F9E20E9>", box, "Title", "• ‘ž é"},
        {"crop box", "", box + "/CropBox[10 10 110 60]", "PageWidth", "100"},
        {"turned right", "", box + "/Rotate 90", "PageWidth", "200"},
        {"turned left", "", box + "/Rotate 270", "PageHeight", "300"},
        {"upside down", "", box + "/Rotate 180", "PageHeight", "200"},
        {"no size", "", "/MediaBox[5 5 5 5]", "PageWidth", "absent"},
        {"no finite size", "", "/MediaBox[0 0 " + std::string(400, '9') + " 9]", "PageWidth", "absent"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(one(attributesOf(pdfOfPages({""}, row.information, row.boxes)), row.attribute), row.value)
            << row.name;
}

TEST(PDFImport, SaysWhatKeepsItFromReading) {
    const std::string page = "<</Type/Page/Parent 2 0 R/MediaBox[0 0 9 9]>>";
    const std::string catalog = "<</Type/Catalog/Pages 2 0 R>>";
    const std::string locked =
        encryptedPDF("94e8094419662a774442fb072e3d9f19e9d130ec09a4d0061e78fe920f7ab62f",
                     "474e3b8deffde5e9109e3a16d67393ca4505d130c5f8a838667dcc1ca429f278", "d23fff17");
    const std::string ownerLocked =
        encryptedPDF("c92422687facee686e373f10b5c7d04738053152f7e2ee30e11c69ec442576ab",
                     "ca1391d96ee32edafe6cd2ca685744b197741bdfafec10c060c7d7212dab2ee4", "77aec529");
    const Attributed whole{
        {"Version", "1.4"}, {"SecurityMethod", "None"}, {"PageWidth", "9"}, {"PageHeight", "9"}};
    const auto with = [](Attributed attributes, const Attributed& more) {
        for (const auto& [name, value] : more)
            attributes[name] = value;
        return attributes;
    };
    struct Row {
        const char* name;
        std::string file;
        Attributed expected;
    };
    const Row rows[] = {
        {"needs a password",
         locked,
         {{"Version", "1.4"},
          {"SecurityMethod", "Password Encrypted"},
          {"note", "locked: the document is encrypted"}}},
        {"needs no password", ownerLocked,
         with(whole, {{"SecurityMethod", "Password Encrypted"},
                      {"Title", "Kept"},
                      {"NumberOfPages", "1"},
                      {"TextContent", ""}})},
        {"empty", "", {{"note", "broken: the document is damaged, or no PDF"}}},
        {"no PDF", std::string(5000, ' '), {{"note", "broken: the document is damaged, or no PDF"}}},
        {"PostScript",
         "%!PS-Adobe-3.0\n%%Creator: Pen\n",
         {{"note", "unsupported: the document is PostScript"}}},
        {"only the beginning",
         "%PDF-1.4\n1 0 obj\n",
         {{"note", "broken: the document is damaged, or no PDF"}}},
        {"no pages",
         pdfOf({catalog, "<</Type/Pages/Kids[]/Count 0>>"}),
         {{"Version", "1.4"}, {"SecurityMethod", "None"}, {"note", "broken: the document has no pages"}}},
        {"no page is there",
         pdfOf({catalog, "<</Type/Pages/Kids[]/Count 1>>", page}),
         {{"Version", "1.4"},
          {"SecurityMethod", "None"},
          {"NumberOfPages", "1"},
          {"note", "broken: pages are missing"}}},
        {"a page is missing", pdfOf({catalog, "<</Type/Pages/Kids[9 0 R 3 0 R]/Count 2>>", page}),
         with(whole, {{"NumberOfPages", "2"}, {"TextContent", ""}, {"note", "answered: pages are missing"}})},
    };
    for (const Row& row : rows)
        EXPECT_EQ(attributesOf(row.file), row.expected) << row.name;
}

TEST(PDFImport, ReadsInTheOrderOfPdftotext) {
    const auto column = [](int x, const std::string& word) {
        std::string lines;
        for (int line = 0; line < 8; ++line)
            lines += textAt(x, 180 - 14 * line, word + " line " + std::to_string(line));
        return lines;
    };
    const std::string pdf = pdfOfPages({column(180, "right") + column(10, "left"), textAt(10, 90, "Last")});
    const tests::TemporaryFolder folder;
    const std::string command = "pdftotext " + folder.write("columns.pdf", pdf) + " -";
    std::string theirs;
    const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    for (int byte = std::fgetc(pipe.get()); byte != EOF; byte = std::fgetc(pipe.get()))
        theirs += static_cast<char>(byte);
    // Its pages end with an empty line and a form feed.
    for (const std::string end : {"\n\n\f", "\n\n\f"}) {
        ASSERT_NE(theirs.find(end), std::string::npos);
        theirs.replace(theirs.find(end), end.size(), "\n");
    }
    EXPECT_EQ(one(attributesOf(pdf), "TextContent") + "\n", theirs);
}

TEST(PDFImport, KeepsTheTextBeforeAPageThatMayNotEnd) {
    const std::string pdf =
        pdfOfPages({"", textAt(9, 9, "one"), textAt(9, 9, "two"), textAt(9, 9, "three"), ""});
    std::vector<std::string> texts;
    PlugInAttributes filled(
        dataOf(pdf),
        [&](const NSArray& attribute) {
            if (attribute.objectAtIndex(0) == u"kMDItemTextContent")
                texts.push_back(attribute.objectAtIndex(1).string().UTF8String());
        },
        [](Outcome, const NSString&) {});
    Attributes attributes(&filled, "com.adobe.pdf");
    importPDF(attributes);
    EXPECT_EQ(texts, (std::vector<std::string>{"\none", "\none\ntwo\nthree", "\none\ntwo\nthree\n"}));
}

TEST(PDFImport, EndsInTime) {
    const Attributed attributes = attributesOf(
        pdfOfPages({textAt(10, 150, "Late")}, "/Title(There)"),
        *+[](Attributes& filled) { importPDFWithin(filled, 0); });
    EXPECT_EQ(one(attributes, "Title"), "There");
    EXPECT_EQ(one(attributes, "TextContent"), "absent");
    EXPECT_EQ(one(attributes, "note"), "answered: there was no time for the text of all pages");
}

} // namespace
} // namespace kelvo::importers
