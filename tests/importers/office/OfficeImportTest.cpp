#include "importers/office/OfficeImport.h"

#include "platform/foundation/Value.h"
#include "platform/foundation/propertylists/NSJSONSerialization.h"
#include "support/Attributed.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"
#include "support/ZipPackage.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace kelvo::importers {
namespace {

using namespace std::string_literals;
using Parts = std::vector<std::pair<std::string, std::string>>;
using tests::Attributed;

const std::string schemas = "http://schemas.openxmlformats.org/";
const std::string relationsOfDocument = schemas + "officeDocument/2006/relationships";
const std::string word = "org.openxmlformats.wordprocessingml.document";
const std::string workbook = "org.openxmlformats.spreadsheetml.sheet";
const std::string presentation = "org.openxmlformats.presentationml.presentation";
const std::string openText = "org.oasis-open.opendocument.text";
const std::string flatText = "org.oasis-open.opendocument.text-flat-xml";

tests::Attributed attributesOf(const std::string& file, const std::string& type,
                               Import& import = importOffice) {
    return tests::attributesOf(import, file, type);
}

std::string textOf(const std::string& file, const std::string& type) {
    return attributesOf(file, type)["TextContent"];
}

/// Of rows "id type target".
std::string relations(const std::vector<std::array<std::string, 3>>& rows) {
    std::string result = "<Relationships xmlns=\"" + schemas + "package/2006/relationships\">";
    for (const auto& [identifier, type, target] : rows)
        result += "<Relationship Id=\"" + identifier + "\" Type=\"" + relationsOfDocument + "/" + type +
                  "\" Target=\"" + target + "\"/>";
    return result + "</Relationships>";
}

std::string wordPart(const std::string& element, const std::string& content) {
    return "<w:" + element + " xmlns:w=\"" + schemas + "wordprocessingml/2006/main\" xmlns:mc=\"" + schemas +
           "markup-compatibility/2006\" xmlns:v=\"urn:schemas-microsoft-com:vml\">" + content +
           "</w:" + element + ">";
}

std::string wordBody(const std::string& content) {
    return wordPart("document", "<w:body>" + content + "</w:body>");
}

std::string run(const std::string& text, const std::string& properties = "") {
    return "<w:r><w:rPr>" + properties + "</w:rPr><w:t xml:space=\"preserve\">" + text + "</w:t></w:r>";
}

std::string line(const std::string& text) {
    return "<w:p>" + run(text) + "</w:p>";
}

std::string wordDocument(const std::string& content) {
    return tests::zipPackage({{"word/document.xml", wordBody(content)}});
}

std::string openPart(const std::string& root, const std::string& content) {
    std::string spaces;
    for (const char* space : {"office", "text", "table", "style", "presentation", "meta"})
        spaces += " xmlns:"s + space + "=\"urn:oasis:names:tc:opendocument:xmlns:" + space + ":1.0\"";
    return "<office:" + root + spaces + " xmlns:draw=\"urn:oasis:names:tc:opendocument:xmlns:drawing:1.0\"" +
           " xmlns:svg=\"urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0\""
           " xmlns:dc=\"http://purl.org/dc/elements/1.1/\">" +
           content + "</office:" + root + ">";
}

std::string openContent(const std::string& kind, const std::string& content) {
    return openPart("document-content",
                    "<office:body><office:" + kind + ">" + content + "</office:" + kind + "></office:body>");
}

TEST(OfficeImport, SetsWhatDocumentsSay) {
    const std::string core =
        "<cp:coreProperties xmlns:cp=\"" + schemas +
        "package/2006/metadata/core-properties\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
        " xmlns:dcterms=\"http://purl.org/dc/terms/\"><dc:title>The  Tide Table</dc:title>"
        "<dc:creator>Lindqvist, Ada;Per Ek</dc:creator><cp:lastModifiedBy>Mia Sund</cp:lastModifiedBy>"
        "<cp:keywords>tide, harbour; Grand Quay,</cp:keywords><dc:description>With &amp; "
        "care</dc:description>"
        "<dc:subject>Water</dc:subject><dcterms:created>2020-02-29T12:34:56Z</dcterms:created>"
        "<dcterms:modified>2020-03-01T12:00:00+02:00</dcterms:modified><dc:language>sv-SE</dc:language>"
        "<cp:version>2.1</cp:version></cp:coreProperties>";
    const std::string extended = "<Properties xmlns=\"" + schemas +
                                 "officeDocument/2006/extended-properties\"><Application>Pen</Application>"
                                 "<Company>Quay Ltd.</Company><Pages>3</Pages><Words>12</Words></Properties>";
    const std::string document = tests::zipPackage(
        {{"[Content_Types].xml", "<Types xmlns=\"" + schemas + "package/2006/content-types\"/>"},
         {"_rels/.rels",
          "<Relationships xmlns=\"" + schemas +
              "package/2006/relationships\"><Relationship Id=\"a\" Type=\"" + schemas +
              "package/2006/relationships/metadata/core-properties\" Target=\"/docProps/core.xml\"/>"
              "<Relationship Id=\"b\" Type=\"" +
              relationsOfDocument +
              "/extended-properties\" Target=\"docProps/app.xml\"/>"
              "<Relationship Id=\"c\" Type=\"" +
              relationsOfDocument + "/officeDocument\" Target=\"word/main.xml\"/></Relationships>"},
         {"docProps/core.xml", core},
         {"docProps/app.xml", extended},
         {"word/main.xml", wordBody(line("Water"))}});
    const std::string open = tests::zipPackage(
        {{"mimetype", "application/vnd.oasis.opendocument.text"},
         {"meta.xml",
          openPart("document-meta",
                   "<office:meta><meta:initial-creator>Ada Lindqvist</meta:initial-creator>"
                   "<dc:creator>Mia Sund</dc:creator><dc:title>The Tide Table</dc:title>"
                   "<meta:keyword>tide</meta:keyword><meta:keyword>harbour</meta:keyword>"
                   "<dc:description>With care</dc:description><dc:subject>Water</dc:subject>"
                   "<meta:creation-date>2020-02-29T12:34:56.5</meta:creation-date>"
                   "<dc:date>2020-03-01T10:00:00Z</dc:date><dc:language>sv-SE</dc:language>"
                   "<meta:generator>Pen/1</meta:generator>"
                   "<meta:document-statistic meta:page-count=\"3\" meta:word-count=\"12\"/></office:meta>")},
         {"content.xml", openContent("text", "<text:p>Water</text:p>")}});
    const Attributed common{
        {"Title", "The Tide Table"},  {"Editors", "<Mia Sund>"},
        {"Subject", "Water"},         {"ContentModificationDate", "2020-03-01 10:00:00 +0000"},
        {"Languages", "<sv-SE>"},     {"NumberOfPages", "3"},
        {"plumwick_wordCount", "12"}, {"TextContent", "Water"}};
    const auto with = [&](Attributed more) {
        more.insert(common.begin(), common.end());
        return more;
    };
    setenv("TZ", "Asia/Tokyo", 1);
    EXPECT_EQ(attributesOf(document, word), with({{"Authors", "<Lindqvist, Ada><Per Ek>"},
                                                  {"Keywords", "<tide><harbour><Grand Quay>"},
                                                  {"Comment", "With & care"},
                                                  {"ContentCreationDate", "2020-02-29 12:34:56 +0000"},
                                                  {"Creator", "Pen"},
                                                  {"Organizations", "<Quay Ltd.>"},
                                                  {"Version", "2.1"}}));
    EXPECT_EQ(attributesOf(open, openText), with({{"Authors", "<Ada Lindqvist>"},
                                                  {"Keywords", "<tide><harbour>"},
                                                  {"Comment", "With care"},
                                                  {"ContentCreationDate", "2020-02-29 03:34:56 +0000"},
                                                  {"Creator", "Pen/1"}}));
    unsetenv("TZ");

    // What exiftool says of the same files, by its names.
    const struct {
        const char* theirs;
        const char* ours;
    } names[] = {{"Title", "Title"},
                 {"Subject", "Subject"},
                 {"Description", "Comment"},
                 {"Language", "Languages"},
                 {"Application", "Creator"},
                 {"Generator", "Creator"},
                 {"Pages", "NumberOfPages"},
                 {"Words", "plumwick_wordCount"},
                 {"LastModifiedBy", "Editors"},
                 {"Initial-creator", "Authors"}};
    const tests::TemporaryFolder folder;
    for (const auto& [name, file, type] :
         {std::tuple("a.docx", document, word), std::tuple("a.odt", open, openText)}) {
        const std::string command = "exiftool -json -struct " + folder.write(name, file);
        std::string output;
        const std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
        for (int byte = std::fgetc(pipe.get()); byte != EOF; byte = std::fgetc(pipe.get()))
            output += static_cast<char>(byte);
        Attributed ours = attributesOf(file, type);
        int compared = 0;
        for (const auto& row : names) {
            const std::size_t place = output.find("\""s + row.theirs + "\": ");
            if (place == output.npos)
                continue;
            std::string value = output.substr(output.find(": ", place) + 2);
            value = value.substr(0, value.find_first_of("\n"));
            std::erase_if(value, [](char byte) { return byte == '"'; });
            value.erase(value.find_last_not_of(",") + 1);
            EXPECT_NE(ours[row.ours].find(value == "The  Tide Table" ? "The Tide Table" : value),
                      std::string::npos)
                << name << ' ' << row.theirs << ' ' << value;
            ++compared;
        }
        EXPECT_GE(compared, 5) << output;
    }
}

TEST(OfficeImport, ReadsWordsInTheirOrder) {
    const std::string frame = "<w:r><mc:AlternateContent><mc:Choice Requires=\"wps\"><w:txbxContent>" +
                              line("framed") + "</w:txbxContent></mc:Choice><mc:Fallback><v:textbox>" +
                              "<w:txbxContent>" + line("framed") +
                              "</w:txbxContent></v:textbox></mc:Fallback></mc:AlternateContent></w:r>";
    const auto cell = [](const std::string& content) { return "<w:tc><w:tcPr/>" + content + "</w:tc>"; };
    const struct {
        const char* name;
        std::string content;
        std::string text;
    } rows[] = {
        {"paragraphs", line("one") + "<w:p/>" + line("two"), "one\ntwo"},
        {"runs and entities", "<w:p>" + run("a &lt;") + run(" b&#x1F600;") + "</w:p>", "a < b😀"},
        {"tabs and breaks",
         "<w:p><w:pPr><w:tabs><w:tab w:val=\"left\"/></w:tabs></w:pPr>" + run("a") + "<w:r><w:tab/></w:r>" +
             run("b") + "<w:r><w:br/></w:r>" + run("c") + "<w:r><w:noBreakHyphen/></w:r>" + run("d") +
             "</w:p>",
         "a\tb\nc\u2011d"},
        {"table",
         line("before") + "<w:tbl><w:tr>" + cell(line("a") + line("b")) + cell(line("c")) + "</w:tr><w:tr>" +
             cell("<w:p/>") + cell(line("d")) + "</w:tr></w:tbl>" + line("after"),
         "before\na\nb\tc\nd\nafter"},
        {"text box once, after its paragraph", "<w:p>" + run("a") + frame + run("b") + "</w:p>" + line("c"),
         "ab\nframed\nc"},
        {"deleted and moved",
         "<w:p>" + run("a") + "<w:del><w:r><w:delText>gone</w:delText></w:r></w:del><w:ins>" + run("b") +
             "</w:ins><w:moveFrom>" + run("moved") + "</w:moveFrom></w:p>",
         "ab"},
        {"hidden",
         "<w:p>" + run("a") + run("no", "<w:vanish/>") + run("b", "<w:vanish w:val=\"0\"/>") + "</w:p>",
         "ab"},
        {"codes of fields",
         "<w:p><w:r><w:instrText>PAGE</w:instrText></w:r><w:hyperlink>" + run("link") +
             "</w:hyperlink></w:p>",
         "link"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(textOf(wordDocument(row.content), word), row.text) << row.name;

    const std::string document = tests::zipPackage(
        {{"word/document.xml", wordBody(line("body"))},
         {"word/_rels/document.xml.rels", relations({{"a", "comments", "comments.xml"},
                                                     {"b", "footnotes", "footnotes.xml"},
                                                     {"c", "header", "h.xml"},
                                                     {"d", "footer", "../word/f.xml"},
                                                     {"e", "styles", "styles.xml"}})},
         {"word/comments.xml", wordPart("comments", "<w:comment>" + line("comment") + "</w:comment>")},
         {"word/footnotes.xml", wordPart("footnotes", "<w:footnote>" + line("note") + "</w:footnote>")},
         {"word/h.xml", wordPart("hdr", line("header"))},
         {"word/f.xml", wordPart("ftr", line("footer"))}});
    EXPECT_EQ(textOf(document, word), "body\n\nheader\n\nfooter\n\nnote\n\ncomment");
}

TEST(OfficeImport, ReadsWordsByWhateverPrefix) {
    const struct {
        const char* name;
        std::string piece;
    } rows[] = {
        {"formats", "<w:p><w:pPr><w:jc/><w:rPr><w:b/></w:rPr></w:pPr>" + run("a", "<w:b/>") + "</w:p>"},
        {"formats of before",
         "<w:p><w:pPr><w:pPrChange><w:pPr><w:jc/></w:pPr></w:pPrChange></w:pPr>" + run("b") + "</w:p>"},
        {"hidden", "<w:p>" + run("no", "<w:vanish/>") + run("c") + "</w:p>"},
        {"long formats", "<w:p><w:pPr>" + std::string(5000, ' ') + "</w:pPr>" + run("d") + "</w:p>"},
        {"a comment in formats", "<w:p><w:pPr><!-- </w:pPr> --><w:jc/></w:pPr>" + run("e") + "</w:p>"},
        {"a comment before", "<!-- <w:rPr> --><w:p><w:r><w:t>f<![CDATA[<w:rPr>]]>g</w:t></w:r></w:p>"},
        {"an instruction", "<?a <w:rPr>?><w:p>" + run("h") + "</w:p>"},
    };
    for (const auto& row : rows) {
        // In more pieces than one, which end anywhere.
        std::string content;
        for (int number = 0; content.size() < 200'000; ++number)
            content += row.piece + line(std::string(static_cast<std::size_t>(number % 61), 'x'));
        const auto renamed = [](std::string text, const std::string& from, const std::string& to) {
            for (std::size_t place = 0; (place = text.find(from, place)) != text.npos; place += to.size())
                text.replace(place, from.size(), to);
            return text;
        };
        const std::string other = renamed(renamed(wordBody(content), "w:", "y:"), "xmlns:w=", "xmlns:y=");
        Attributed expected = attributesOf(tests::zipPackage({{"word/document.xml", other}}), word);
        expected["TextContent"] = renamed(expected["TextContent"], "y:", "w:");
        EXPECT_EQ(attributesOf(wordDocument(content), word), expected) << row.name;
        EXPECT_EQ(expected.count("note"), 0U) << row.name;
    }
}

TEST(OfficeImport, ReadsSheetsAndSlidesInTheirOrder) {
    const std::string sheetSpace =
        " xmlns=\"" + schemas + "spreadsheetml/2006/main\" xmlns:r=\"" + relationsOfDocument + "\"";
    const std::string book = tests::zipPackage(
        {{"XL/Workbook.xml", "<workbook" + sheetSpace +
                                 "><sheets><sheet name=\"Second\" r:id=\"r2\"/>"
                                 "<sheet name=\"First\" r:id=\"r1\"/></sheets></workbook>"},
         {"xl/_rels/workbook.xml.rels", relations({{"r1", "worksheet", "worksheets/s1.xml"},
                                                   {"r2", "worksheet", "/xl/worksheets/s2.xml"},
                                                   {"r3", "sharedStrings", "strings.xml"}})},
         {"xl/strings.xml", "<sst" + sheetSpace +
                                "><si><t>zero</t></si><si><r><t>o</t></r><r><t>ne</t></r>"
                                "<rPh><t>wan</t></rPh></si></sst>"},
         {"xl/worksheets/s1.xml", "<worksheet" + sheetSpace +
                                      "><sheetData><row><c t=\"s\"><v>1</v></c><c t=\"s\"><v>0</v></c>"
                                      "<c t=\"s\"><v>7</v></c></row></sheetData></worksheet>"},
         {"xl/worksheets/s2.xml",
          "<worksheet" + sheetSpace +
              "><sheetData><row><c t=\"inlineStr\"><is><t>in "
              "line</t></is></c><c><v>0.10000000000000001</v></c>"
              "<c/><c t=\"b\"><v>1</v></c></row><row><c t=\"str\"><f>A1</f><v>cached</v></c>"
              "<c t=\"e\"><v>#DIV/0!</v></c></row></sheetData></worksheet>"},
         {"xl/worksheets/_rels/s2.xml.rels", relations({{"c", "comments", "../comments1.xml"}})},
         {"xl/comments1.xml", "<comments" + sheetSpace +
                                  "><authors><author>Ada</author></authors><commentList>"
                                  "<comment><text><t>why</t></text></comment>"
                                  "</commentList></comments>"}});
    const Attributed expected{
        {"plumwick_sheetCount", "2"},
        {"TextContent", "Second\nin line\t0.1\tTRUE\ncached\t#DIV/0!\nwhy\n\nFirst\none\tzero"}};
    EXPECT_EQ(attributesOf(book, workbook), expected);

    const std::string slideSpaces = " xmlns:p=\"" + schemas + "presentationml/2006/main\" xmlns:a=\"" +
                                    schemas + "drawingml/2006/main\" xmlns:r=\"" + relationsOfDocument + "\"";
    const auto shape = [](const std::string& type, const std::string& text) {
        return "<p:sp><p:nvSpPr><p:nvPr><p:ph type=\"" + type +
               "\"/></p:nvPr></p:nvSpPr><p:txBody><a:p><a:r><a:t>" + text +
               "</a:t></a:r></a:p></p:txBody></p:sp>";
    };
    const auto slide = [&](const std::string& root, const std::string& content) {
        return "<p:" + root + slideSpaces + "><p:cSld><p:spTree>" + content +
               "</p:spTree></p:cSld></p:" + root + ">";
    };
    const std::string show = tests::zipPackage(
        {{"ppt/presentation.xml",
          "<p:presentation" + slideSpaces +
              "><p:sldIdLst><p:sldId id=\"9\" r:id=\"b\"/><p:sldId id=\"8\" r:id=\"a\"/>"
              "</p:sldIdLst></p:presentation>"},
         {"ppt/_rels/presentation.xml.rels",
          relations({{"a", "slide", "slides/slide1.xml"}, {"b", "slide", "slides/slide2.xml"}})},
         {"ppt/slides/slide1.xml",
          slide("sld",
                "<p:graphicFrame><a:tbl><a:tr><a:tc><a:txBody><a:p><a:r><a:t>a</a:t></a:r></a:p></a:txBody>"
                "</a:tc><a:tc><a:txBody><a:p><a:r><a:t>b</a:t></a:r></a:p></a:txBody></a:tc></a:tr></a:tbl>"
                "</p:graphicFrame>")},
         {"ppt/slides/slide2.xml",
          slide("sld", shape("title", "Tide") + shape("sldNum", "2") + shape("ftr", "harbour"))},
         {"ppt/slides/_rels/slide2.xml.rels", relations({{"n", "notesSlide", "../notesSlides/n.xml"}})},
         {"ppt/notesSlides/n.xml", slide("notes", shape("hdr", "no") + shape("body", "say this"))}});
    const Attributed shownSlides{{"NumberOfPages", "2"},
                                 {"TextContent", "Tide\nharbour\n\nsay this\n\na\tb"}};
    EXPECT_EQ(attributesOf(show, presentation), shownSlides);
}

TEST(OfficeImport, ReadsOpenDocumentsInTheirOrder) {
    const auto table = [](const std::string& rows) {
        return "<table:table table:name=\"T\">" + rows + "</table:table>";
    };
    const auto change = [](const std::string& end, const std::string& id) {
        return "<text:change-" + end + " text:change-id=\"" + id + "\"/>";
    };
    const std::string cells =
        "<table:table-row><table:table-cell><text:p>a</text:p><text:p>b</text:p></table:table-cell>"
        "<table:covered-table-cell><text:p>no</text:p></table:covered-table-cell>"
        "<table:table-cell><text:p>c</text:p></table:table-cell></table:table-row>";
    const struct {
        const char* name;
        const char* kind;
        std::string content;
        std::string text;
    } rows[] = {
        {"white space", "text",
         "<text:h> a \n  b<text:s text:c=\"2\"/>c<text:tab/>d<text:line-break/> e</text:h>", "a b  c\td\ne"},
        {"blanks around cells", "text",
         table("<table:table-row><table:table-cell><text:p>a</text:p></table:table-cell><table:table-cell>"
               "<text:p> b</text:p></table:table-cell></table:table-row>"),
         "a\tb"},
        {"blanks within words", "text",
         "<text:p>x  y\tz w </text:p><text:p>v<text:span> u </text:span> t</text:p>", "x y z w \nv u t"},
        {"lists", "text",
         "<text:list><text:list-item><text:number>1.</text:number><text:p>one</text:p></text:list-item>"
         "</text:list><text:p>two</text:p>",
         "one\ntwo"},
        {"notes and comments at the end", "text",
         "<text:p>a<text:note><text:note-citation>1</text:note-citation><text:note-body><text:p>note</text:p>"
         "</text:note-body></text:note>b<office:annotation><dc:creator>Ada</dc:creator><text:p>why</text:p>"
         "</office:annotation></text:p><text:p>c</text:p>",
         "ab\nc\n\nnote\nwhy"},
        {"frame after its paragraph", "text",
         "<text:p>a<draw:frame><draw:text-box><text:p>box</text:p></draw:text-box><svg:desc>no</svg:desc>"
         "</draw:frame>b</text:p><text:p>c</text:p>",
         "ab\nbox\nc"},
        {"deleted", "text",
         "<text:tracked-changes><text:changed-region><text:deletion><text:p>no</text:p></text:deletion>"
         "</text:changed-region></text:tracked-changes><text:p>a</text:p>",
         "a"},
        {"deleted in its place", "text",
         "<text:tracked-changes><text:changed-region text:id=\"d\"><text:deletion><office:change-info>"
         "<dc:creator>no</dc:creator></office:change-info></text:deletion></text:changed-region>"
         "<text:changed-region xml:id=\"e\"><text:deletion/></text:changed-region><text:changed-region "
         "text:id=\"i\"><text:insertion/></text:changed-region></text:tracked-changes><text:p>a" +
             change("start", "i") + "b" + change("start", "d") + change("start", "d") + "no<text:tab/>" +
             change("start", "e") + change("end", "d") +
             "<text:line-break/>no<text:note><text:note-body><text:p>no</text:p></text:note-body></text:note>"
             "</text:p>" +
             table(cells) + "<text:p>no " + change("end", "e") + " c" + change("end", "i") +
             "</text:p><text:p>d</text:p>" + change("start", "d") + "<text:p>no</text:p>" +
             change("end", "d") + "<text:p>e</text:p>",
         "ab c\nd\ne"},
        {"hidden section", "text",
         "<text:section "
         "text:display=\"none\"><text:p>no</text:p></text:section><text:section><text:p>a</text:p>"
         "</text:section>",
         "a"},
        {"table", "text", "<text:p>x</text:p>" + table(cells + cells) + "<text:p>y</text:p>",
         "x\na\nb\tc\na\nb\tc\ny"},
        {"sheets", "spreadsheet", table(cells) + table(""), "T\na\nb\tc\n\nT"},
        {"slides", "presentation",
         "<draw:page><draw:frame><draw:text-box><text:p>a</text:p></draw:text-box></draw:frame>"
         "<presentation:notes><draw:frame presentation:class=\"header\"><draw:text-box><text:p>no</text:p>"
         "</draw:text-box></draw:frame><draw:frame "
         "presentation:class=\"notes\"><draw:text-box><text:p>say<text:page-number>&lt;number&gt;</"
         "text:page-number>"
         "</text:p></draw:text-box></draw:frame></presentation:notes></draw:page><draw:page><draw:rect>"
         "<text:p>b</text:p></draw:rect></draw:page>",
         "a\n\nsay\n\nb"},
    };
    const std::string styles =
        openPart("document-styles",
                 "<office:master-styles><style:master-page><style:header><text:p>head</text:p></style:header>"
                 "<draw:frame><draw:text-box><text:p>Click</text:p></draw:text-box></draw:frame>"
                 "</style:master-page></office:master-styles>");
    for (const auto& row : rows) {
        const std::string content = openContent(row.kind, row.content);
        EXPECT_EQ(textOf(tests::zipPackage({{"content.xml", content}}), openText), row.text) << row.name;
        const bool isText = row.kind == "text"s;
        Attributed withStyles =
            attributesOf(tests::zipPackage({{"content.xml", content}, {"styles.xml", styles}}), openText);
        EXPECT_EQ(withStyles["TextContent"].find("Click"), std::string::npos) << row.name;
        EXPECT_EQ(withStyles["TextContent"].find("\n\nhead") != std::string::npos, isText) << row.name;
        EXPECT_EQ(withStyles["plumwick_sheetCount"], row.kind == "spreadsheet"s ? "2" : "") << row.name;
        EXPECT_EQ(withStyles["NumberOfPages"], row.kind == "presentation"s ? "2" : "") << row.name;
    }
    const Attributed flat{
        {"Title", "Tide"}, {"Authors", "<Mia>"}, {"Editors", "<Mia>"}, {"TextContent", "a\n\nwhy"}};
    EXPECT_EQ(
        attributesOf(
            openPart("document",
                     "<office:meta><dc:title>Tide</dc:title><dc:creator>Mia</dc:creator></office:meta>"
                     "<office:body><office:text><text:p>a<office:annotation><dc:creator>Ada</dc:creator>"
                     "<text:p>why</text:p></office:annotation></text:p></office:text></office:body>"),
            flatText),
        flat);
}

TEST(OfficeImport, SaysWhatKeepsItFromReading) {
    const std::string malformed = "answered: a part of the document is not well-formed XML";
    const std::string whole = wordDocument(line("kept"));
    const std::string bomb =
        "<!DOCTYPE w:document [<!ENTITY a \"aaaa\"><!ENTITY b \"&a;&a;\">]>" + wordBody(line("&b;"));
    std::string deep;
    for (int level = 0; level < 1'000'000; ++level)
        deep += "<w:p>";
    std::string spaced = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
    for (const char byte : "EncryptedPackage"s)
        spaced += std::string(1, byte) + '\0';
    std::string damaged = whole;
    damaged[damaged.find("PK\1\2") + 10] = 8;
    const struct {
        const char* name;
        std::string file;
        std::string type;
        Attributed expected;
    } rows[] = {
        {"empty", "", word, {{"note", "broken: it is no document of this kind, or a damaged one"}}},
        {"no directory",
         whole.substr(0, whole.size() - 30),
         word,
         {{"note", "broken: the zip file that the document consists of is damaged"}}},
        {"no document",
         tests::zipPackage({{"a", "b"}}),
         word,
         {{"note", "broken: it is no document, or its main part is missing"}}},
        {"encrypted",
         spaced,
         word,
         {{"SecurityMethod", "Password Encrypted"}, {"note", "locked: the document is encrypted"}}},
        {"encrypted OpenDocument",
         tests::openDocument("<text:p>a</text:p>", tests::Encryption::claimed),
         openText,
         {{"SecurityMethod", "Password Encrypted"}, {"note", "locked: the document is encrypted"}}},
        {"entities",
         tests::zipPackage({{"word/document.xml", bomb}}),
         word,
         {{"note", "broken: a part of the document declares entities; answered: a part of the document "
                   "declares entities"}}},
        {"cut off",
         tests::zipPackage(
             {{"word/document.xml", wordBody(line("kept")).substr(0, wordBody(line("kept")).size() - 9)}}),
         word,
         {{"TextContent", "kept"}, {"note", malformed}}},
        {"nested deeply",
         tests::zipPackage({{"word/document.xml", wordBody(line("kept") + deep)}}),
         word,
         {{"TextContent", "kept"}, {"note", "answered: a part of the document is nested too deeply"}}},
        {"not as it was compressed",
         damaged,
         word,
         {{"note",
           "broken: a part of the document is damaged; answered: a part of the document is damaged"}}},
        {"the first of two",
         tests::zipPackage({{"word/document.xml", wordBody(line("first"))},
                            {"word/document.xml", wordBody(line("second"))}}),
         word,
         {{"TextContent", "first"}}},
        {"names that leave the package",
         tests::zipPackage(
             {{"../a", "b"},
              {"/etc/passwd", "c"},
              {"word/document.xml", wordBody(line("kept"))},
              {"word/_rels/document.xml.rels", relations({{"a", "header", "../../../etc/passwd"}})}}),
         word,
         {{"TextContent", "kept"}}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(attributesOf(row.file, row.type), row.expected) << row.name;
}

TEST(OfficeImport, EndsInTimeAndBounds) {
    Attributed late = attributesOf(
        wordDocument(line("late")), word,
        *+[](Attributes& attributes) { importOfficeWithin(attributes, 0); });
    EXPECT_EQ(late["note"], "broken: there was no time for all of the document; answered: there was no time "
                            "for all of the document");
    // One cell that is longer than any text that is kept.
    const std::string sheet = "<worksheet xmlns=\"" + schemas +
                              "spreadsheetml/2006/main\"><row><c t=\"str\"><v>" +
                              std::string(49'000'000, 'x') + "</v></c></row></worksheet>";
    Attributed large = attributesOf(
        tests::zipPackage(
            {{"xl/workbook.xml", "<workbook xmlns=\"" + schemas + "spreadsheetml/2006/main\" xmlns:r=\"" +
                                     relationsOfDocument + "\"><sheet name=\"S\" r:id=\"a\"/></workbook>"},
             {"xl/_rels/workbook.xml.rels", relations({{"a", "worksheet", "s.xml"}})},
             {"xl/s.xml", sheet}}),
        workbook);
    EXPECT_EQ(large["TextContent"].substr(0, 4), "S\nxx");
    EXPECT_EQ(large["note"], "answered: the text is longer than is kept");
}

} // namespace
} // namespace kelvo::importers
