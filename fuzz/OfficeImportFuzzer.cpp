// The bytes are a file, or, as their first one says, a part with the text in a package of each kind. Whatever they are,
// either there is a text or a note says why not.

#include "Input.h"
#include "importers/office/OfficeImport.h"
#include "support/Importing.h"
#include "support/ZipPackage.h"

#include <iterator>
#include <string>

using namespace kelvo;

namespace {

struct Kind {
    const char* type;
    const char* part;
};

constexpr Kind kinds[] = {
    {"org.openxmlformats.wordprocessingml.document", "word/document.xml"},
    {"org.openxmlformats.presentationml.presentation", "ppt/slides/slide1.xml"},
    {"org.openxmlformats.spreadsheetml.sheet", "xl/worksheets/sheet1.xml"},
    {"org.oasis-open.opendocument.text", "content.xml"},
    {"org.oasis-open.opendocument.text", "meta.xml"},
    {"org.openxmlformats.wordprocessingml.document", "docProps/core.xml"},
};

std::string relations(const std::string& identifier, const std::string& type, const std::string& target) {
    return "<Relationships "
           "xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\"><Relationship Id=\"" +
           identifier + "\" Type=\"/" + type + "\" Target=\"" + target + "\"/></Relationships>";
}

std::string packageWith(const std::string& part, const std::string& content) {
    const std::string spaces =
        " xmlns:r=\"http://schemas.openxmlformats.org/officeDocument/2006/relationships\"";
    const std::string schemas = " xmlns=\"http://schemas.openxmlformats.org/";
    if (part == "content.xml" || part == "meta.xml")
        return tests::zipPackage({{part, content}, {"content.xml", "<a/>"}});
    const std::string folder = part.substr(0, part.find('/'));
    const std::string main = folder == "xl"    ? "xl/workbook.xml"
                             : folder == "ppt" ? "ppt/presentation.xml"
                                               : "word/document.xml";
    return tests::zipPackage(
        {{part, content},
         {"_rels/.rels",
          "<Relationships xmlns=\"http://schemas.openxmlformats.org/package/2006/relationships\">"
          "<Relationship Id=\"a\" Type=\"/core-properties\" Target=\"docProps/core.xml\"/>"
          "<Relationship Id=\"b\" Type=\"/officeDocument\" Target=\"" +
              main + "\"/></Relationships>"},
         {"word/document.xml", "<a/>"},
         {"xl/workbook.xml", "<workbook" + schemas + "spreadsheetml/2006/main\"" + spaces +
                                 "><sheet name=\"S\" r:id=\"a\"/></workbook>"},
         {"xl/_rels/workbook.xml.rels", relations("a", "worksheet", "worksheets/sheet1.xml")},
         {"ppt/presentation.xml", "<presentation" + schemas + "presentationml/2006/main\"" + spaces +
                                      "><sldId r:id=\"a\"/></presentation>"},
         {"ppt/_rels/presentation.xml.rels", relations("a", "slide", "slides/slide1.xml")}});
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    if (size == 0)
        return 0;
    std::string file(reinterpret_cast<const char*>(bytes) + 1, size - 1);
    const Kind* kind = kinds;
    if (const std::size_t choice = bytes[0] - std::size_t{'0'}; choice < std::size(kinds)) {
        kind = kinds + choice;
        file = packageWith(kind->part, file);
    }
    std::size_t notes = 0;
    const NSMutableDictionary attributes =
        attributesByImporter(importers::importOffice, NSData::dataWithBytes(file), kind->type,
                             [&](Outcome, const NSString& sentence) {
                                 require(!sentence.isEmpty());
                                 ++notes;
                             });
    require(!attributes.objectForKey(u"kMDItemTextContent").isNil() || notes > 0);
    const NSString title = attributes.objectForKey(u"kMDItemTitle").string();
    require(title == importers::trimmed(title));
    return 0;
}
