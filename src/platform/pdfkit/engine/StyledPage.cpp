#include "platform/pdfkit/engine/StyledPage.h"

#include "platform/pdfkit/PDFEngineMessages.h"
#include "platform/pdfkit/engine/LateLibrary.h"
#include "platform/pdfkit/engine/StyleAlignment.h"

#include <poppler/cpp/poppler-page.h>
#include <poppler/glib/poppler.h>

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

using namespace pdfengine;

/// The front's functions.
struct Front {
    Front() {
        LateLibrary library("libpoppler-glib.so.8");
        library.find(bytesNew, "g_bytes_new_static");
        library.find(bytesUnref, "g_bytes_unref");
        library.find(objectUnref, "g_object_unref");
        library.find(free, "g_free");
        library.find(documentNew, "poppler_document_new_from_bytes");
        library.find(pageCount, "poppler_document_get_n_pages");
        library.find(page, "poppler_document_get_page");
        library.find(text, "poppler_page_get_text");
        library.find(attributes, "poppler_page_get_text_attributes");
        library.find(freeAttributes, "poppler_page_free_text_attributes");
        isComplete = library.isComplete();
    }

    bool isComplete;
    decltype(g_bytes_new_static)* bytesNew;
    decltype(g_bytes_unref)* bytesUnref;
    void (*objectUnref)(void*);
    void (*free)(void*);
    decltype(poppler_document_new_from_bytes)* documentNew;
    decltype(poppler_document_get_n_pages)* pageCount;
    decltype(poppler_document_get_page)* page;
    decltype(poppler_page_get_text)* text;
    decltype(poppler_page_get_text_attributes)* attributes;
    decltype(poppler_page_free_text_attributes)* freeAttributes;
};

const Front& front() {
    static const Front functions;
    return functions;
}

struct Free {
    void operator()(PopplerDocument* document) const { front().objectUnref(document); }
    void operator()(PopplerPage* page) const { front().objectUnref(page); }
    void operator()(char* text) const { front().free(text); }
    void operator()(GList* attributes) const { front().freeAttributes(attributes); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

struct Style {
    std::string fontName;
    double fontSize = 0;
    std::uint32_t color = 0;
    bool isUnderlined = false;

    auto key() const { return std::tie(fontName, fontSize, color, isUnderlined); }
    friend bool operator<(const Style& left, const Style& right) { return left.key() < right.key(); }
};

/// Numbers styles in the order in which they are first met.
class StyleTable {
public:
    std::uint32_t numberOf(Style style) {
        const auto [place, isNew] =
            numbers_.try_emplace(std::move(style), static_cast<std::uint32_t>(numbers_.size()));
        if (isNew)
            styles_.push_back(&place->first);
        return place->second;
    }

    NSArray values() const {
        std::vector<Value> values;
        values.reserve(styles_.size());
        for (const Style* const style : styles_)
            values.emplace_back(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                {{NSString::stringByRepairingUTF8String(style->fontName), fontNameKey},
                 {NSNumber::numberWithDouble(style->fontSize), fontSizeKey},
                 {NSNumber::numberWithInt(static_cast<std::int32_t>(style->color)), colorKey},
                 {NSNumber::numberWithBool(style->isUnderlined), underlinedKey}}));
        return NSArray::arrayWithValues(std::move(values));
    }

private:
    std::map<Style, std::uint32_t> numbers_;
    /// The keys of the map.
    std::vector<const Style*> styles_;
};

std::uint32_t colorOf(const PopplerColor& color) {
    return static_cast<std::uint32_t>(color.red >> 8) << 16 |
           static_cast<std::uint32_t>(color.green >> 8) << 8 | static_cast<std::uint32_t>(color.blue >> 8);
}

/// The direction marks that the front puts into the text and leaves out where it counts.
bool isUncounted(char32_t character) {
    return character >= 0x202A && character <= 0x202E;
}

StyledLetters lettersOfAttributes(PopplerPage* page, StyleTable& table) {
    StyledLetters letters;
    const Owned<char> bytes(front().text(page));
    const Owned<GList> attributes(front().attributes(page));
    const GList* node = attributes.get();
    if (!bytes || !node)
        return letters;
    const auto at = [](const GList* item) { return static_cast<const PopplerTextAttributes*>(item->data); };
    const auto numberOf = [&](const GList* item) {
        const PopplerTextAttributes& style = *at(item);
        // So it calls those that have no name.
        const bool hasName = style.font_name && std::string_view(style.font_name) != "Default";
        return table.numberOf({hasName ? style.font_name : "", style.font_size, colorOf(style.color),
                               style.is_underlined != FALSE});
    };
    std::uint32_t style = numberOf(node);
    int index = 0;
    const NSString text = NSString::stringByRepairingUTF8String(bytes.get());
    for (std::size_t place = 0; place < text.length();) {
        const char32_t character = characterAt(text, &place);
        if (isUncounted(character))
            continue;
        while (index > at(node)->end_index && node->next) {
            node = node->next;
            style = numberOf(node);
        }
        letters.add(character, style);
        ++index;
    }
    return letters;
}

/// Of the front that has all of the text, but neither colours nor underlines.
StyledLetters lettersOfWords(const poppler::page& page, StyleTable& table) {
    StyledLetters letters;
    for (const poppler::text_box& word : page.text_list(poppler::page::text_list_include_font)) {
        const std::uint32_t style =
            table.numberOf({word.has_font_info() ? word.get_font_name() : "", word.get_font_size()});
        const poppler::ustring units = word.text();
        const std::u16string text(units.begin(), units.end());
        for (std::size_t place = 0; place < text.size();)
            letters.add(characterAt(text, &place), style);
    }
    return letters;
}

NSData bytesOf(const std::vector<StyleRun>& runs) {
    std::string bytes;
    bytes.reserve(runs.size() * bytesOfRun);
    for (const StyleRun& run : runs) {
        for (const std::uint32_t number : {run.length, run.style}) {
            for (int shift = 0; shift < 32; shift += 8)
                bytes.push_back(static_cast<char>(number >> shift));
        }
    }
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

} // namespace

struct PageStyles::Document {
    /// Null where the front cannot open what the other has opened, which leaves its pages without colours.
    Owned<PopplerDocument> handle;
};

PageStyles::PageStyles(std::string_view file) : document_(std::make_unique<Document>()) {
    if (!front().isComplete)
        return;
    GBytes* const bytes = front().bytesNew(file.data(), file.size());
    document_->handle.reset(front().documentNew(bytes, nullptr, nullptr));
    front().bytesUnref(bytes);
}

PageStyles::~PageStyles() = default;

Value PageStyles::styledText(std::u16string_view text, int index, const poppler::page& page) const {
    StyleTable table;
    StyledLetters letters;
    if (PopplerDocument* const document = document_->handle.get();
        document && !text.empty() && index < front().pageCount(document)) {
        if (const Owned<PopplerPage> own{front().page(document, index)})
            letters = lettersOfAttributes(own.get(), table);
    }
    // It finds nothing, or little, where most of the text runs from the right.
    if (!text.empty() && letters.letters.size() < letterCount(text) * 3 / 4)
        letters = lettersOfWords(page, table);
    const std::vector<StyleRun> runs = alignedStyles(text, letters);
    if (!text.empty() && letters.letters.empty())
        table.numberOf({});
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSString(text), textKey}, {table.values(), stylesKey}, {bytesOf(runs), runsKey}});
}

} // namespace kelvo
