#include "platform/pdfkit/engine/OpenDocument.h"

#include "platform/pdfkit/PDFDocument.h"
#include "platform/pdfkit/PDFEngineMessages.h"
#include "platform/pdfkit/engine/LockedDocument.h"
#include "platform/pdfkit/engine/StyledPage.h"

#include <poppler/cpp/poppler-document.h>
#include <poppler/cpp/poppler-global.h>
#include <poppler/cpp/poppler-page.h>

#include <algorithm>
#include <ctime>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

using namespace pdfengine;

std::unique_ptr<poppler::document> documentOfBytes(std::string_view bytes) {
    return std::unique_ptr<poppler::document>(
        poppler::document::load_from_raw_data(bytes.data(), static_cast<int>(bytes.size())));
}

std::u16string unitsOf(const poppler::ustring& string) {
    std::u16string units(string.begin(), string.end());
    // Conversions put it before what they convert.
    if (units.starts_with(u'\uFEFF'))
        units.erase(0, 1);
    return units;
}

void setIfAny(NSMutableDictionary& attributes, const poppler::ustring& value, const char16_t* key) {
    std::u16string units = unitsOf(value);
    // Some writers end strings as C does.
    units.resize(units.find_last_not_of(u'\0') + 1);
    if (!units.empty())
        attributes.setObject_forKey(NSString(units), key);
}

void setIfAny(NSMutableDictionary& attributes, std::time_t time, const char16_t* key) {
    // What the library answers when there is no date as well.
    if (time != static_cast<std::time_t>(-1))
        attributes.setObject_forKey(NSDate::dateWithTimeIntervalSince1970(static_cast<double>(time)), key);
}

/// Keywords are one string in the file, with whatever between them that their author put there.
NSArray keywordsIn(std::u16string_view string) {
    const std::u16string_view separators = string.find(u';') != string.npos   ? u";\r\n"
                                           : string.find(u',') != string.npos ? u",\r\n"
                                                                              : u"\r\n";
    std::vector<Value> keywords;
    while (!string.empty()) {
        const std::size_t end = std::min(string.find_first_of(separators), string.size());
        std::u16string_view keyword = string.substr(0, end);
        string.remove_prefix(std::min(end + 1, string.size()));
        keyword.remove_prefix(std::min(keyword.find_first_not_of(u" \t"), keyword.size()));
        keyword = keyword.substr(0, keyword.find_last_not_of(u" \t") + 1);
        if (!keyword.empty())
            keywords.emplace_back(NSString(keyword));
    }
    return NSArray::arrayWithValues(std::move(keywords));
}

NSDictionary attributesOf(const poppler::document& document) {
    auto attributes = NSMutableDictionary::dictionary();
    setIfAny(attributes, document.get_title(), PDFDocumentTitleAttribute);
    setIfAny(attributes, document.get_author(), PDFDocumentAuthorAttribute);
    setIfAny(attributes, document.get_subject(), PDFDocumentSubjectAttribute);
    setIfAny(attributes, document.get_creator(), PDFDocumentCreatorAttribute);
    setIfAny(attributes, document.get_producer(), PDFDocumentProducerAttribute);
    setIfAny(attributes, document.get_creation_date_t(), PDFDocumentCreationDateAttribute);
    setIfAny(attributes, document.get_modification_date_t(), PDFDocumentModificationDateAttribute);
    if (const NSArray keywords = keywordsIn(unitsOf(document.get_keywords())); keywords.count() > 0)
        attributes.setObject_forKey(keywords, PDFDocumentKeywordsAttribute);
    return attributes;
}

/// Null when there is no such page.
std::unique_ptr<poppler::page> pageOf(const poppler::document& document, std::int64_t index) {
    // Asking a locked one for its pages ends the process.
    if (document.is_locked() || index < 0 || index >= document.pages())
        return nullptr;
    return std::unique_ptr<poppler::page>(document.create_page(static_cast<int>(index)));
}

/// As the library's own program orders it, without the line ends and the sign at the end of the page.
std::u16string textOf(const poppler::page& page) {
    std::u16string text = unitsOf(page.text(poppler::rectf(), poppler::page::non_raw_non_physical_layout));
    if (text.size() > mostUnitsOfPage)
        text.resize(mostUnitsOfPage - ((text[mostUnitsOfPage] & 0xFC00) == 0xDC00 ? 1 : 0));
    text.resize(text.find_last_not_of(u"\n\f") + 1);
    return text;
}

