#include "platform/pdfkit/engine/StyledPage.h"

#include "platform/pdfkit/PDFEngineMessages.h"
#include "platform/pdfkit/engine/StyleAlignment.h"

#include <poppler-page.h>
#include <poppler.h>

#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

using namespace pdfengine;

struct Unref {
    void operator()(void* object) const { g_object_unref(object); }
};
template <typename T>
using Reference = std::unique_ptr<T, Unref>;

struct Free {
    void operator()(char* text) const { g_free(text); }
    void operator()(GList* attributes) const { poppler_page_free_text_attributes(attributes); }
};

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
bool isUncounted(gunichar character) {
    return character >= 0x202A && character <= 0x202E;
}

StyledLetters lettersOfAttributes(PopplerPage* page, StyleTable& table) {
    StyledLetters letters;
    const std::unique_ptr<char, Free> text(poppler_page_get_text(page));
    const std::unique_ptr<GList, Free> attributes(poppler_page_get_text_attributes(page));
    const GList* node = attributes.get();
    if (!text || !node)
        return letters;
    const auto at = [](const GList* item) { return static_cast<const PopplerTextAttributes*>(item->data); };
    const auto numberOf = [&](const GList* item) {
        const PopplerTextAttributes& style = *at(item);
        return table.numberOf({style.font_name ? style.font_name : "", style.font_size, colorOf(style.color),
                               style.is_underlined != FALSE});
    };
    std::uint32_t style = numberOf(node);
    int index = 0;
    for (const char* place = text.get(); *place; place = g_utf8_next_char(place)) {
        const gunichar character = g_utf8_get_char(place);
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
        const poppler::ustring text = word.text();
        for (std::size_t place = 0; place < text.size(); ++place) {
            char32_t character = text[place];
            if ((character & 0xFC00) == 0xD800 && place + 1 < text.size())
                character = 0x10000 + ((character & 0x3FF) << 10 | (text[++place] & 0x3FFU));
            letters.add(character, style);
        }
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

struct PageStyles::Front {
    Reference<PopplerDocument> document;
};

PageStyles::PageStyles(std::string_view file) : front_(std::make_unique<Front>()) {
    GBytes* const bytes = g_bytes_new_static(file.data(), file.size());
    // Null where the other front has opened it all the same, which leaves its pages without styles.
    front_->document.reset(poppler_document_new_from_bytes(bytes, nullptr, nullptr));
    g_bytes_unref(bytes);
}

PageStyles::~PageStyles() = default;

Value PageStyles::styledText(std::u16string_view text, int index, const poppler::page& page) const {
    StyleTable table;
    StyledLetters letters;
    if (front_->document && index < poppler_document_get_n_pages(front_->document.get())) {
        const Reference<PopplerPage> own(poppler_document_get_page(front_->document.get(), index));
        if (own && !text.empty())
            letters = lettersOfAttributes(own.get(), table);
    }
    // It finds nothing, or little, on a page that is turned.
    if (!text.empty() && letters.letters.size() < letterCount(text) / 2)
        letters = lettersOfWords(page, table);
    const std::vector<StyleRun> runs = alignedStyles(text, letters);
    if (!text.empty() && letters.letters.empty())
        table.numberOf({});
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSString(text), textKey}, {table.values(), stylesKey}, {bytesOf(runs), runsKey}});
}

} // namespace kelvo
