#include "importers/pdf/PDFImport.h"

#include <chrono>
#include <climits>
#include <cmath>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <poppler-document.h>
#include <poppler-page.h>

namespace kelvo::importers {
namespace {

using Clock = std::chrono::steady_clock;

/// Up to here text is set before there is all of it. What is set more than once counts each time.
constexpr std::size_t mostUnitsKeptOnTheWay = mostUnitsOfText / 8;
/// Where readers look for the beginning.
constexpr std::size_t longestPreamble = 1024;

/// The characters of PDFDocEncoding from 0x80 on, where it is not Latin 1. (0xA0 stands for the euro sign too, but may as
/// well be a space from UTF-16.)
constexpr std::u16string_view charactersFrom80 =
    u"\u2022\u2020\u2021\u2026\u2014\u2013\u0192\u2044\u2039\u203A\u2212\u2030\u201E\u201C\u201D\u2018"
    u"\u2019\u201A\u2122\uFB01\uFB02\u0141\u0152\u0160\u0178\u017D\u0131\u0142\u0153\u0161\u017E";

std::u16string unitsOf(const poppler::ustring& text) {
    return {text.begin(), text.end()};
}

/// What a document says of itself. Poppler decodes UTF-16, and takes whatever is not for Latin 1.
std::u16string unitsOfFact(const poppler::ustring& text) {
    std::u16string units = unitsOf(text);
    if (units.starts_with(u"\u00EF\u00BB\u00BF")) {
        std::string bytes;
        for (const char16_t unit : units.substr(3))
            bytes += static_cast<char>(unit);
        return std::u16string(NSString::stringByRepairingUTF8String(bytes).characters());
    }
    for (char16_t& unit : units) {
        if (unit >= 0x80 && unit - 0x80u < charactersFrom80.size())
            unit = charactersFrom80[unit - 0x80];
    }
    return units;
}

std::vector<std::u16string_view> pieces(std::u16string_view text, std::u16string_view separators) {
    std::vector<std::u16string_view> result;
    for (;;) {
        const std::size_t end = text.find_first_of(separators);
        result.push_back(text.substr(0, end));
        if (end == std::u16string_view::npos)
            return result;
        text.remove_prefix(end + 1);
    }
}

NSArray arrayOf(const std::vector<std::u16string_view>& pieces) {
    NSMutableArray result = NSMutableArray::array();
    for (const std::u16string_view piece : pieces)
        result.addObject(trimmed(NSString(piece)));
    return result;
}

/// "Lindqvist, Ada" is one author, and so is "Quay & Sons, Ltd."; "Ada Lindqvist, Per Ek" are two. A semicolon never
/// stands within a name.
NSArray authorsIn(const std::u16string& text) {
    if (text.find(u';') != std::u16string::npos)
        return arrayOf(pieces(text, u";"));
    NSArray people = arrayOf(pieces(text, u","));
    for (const Value& person : people) {
        if (person.string().characters().find(u' ') == std::u16string_view::npos)
            return arrayOf({text});
    }
    return people;
}

void setDate(Attributes& attributes, const char* name, std::time_t date) {
    // What Poppler answers for one that is absent, or is no date.
    if (date != static_cast<std::time_t>(-1))
        attributes.setDate(name, NSDate::dateWithTimeIntervalSince1970(static_cast<double>(date)));
}

void setVersion(Attributes& attributes, int major, int minor) {
    if (major > 0)
        attributes.set("kMDItemVersion",
                       NSString::stringWithUTF8String(std::to_string(major) + '.' + std::to_string(minor)));
}

/// Poppler knows no version of a document that it cannot open.
void setVersionOfBeginning(Attributes& attributes) {
    constexpr std::string_view mark = "%PDF-";
    const std::string_view preamble = attributes.file().substr(0, longestPreamble);
    const std::size_t start = preamble.find(mark);
    if (start == std::string_view::npos)
        return;
    const std::string_view version = preamble.substr(start + mark.size(), 3);
    const auto isDigit = [](char byte) { return byte >= '0' && byte <= '9'; };
    if (version.size() == 3 && isDigit(version[0]) && version[1] == '.' && isDigit(version[2]))
        setVersion(attributes, version[0] - '0', version[2] - '0');
}

void setFacts(Attributes& attributes, const poppler::document& document) {
    attributes.set("kMDItemTitle", NSString(unitsOfFact(document.get_title())));
    attributes.set("kMDItemAuthors", authorsIn(unitsOfFact(document.get_author())));
    attributes.set("kMDItemSubject", NSString(unitsOfFact(document.get_subject())));
    attributes.set("kMDItemKeywords", arrayOf(pieces(unitsOfFact(document.get_keywords()), u",;")));
    attributes.set("kMDItemCreator", NSString(unitsOfFact(document.get_creator())));
    attributes.set("kMDItemEncodingApplications", arrayOf({unitsOfFact(document.get_producer())}));
    setDate(attributes, "kMDItemContentCreationDate", document.get_creation_date_t());
    setDate(attributes, "kMDItemContentModificationDate", document.get_modification_date_t());
    int major = 0;
    int minor = 0;
    document.get_pdf_version(&major, &minor);
    setVersion(attributes, major, minor);
    attributes.set("kMDItemSecurityMethod",
                   NSString(document.is_encrypted() ? u"Password Encrypted" : u"None"));
}

void setPageSize(Attributes& attributes, const poppler::page& page) {
    const poppler::rectf box = page.page_rect(poppler::crop_box);
    double width = box.width();
    double height = box.height();
    if (!std::isfinite(width) || !std::isfinite(height) || width <= 0 || height <= 0)
        return;
    const auto orientation = page.orientation();
    if (orientation == poppler::page::landscape || orientation == poppler::page::seascape)
        std::swap(width, height);
    attributes.setReal("kMDItemPageWidth", width);
    attributes.setReal("kMDItemPageHeight", height);
}

/// Without the form feed at its end, and what stands before it.
std::u16string_view withoutPageBreak(std::u16string_view text) {
    return text.substr(0, text.find_last_not_of(u"\n\f") + 1);
}

std::u16string unitsOfPage(const poppler::page& page) {
    return unitsOf(page.text({}, poppler::page::non_raw_non_physical_layout));
}

std::unique_ptr<poppler::document> documentOf(std::string_view file) {
    return std::unique_ptr<poppler::document>(
        poppler::document::load_from_raw_data(file.data(), static_cast<int>(file.size())));
}

/// Poppler makes its tables for the first document and gives them up with the last, in more time than a short document
/// takes. With this one there is no last.
void keepTablesOfPoppler() {
    static const std::unique_ptr<poppler::document> document = documentOf(
        "%PDF-1.0\n1 0 obj<</Type/Catalog/Pages<</Count 0>>>>endobj\ntrailer<</Size 2/Root 1 0 R>>\n");
}

/// Sets the text of the pages until then.
void setTextOfPages(Attributes& attributes, const poppler::document& document, Clock::time_point start,
                    double seconds) {
    std::u16string text;
    const int pages = document.pages();
    int missing = 0;
    std::size_t kept = 0;
    bool isLate = false;
    for (int index = 0; index < pages && text.size() <= mostUnitsOfText; ++index) {
        isLate = std::chrono::duration<double>(Clock::now() - start).count() >= seconds;
        if (isLate)
            break;
        // A page may take longer than the file has, and cannot be stopped: what stands before it is not to be lost.
        if (text.size() > 2 * kept && text.size() < mostUnitsKeptOnTheWay) {
            attributes.setText(text);
            kept = text.size();
        }
        const std::unique_ptr<poppler::page> page(document.create_page(index));
        if (!page) {
            ++missing;
            continue;
        }
        if (index > missing)
            text += u'\n';
        text += withoutPageBreak(unitsOfPage(*page));
    }
    if (missing < pages && !(isLate && text.empty()))
        attributes.setText(text);
    if (isLate)
        attributes.note(MDNoteIncomplete, "there was no time for the text of all pages");
    if (missing > 0)
        attributes.note(missing < pages ? MDNoteIncomplete : MDNoteBroken, "pages are missing");
}

} // namespace

void importPDFWithin(Attributes& attributes, double seconds) {
    const Clock::time_point start = Clock::now();
    const std::string_view file = attributes.file();
    if (file.size() > INT_MAX) {
        attributes.note(MDNoteUnsupported, "the document is larger than 2 GB");
        return;
    }
    // Without one it writes to the standard error what it finds wrong in each document.
    poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
    keepTablesOfPoppler();
    const std::unique_ptr<poppler::document> document = documentOf(file);
    if (!document) {
        // Illustrator saved its drawings so before they were PDF inside.
        if (file.starts_with("%!PS"))
            attributes.note(MDNoteUnsupported, "the document is PostScript");
        else
            attributes.note(MDNoteBroken, "the document is damaged, or no PDF");
        return;
    }
    // Nearly everything else that is asked of a locked document crashes. Without a password it has been tried.
    if (document->is_locked()) {
        setVersionOfBeginning(attributes);
        attributes.set("kMDItemSecurityMethod", NSString(u"Password Encrypted"));
        attributes.note(MDNoteLocked, "the document is encrypted");
        return;
    }
    setFacts(attributes, *document);
    const int pages = document->pages();
    if (pages <= 0) {
        attributes.note(MDNoteBroken, "the document has no pages");
        return;
    }
    attributes.setInteger("kMDItemNumberOfPages", pages);
    if (const std::unique_ptr<poppler::page> first(document->create_page(0)); first)
        setPageSize(attributes, *first);
    setTextOfPages(attributes, *document, start, seconds);
}

void importPDF(Attributes& attributes) {
    importPDFWithin(attributes, mostSecondsOfImport);
}

} // namespace kelvo::importers