Value boxOf(const PageBox& box) {
    std::vector<Value> numbers;
    for (const double number : {box.x, box.y, box.width, box.height})
        numbers.emplace_back(NSNumber::numberWithDouble(number));
    return NSArray::arrayWithValues(std::move(numbers));
}

Value boxOf(const poppler::page* page, poppler::page_box_enum box) {
    if (!page)
        return {};
    const poppler::rectf area = page->page_rect(box);
    return boxOf(PageBox{area.x(), area.y(), area.width(), area.height()});
}

} // namespace

struct OpenDocument::Fronts {
    std::unique_ptr<poppler::document> document;
    LockedDocument locked;
    /// Opened when styles are first asked for.
    std::unique_ptr<PageStyles> styles;
};

OpenDocument::OpenDocument(NSData data, std::int64_t number, std::unique_ptr<Fronts> fronts)
    : data_(std::move(data)), number_(number), fronts_(std::move(fronts)) {}

OpenDocument::~OpenDocument() = default;

std::unique_ptr<OpenDocument> OpenDocument::open(const NSData& data, std::int64_t number) {
    auto fronts = std::make_unique<Fronts>();
    fronts->document = documentOfBytes(data.characters());
    if (!fronts->document)
        return nullptr;
    if (fronts->document->is_locked())
        fronts->locked = readLockedDocument(data.characters());
    return std::unique_ptr<OpenDocument>(new OpenDocument(data, number, std::move(fronts)));
}

NSDictionary OpenDocument::facts() const {
    const poppler::document& document = *fronts_->document;
    const bool isLocked = document.is_locked();
    // What a locked document says of itself is encrypted like its text.
    const int pageCount = isLocked ? fronts_->locked.pageCount.value_or(0) : document.pages();
    auto facts = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithBool(isLocked), lockedKey},
         {NSNumber::numberWithInt(std::max(pageCount, 0)), pageCountKey}});
    if (!isLocked) {
        if (const NSDictionary attributes = attributesOf(document); attributes.count() > 0)
            facts.setObject_forKey(attributes, attributesKey);
    }
    return facts;
}

Value OpenDocument::text(std::int64_t index) const {
    const auto page = pageOf(*fronts_->document, index);
    return page ? Value(NSString(textOf(*page))) : Value();
}

Value OpenDocument::styledText(std::int64_t index) {
    const auto page = pageOf(*fronts_->document, index);
    if (!page)
        return {};
    const std::u16string text = textOf(*page);
    if (!fronts_->styles)
        fronts_->styles = std::make_unique<PageStyles>(data_.characters());
    return fronts_->styles->styledText(text, static_cast<int>(index), *page);
}

Value OpenDocument::mediaBox(std::int64_t page) const {
    if (page == 0 && fronts_->locked.firstMediaBox)
        return boxOf(*fronts_->locked.firstMediaBox);
    return boxOf(pageOf(*fronts_->document, page).get(), poppler::media_box);
}

Value OpenDocument::cropBox(std::int64_t page) const {
    return boxOf(pageOf(*fronts_->document, page).get(), poppler::crop_box);
}

Value OpenDocument::sizeAsRead(std::int64_t index) const {
    const auto page = pageOf(*fronts_->document, index);
    if (!page)
        return {};
    const PageSize size = sizeOfPageAsRead(*page);
    return NSArray::arrayWithObjects(
        {NSNumber::numberWithDouble(size.width), NSNumber::numberWithDouble(size.height)});
}

Value OpenDocument::pixels(std::int64_t index, const PixelRequest& request) const {
    const auto page = pageOf(*fronts_->document, index);
    return page ? Value(pixelsOfPage(*page, request)) : Value();
}

void keepPDFLibraryWarm() {
    poppler::set_debug_error_function([](const std::string&, void*) {}, nullptr);
    // With the last document the library forgets its tables, and reads them anew for the next.
    static constexpr std::string_view emptyDocument =
        "%PDF-1.4\n1 0 obj<</Type/Catalog/Pages 2 0 R>>endobj\n2 0 obj<</Type/Pages/Count 0/Kids[]>>endobj\n"
        "trailer<</Root 1 0 R>>\n";
    static const auto* const kept = documentOfBytes(emptyDocument).release();
    static_cast<void>(kept);
}

} // namespace kelvo
