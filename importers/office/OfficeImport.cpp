#include "importers/office/OfficeImport.h"

#include "importers/office/FlatOpenDocument.h"
#include "importers/office/OfficeFacts.h"
#include "importers/office/OpenDocumentText.h"
#include "importers/office/Package.h"
#include "importers/office/Relationships.h"
#include "importers/office/SheetText.h"
#include "importers/office/SlideText.h"
#include "importers/office/TextBuilder.h"
#include "importers/office/WordText.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <string_view>

namespace kelvo::importers {
namespace {

using namespace std::string_view_literals;
using Clock = Package::Clock;

constexpr std::string_view beginningOfZip = "PK";
constexpr std::string_view beginningOfCompoundFile = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
/// What Office Open XML is put into when it is encrypted, by the name of the stream, which is UTF-16.
constexpr std::string_view encryptedStream = "E\0n\0c\0r\0y\0p\0t\0e\0d\0P\0a\0c\0k\0a\0g\0e\0"sv;
/// A flat document says near its beginning what it is.
constexpr std::size_t longestPreamble = 4096;

enum class Kind : std::uint8_t { none, text, sheets, slides };

struct KindRow {
    Kind kind;
    std::string_view folder;
    /// In the uniform type identifier.
    std::string_view word;
    std::string_view mainPart;
};

constexpr std::array kinds{
    KindRow{Kind::text, "word/", ".wordprocessingml.", "word/document.xml"},
    KindRow{Kind::sheets, "xl/", ".spreadsheetml.", "xl/workbook.xml"},
    KindRow{Kind::slides, "ppt/", ".presentationml.", "ppt/presentation.xml"},
};

/// Whether a package says that any part of it is encrypted.
class ManifestHandler final : public XMLHandler {
public:
    static constexpr std::array elements{XMLElement{XMLSpace::manifest, "encryption-data", 1}};

    bool startElement(int element, const XMLAttributes&) override {
        isEncrypted = isEncrypted || element != 0;
        return true;
    }
    void endElement(int) override {}
    void characters(std::string_view) override {}
    bool wantsMore() const override { return !isEncrypted; }

    bool isEncrypted = false;
};

void noteLocked(Attributes& attributes) {
    attributes.set("kMDItemSecurityMethod", NSString(u"Password Encrypted"));
    attributes.note(MDNoteLocked, "the document is encrypted");
}

void readFacts(Package& package, std::string_view part, OfficeFacts& facts) {
    FactsHandler handler(facts);
    XMLReader reader(FactsHandler::elements(), handler);
    package.read(part, reader);
}

void readOpenDocument(Package& package, std::string_view part, OpenDocumentHandler& handler) {
    XMLReader reader(OpenDocumentHandler::elements(), handler);
    package.read(part, reader);
}

bool isEncrypted(Package& package) {
    ManifestHandler handler;
    XMLReader reader(ManifestHandler::elements, handler);
    package.read("META-INF/manifest.xml", reader);
    return handler.isEncrypted || package.has("encrypted-package");
}

void importOpenDocument(Attributes& attributes, Package& package) {
    if (isEncrypted(package)) {
        noteLocked(attributes);
        return;
    }
    OfficeFacts facts;
    readFacts(package, "meta.xml", facts);
    facts.setAttributes(attributes);
    OpenDocumentHandler handler;
    readOpenDocument(package, "content.xml", handler);
    if (!package.isSpent() && handler.wantsMore())
        readOpenDocument(package, "styles.xml", handler);
    setTextOfOpenDocument(attributes, handler, facts, package.fault());
}

/// The kind, by where its main part is, or else by its type.
Kind kindOf(std::string_view part, std::string_view contentType) {
    auto row =
        std::ranges::find_if(kinds, [&](const KindRow& each) { return part.starts_with(each.folder); });
    if (row == kinds.end())
        row = std::ranges::find_if(
            kinds, [&](const KindRow& each) { return contentType.find(each.word) != contentType.npos; });
    return row == kinds.end() ? Kind::none : row->kind;
}

std::string mainPartOf(const Package& package, const std::vector<Relationship>& relationships) {
    std::string part = targetByType(relationships, "officeDocument");
    if (!part.empty() && package.has(part))
        return part;
    const auto row =
        std::ranges::find_if(kinds, [&](const KindRow& each) { return package.has(each.mainPart); });
    return row == kinds.end() ? std::string() : std::string(row->mainPart);
}

void importOpenXML(Attributes& attributes, Package& package) {
    const auto relationships = relationshipsOf(package, "");
    const std::string part = mainPartOf(package, relationships);
    if (part.empty()) {
        attributes.note(MDNoteBroken, "it is no document, or its main part is missing");
        return;
    }
    OfficeFacts facts;
    for (const std::string_view type : {"core-properties"sv, "extended-properties"sv, "extendedProperties"sv})
        readFacts(package, targetByType(relationships, type), facts);
    facts.setAttributes(attributes);
    TextBuilder text;
    switch (kindOf(part, attributes.contentType())) {
    case Kind::text:
        appendWordText(text, package, part);
        break;
    case Kind::sheets:
        if (part.ends_with(".bin")) {
            attributes.note(MDNoteIncomplete, "the text of binary workbooks is not read");
            return;
        }
        facts.setSheets(appendSheetText(text, package, part));
        break;
    case Kind::slides:
        facts.setSlides(appendSlideText(text, package, part));
        break;
    case Kind::none:
        attributes.note(MDNoteUnsupported, "it is a package of another kind");
        return;
    }
    facts.setAttributes(attributes);
    setTextOfOffice(attributes, text, package.fault());
}

} // namespace

void importOfficeWithin(Attributes& attributes, double seconds) {
    const auto deadline =
        Clock::now() + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
    const std::string_view file = attributes.file();
    if (file.starts_with(beginningOfZip)) {
        Package package(file, deadline);
        if (!package.isOpen())
            attributes.note(MDNoteBroken, "the zip file that the document consists of is damaged");
        else if (package.has("content.xml"))
            importOpenDocument(attributes, package);
        else
            importOpenXML(attributes, package);
    } else if (file.starts_with(beginningOfCompoundFile)) {
        if (file.find(encryptedStream) != file.npos)
            noteLocked(attributes);
        else
            attributes.note(MDNoteBroken, "it is a document of another kind than its name says");
    } else if (file.substr(0, longestPreamble).find("<office:document") != file.npos) {
        OfficeFacts facts;
        readFactsOfFlat(file, deadline, facts);
        facts.setAttributes(attributes);
        importFlatText(attributes, file, deadline, facts);
    } else {
        attributes.note(MDNoteBroken, "it is no document of this kind, or a damaged one");
    }
}

void importOffice(Attributes& attributes) {
    importOfficeWithin(attributes, mostSecondsOfImport);
}

} // namespace kelvo::importers
