#pragma once

#include "support/ZipPackage.h"

#include <string>

namespace kelvo::tests {

/// A picture of one red pixel.
inline std::string smallPNG() {
    using namespace std::string_literals;
    return "\x89PNG\r\n\x1A\n\0\0\0\rIHDR\0\0\0\1\0\0\0\1\x08\2\0\0\0\x90wS\xDE\0\0\0\x0CIDATx\234c\xF8\xCF"
           "\xC0"
           "\0\0\0\x03\1\1\0\xC9\xFE\x92\xEF\0\0\0\0IEND\256B`\x82"s;
}

inline std::string odfNamespaces() {
    return R"( xmlns:office="urn:oasis:names:tc:opendocument:xmlns:office:1.0")"
           R"( xmlns:text="urn:oasis:names:tc:opendocument:xmlns:text:1.0")"
           R"( xmlns:draw="urn:oasis:names:tc:opendocument:xmlns:drawing:1.0")"
           R"( xmlns:svg="urn:oasis:names:tc:opendocument:xmlns:svg-compatible:1.0")"
           R"( xmlns:xlink="http://www.w3.org/1999/xlink" office:version="1.2")";
}

/// `body` is what stands in office:text.
inline std::string flatOpenDocument(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<office:document" + odfNamespaces() +
           " office:mimetype=\"application/vnd.oasis.opendocument.text\"><office:body><office:text>" + body +
           "</office:text></office:body></office:document>";
}

enum class Encryption { none, claimed };

inline std::string openDocument(const std::string& body, Encryption encryption = Encryption::none) {
    const std::string claim =
        R"(<manifest:encryption-data manifest:checksum-type="SHA1/1K" manifest:checksum="AAAAAAAAAAAAAAAAAAAAAAAAAAA=">)"
        R"(<manifest:algorithm manifest:algorithm-name="Blowfish CFB" manifest:initialisation-vector="AAAAAAAAAAA="/>)"
        R"(<manifest:key-derivation manifest:key-derivation-name="PBKDF2" manifest:iteration-count="1024")"
        R"( manifest:salt="AAAAAAAAAAAAAAAAAAAAAA=="/></manifest:encryption-data>)";
    return zipPackage(
        {{"mimetype", "application/vnd.oasis.opendocument.text"},
         {"META-INF/manifest.xml",
          R"(<?xml version="1.0"?><manifest:manifest xmlns:manifest="urn:oasis:names:tc:opendocument:xmlns:manifest:1.0")"
          R"( manifest:version="1.2"><manifest:file-entry manifest:full-path="/")"
          R"( manifest:media-type="application/vnd.oasis.opendocument.text"/>)"
          R"(<manifest:file-entry manifest:full-path="content.xml" manifest:media-type="text/xml" manifest:size="900">)" +
              (encryption == Encryption::claimed ? claim : "") +
              "</manifest:file-entry></manifest:manifest>"},
         {"content.xml", "<?xml version=\"1.0\"?><office:document-content" + odfNamespaces() +
                             "><office:body><office:text>" + body +
                             "</office:text></office:body></office:document-content>"}});
}

/// One paragraph with the text, and a picture at its end.
inline std::string officeOpenXML(const std::string& text, const std::string& title) {
    const std::string types = "application/vnd.openxmlformats-";
    const std::string relations = "http://schemas.openxmlformats.org/officeDocument/2006/relationships";
    const std::string drawing = "http://schemas.openxmlformats.org/drawingml/2006/";
    const std::string packages = "http://schemas.openxmlformats.org/package/2006/";
    return zipPackage({
        {"[Content_Types].xml",
         "<Types xmlns=\"" + packages + "content-types\"><Default Extension=\"rels\" ContentType=\"" + types +
             "package.relationships+xml\"/><Default Extension=\"png\" ContentType=\"image/png\"/><Override "
             "PartName=\"/word/document.xml\" ContentType=\"" +
             types +
             "officedocument.wordprocessingml.document.main+xml\"/><Override PartName=\"/docProps/core.xml\" "
             "ContentType=\"" +
             types + "package.core-properties+xml\"/></Types>"},
        {"_rels/.rels",
         "<Relationships xmlns=\"" + packages + "relationships\"><Relationship Id=\"r1\" Type=\"" +
             relations + "/officeDocument\" Target=\"word/document.xml\"/><Relationship Id=\"r2\" Type=\"" +
             packages +
             "relationships/metadata/core-properties\" Target=\"docProps/core.xml\"/></Relationships>"},
        {"docProps/core.xml",
         "<cp:coreProperties xmlns:cp=\"" + packages +
             "metadata/core-properties\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><dc:title>" + title +
             "</dc:title><dc:creator>Ann Author</dc:creator><cp:keywords>one, "
             "two</cp:keywords></cp:coreProperties>"},
        {"word/_rels/document.xml.rels", "<Relationships xmlns=\"" + packages +
                                             "relationships\"><Relationship Id=\"p1\" Type=\"" + relations +
                                             "/image\" Target=\"media/image1.png\"/></Relationships>"},
        {"word/media/image1.png", smallPNG()},
        {"word/document.xml",
         "<w:document xmlns:w=\"http://schemas.openxmlformats.org/wordprocessingml/2006/main\" xmlns:r=\"" +
             relations + "\" xmlns:wp=\"" + drawing + "wordprocessingDrawing\" xmlns:a=\"" + drawing +
             "main\" xmlns:pic=\"" + drawing + "picture\"><w:body><w:p><w:r><w:rPr><w:b/></w:rPr><w:t>" +
             text +
             "</w:t></w:r><w:r><w:drawing><wp:inline><wp:extent cx=\"360000\" cy=\"360000\"/><wp:docPr "
             "id=\"1\" name=\"P\"/><a:graphic><a:graphicData uri=\"" +
             drawing +
             "picture\"><pic:pic><pic:nvPicPr><pic:cNvPr id=\"1\" "
             "name=\"P\"/><pic:cNvPicPr/></pic:nvPicPr><pic:blipFill><a:blip "
             "r:embed=\"p1\"/></pic:blipFill><pic:spPr><a:xfrm><a:off x=\"0\" y=\"0\"/><a:ext cx=\"360000\" "
             "cy=\"360000\"/></a:xfrm><a:prstGeom "
             "prst=\"rect\"/></pic:spPr></pic:pic></a:graphicData></a:graphic></wp:inline></w:drawing></"
             "w:r></w:p></w:body></w:document>"},
    });
}

inline std::string wordML(const std::string& text) {
    return "<?xml version=\"1.0\"?>\n<?mso-application progid=\"Word.Document\"?>\n"
           "<w:wordDocument "
           "xmlns:w=\"http://schemas.microsoft.com/office/word/2003/wordml\"><w:body><w:p><w:r><w:t>" +
           text + "</w:t></w:r></w:p></w:body></w:wordDocument>";
}

/// The format before OpenDocument.
inline std::string openOfficeText(const std::string& text) {
    return zipPackage(
        {{"mimetype", "application/vnd.sun.xml.writer"},
         {"content.xml",
          "<?xml version=\"1.0\"?><office:document-content "
          "xmlns:office=\"http://openoffice.org/2000/office\" xmlns:text=\"http://openoffice.org/2000/text\" "
          "office:class=\"text\" office:version=\"1.0\"><office:body><text:p>" +
              text + "</text:p></office:body></office:document-content>"},
         {"META-INF/manifest.xml",
          "<?xml version=\"1.0\"?><manifest:manifest "
          "xmlns:manifest=\"http://openoffice.org/2001/manifest\"><manifest:file-entry "
          "manifest:media-type=\"application/vnd.sun.xml.writer\" "
          "manifest:full-path=\"/\"/><manifest:file-entry manifest:media-type=\"text/xml\" "
          "manifest:full-path=\"content.xml\"/></manifest:manifest>"}});
}

} // namespace kelvo::tests
