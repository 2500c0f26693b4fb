#include "importers/office/OfficeFacts.h"

#include "importers/support/DateText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

namespace kelvo::importers {
namespace {

/// No title is longer.
constexpr std::size_t mostBytesOfFact = std::size_t{1} << 20;

struct Row {
    XMLSpace space;
    std::string_view name;
    std::string OfficeFacts::*fact;
};

constexpr std::array rows{
    Row{XMLSpace::dublinCore, "title", &OfficeFacts::title},
    Row{XMLSpace::dublinCore, "subject", &OfficeFacts::subject},
    Row{XMLSpace::dublinCore, "description", &OfficeFacts::comment},
    Row{XMLSpace::dublinCore, "language", &OfficeFacts::language},
    Row{XMLSpace::dublinCore, "identifier", &OfficeFacts::identifier},
    // In OpenDocument whoever was the last, else the author.
    Row{XMLSpace::dublinCore, "creator", nullptr},
    Row{XMLSpace::dublinCore, "date", &OfficeFacts::modified},
    Row{XMLSpace::dublinCoreTerms, "created", &OfficeFacts::created},
    Row{XMLSpace::dublinCoreTerms, "modified", &OfficeFacts::modified},
    Row{XMLSpace::coreProperties, "keywords", &OfficeFacts::keywords},
    Row{XMLSpace::coreProperties, "lastModifiedBy", &OfficeFacts::lastAuthor},
    Row{XMLSpace::coreProperties, "version", &OfficeFacts::version},
    Row{XMLSpace::extendedProperties, "Application", &OfficeFacts::application},
    Row{XMLSpace::extendedProperties, "Company", &OfficeFacts::company},
    Row{XMLSpace::extendedProperties, "Pages", &OfficeFacts::pages},
    Row{XMLSpace::extendedProperties, "Slides", &OfficeFacts::slides},
    Row{XMLSpace::extendedProperties, "Words", &OfficeFacts::words},
    Row{XMLSpace::meta, "initial-creator", &OfficeFacts::authors},
    Row{XMLSpace::meta, "creation-date", &OfficeFacts::created},
    Row{XMLSpace::meta, "keyword", &OfficeFacts::keywords},
    Row{XMLSpace::meta, "generator", &OfficeFacts::application},
};

enum Element : int {
    properties = static_cast<int>(rows.size()) + 1,
    openDocumentMeta,
    statistics,
};

constexpr auto elementsOfFacts = [] {
    std::array<XMLElement, rows.size() + 4> elements{};
    for (std::size_t index = 0; index < rows.size(); ++index)
        elements[index] = {rows[index].space, rows[index].name, static_cast<int>(index) + 1};
    elements[rows.size()] = {XMLSpace::coreProperties, "coreProperties", properties};
    elements[rows.size() + 1] = {XMLSpace::extendedProperties, "Properties", properties};
    elements[rows.size() + 2] = {XMLSpace::office, "meta", openDocumentMeta};
    elements[rows.size() + 3] = {XMLSpace::meta, "document-statistic", statistics};
    return elements;
}();

NSString stringOf(std::string_view text) {
    return NSString::stringByRepairingUTF8String(text);
}

NSArray arrayOf(std::string_view text, std::string_view separators) {
    NSMutableArray pieces = NSMutableArray::array();
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(separators), text.size());
        pieces.addObject(stringOf(text.substr(0, end)));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return pieces;
}

void setCount(Attributes& attributes, const char* name, std::string_view text) {
    std::int64_t count = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (error == std::errc() && end == text.data() + text.size() && count > 0)
        attributes.setInteger(name, count);
}

void setMoment(Attributes& attributes, const char* name, std::string_view text) {
    const NSString trimmedText = trimmed(stringOf(text));
    if (const auto moment = momentOfClock(trimmedText.characters()))
        attributes.setDate(name, *moment);
}

} // namespace

void OfficeFacts::setSheets(std::size_t count) {
    if (count == 0)
        return;
    sheets = std::to_string(count);
    // On how many they would be printed.
    pages.clear();
}

void OfficeFacts::setSlides(std::size_t count) {
    if (count > 0)
        slides = std::to_string(count);
}

void OfficeFacts::setAttributes(Attributes& attributes) const {
    attributes.set("kMDItemTitle", stringOf(title));
    attributes.set("kMDItemAuthors", arrayOf(authors, ";"));
    attributes.set("kMDItemEditors", arrayOf(lastAuthor, ";"));
    attributes.set("kMDItemKeywords", arrayOf(keywords, ",;"));
    attributes.set("kMDItemComment", stringOf(comment));
    attributes.set("kMDItemSubject", stringOf(subject));
    setMoment(attributes, "kMDItemContentCreationDate", created);
    setMoment(attributes, "kMDItemContentModificationDate", modified);
    attributes.set("kMDItemLanguages", arrayOf(language, ",;"));
    attributes.set("kMDItemCreator", stringOf(application));
    attributes.set("kMDItemOrganizations", arrayOf(company, ";"));
    attributes.set("kMDItemVersion", stringOf(version));
    attributes.set("kMDItemIdentifier", stringOf(identifier));
    setCount(attributes, "kMDItemNumberOfPages", slides.empty() ? pages : slides);
    setCount(attributes, wordCountName, words);
    setCount(attributes, sheetCountName, sheets);
}

std::span<const XMLElement> FactsHandler::elements() {
    return elementsOfFacts;
}

bool FactsHandler::startElement(int element, const XMLAttributes& attributes) {
    text_.clear();
    if (element == properties || element == openDocumentMeta)
        isInside_ = true;
    if (element == openDocumentMeta)
        isOpenDocument_ = true;
    if (element == statistics) {
        facts_.pages = attributes.value(XMLSpace::meta, "page-count");
        facts_.words = attributes.value(XMLSpace::meta, "word-count");
    }
    return true;
}

void FactsHandler::endElement(int element) {
    if (element == openDocumentMeta) {
        // Many programs name nobody else.
        if (facts_.authors.empty())
            facts_.authors = facts_.lastAuthor;
        isInside_ = false;
        isDone_ = true;
    }
    if (isInside_ && element > 0 && element < properties)
        take(rows[static_cast<std::size_t>(element) - 1].fact);
    text_.clear();
}

void FactsHandler::characters(std::string_view piece) {
    if (isInside_ && text_.size() < mostBytesOfFact)
        text_ += piece;
}

void FactsHandler::take(std::string OfficeFacts::*fact) {
    if (!fact)
        fact = isOpenDocument_ ? &OfficeFacts::lastAuthor : &OfficeFacts::authors;
    std::string& text = facts_.*fact;
    if (fact != &OfficeFacts::keywords || text.empty())
        text = text_;
    else if (text.size() < mostBytesOfFact)
        text += "," + text_;
}

} // namespace kelvo::importers
