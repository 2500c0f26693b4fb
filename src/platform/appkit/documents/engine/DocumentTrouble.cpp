#include "platform/appkit/documents/engine/DocumentTrouble.h"

#include "platform/appkit/documents/engine/CompoundFile.h"
#include "platform/appkit/documents/engine/ZipEntries.h"

#include <expat.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace kelvo::documentengine {
namespace {

constexpr std::uint32_t isEncryptedFlagOfWord = 0x100;

/// Without them there is no text. What else is in a package belongs to who wrote it, and so is not named.
constexpr std::array partsWithText{std::string_view("content.xml"), std::string_view("styles.xml"),
                                   std::string_view("word/document.xml"),
                                   std::string_view("word/styles.xml")};
constexpr std::size_t mostBytesOfPart = std::size_t{64} << 20;
constexpr std::size_t mostBytesAtOnce = std::size_t{1} << 20;

const DocumentTrouble encrypted{Outcome::locked, u"the document is encrypted"};

bool isZip(std::string_view extension) {
    return extension == "odt" || extension == "sxw" || extension == "docx";
}

DocumentTrouble broken(const std::string& sentence) {
    return {Outcome::broken, NSString::stringByRepairingUTF8String(sentence)};
}

/// Where the XML is not well formed, in words.
std::optional<std::string> faultOfXML(std::string_view text) {
    const std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate(nullptr), XML_ParserFree);
    auto status = XML_STATUS_OK;
    do {
        const std::string_view piece = text.substr(0, mostBytesAtOnce);
        text.remove_prefix(piece.size());
        status = XML_Parse(parser.get(), piece.data(), static_cast<int>(piece.size()), text.empty());
    } while (status == XML_STATUS_OK && !text.empty());
    if (status == XML_STATUS_OK)
        return std::nullopt;
    return std::string(XML_ErrorString(XML_GetErrorCode(parser.get()))) + " in line " +
           std::to_string(XML_GetCurrentLineNumber(parser.get()));
}

bool isEncrypted(const std::vector<ZipEntry>& entries) {
    return std::ranges::any_of(entries, [](const ZipEntry& entry) {
        if (entry.isEncrypted() || entry.name == "encrypted-package")
            return true;
        if (entry.name != "META-INF/manifest.xml" || entry.length() > mostBytesOfPart)
            return false;
        return contentsOf(entry).value_or("").find(":encryption-data") != std::string::npos;
    });
}

/// Nothing when it is not as it was written.
std::optional<std::string> wholeContentsOf(const ZipEntry& entry) {
    auto contents = contentsOf(entry);
    const std::string_view bytes = contents ? std::string_view(*contents) : std::string_view();
    if (crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size())) !=
        entry.checksum())
        contents.reset();
    return contents;
}

/// What is wrong with the first of the parts with text of which anything is; empty when that is nothing.
std::string faultOfParts(const std::vector<ZipEntry>& entries, std::string_view extension) {
    for (const std::string_view name : partsWithText) {
        const auto entry = std::ranges::find(entries, name, &ZipEntry::name);
        if (entry == entries.end() && name == partsWithText.front() && extension != "docx")
            return "the document has no part " + std::string(name);
        if (entry == entries.end() || entry->length() > mostBytesOfPart)
            continue;
        const std::string part = "the part " + std::string(name) + " of the document is ";
        const auto contents = wholeContentsOf(*entry);
        if (!contents)
            return part + "damaged";
        if (const auto fault = faultOfXML(*contents))
            return part + "not well-formed XML: " + *fault;
    }
    return {};
}

DocumentTrouble troubleWithZip(std::string_view document, std::string_view extension) {
    const auto entries = entriesOfZip(document);
    if (!entries)
        return broken("the zip file that the document consists of is damaged");
    if (isEncrypted(*entries))
        return encrypted;
    const std::string fault = faultOfParts(*entries, extension);
    return broken(fault.empty() ? "it is no text document, or a damaged one" : fault);
}

DocumentTrouble troubleWithWord(std::string_view document) {
    const CompoundFile file(document);
    const auto text = file.streamNamed(nameOfWordText);
    if (!text || file.number(*text, 0, 2) != signatureOfWordText)
        return broken("the text of the document is not where it should be in the file");
    if ((file.number(*text, 10, 2).value_or(0) & isEncryptedFlagOfWord) != 0)
        return encrypted;
    if (!text->place(text->length - 1))
        return broken("the text of the document is cut off");
    return broken("the document is damaged");
}

} // namespace

DocumentTrouble troubleWithDocument(std::string_view document, std::string_view extension) {
    if (extension == "doc")
        return troubleWithWord(document);
    if (extension == "xls" || extension == "ppt")
        return broken("the document is damaged, or of another kind than its name says");
    if (extension == "xml" || extension == "fodt") {
        const auto fault = faultOfXML(document);
        return broken(fault ? "the document is not well-formed XML: " + *fault : "the document is damaged");
    }
    return troubleWithZip(document, extension);
}

NSString lossOfDocument(std::string_view document, std::string_view extension) {
    if (!isZip(extension))
        return nullptr;
    const auto entries = entriesOfZip(document);
    // Of one that has a directory for large files there is more than is looked at here.
    const bool isLarge = !entries && document.find("PK\x06\x06") != std::string_view::npos;
    const std::string fault = isLarge    ? ""
                              : !entries ? "the zip file that the document consists of is damaged"
                                         : faultOfParts(*entries, extension);
    return fault.empty() ? NSString()
                         : NSString::stringByRepairingUTF8String(fault + "; what was left of it was read");
}

} // namespace kelvo::documentengine
