#include "platform/appkit/rtfreader/RTFFontTable.h"

#include "platform/appkit/rtfreader/RTFWords.h"

#include <algorithm>

namespace kelvo {
namespace {

/// More entries than any writer makes.
constexpr std::size_t maximumFonts = 65536;
constexpr std::size_t maximumNameLength = 512;

struct Style {
    std::u16string_view suffix;
    bool isBold;
    bool isItalic;
};

constexpr Style styles[] = {
    {u"Regular", false, false},  {u"Roman", false, false},      {u"Plain", false, false},
    {u"Bold", true, false},      {u"Italic", false, true},      {u"Oblique", false, true},
    {u"BoldItalic", true, true}, {u"BoldOblique", true, true},  {u"BoldMT", true, false},
    {u"ItalicMT", false, true},  {u"BoldItalicMT", true, true},
};

/// Families whose members are named without the blanks.
constexpr std::pair<std::u16string_view, const char16_t*> families[] = {
    {u"TimesNewRomanPS", u"Times New Roman"},
    {u"TimesNewRomanPSMT", u"Times New Roman"},
    {u"ArialMT", u"Arial"},
    {u"CourierNewPS", u"Courier New"},
    {u"CourierNewPSMT", u"Courier New"},
    {u"HelveticaNeue", u"Helvetica Neue"},
    {u"LucidaGrande", u"Lucida Grande"},
};

NSString familyNamed(std::u16string_view name) {
    const auto row = std::ranges::find(families, name, [](const auto& pair) { return pair.first; });
    return row == std::end(families) ? NSString(name) : NSString(row->second);
}

RTFCodePage pageOfSigns(const NSString& family) {
    if (family == u"Symbol")
        return RTFSymbolCodePage;
    return family == u"Wingdings" ? RTFWingdingsCodePage : RTFOtherSignsCodePage;
}

} // namespace

NSFont fontNamed(std::u16string_view name) {
    NSFont font;
    const std::size_t dash = name.rfind(u'-');
    if (dash != std::u16string_view::npos && dash > 0) {
        const auto style = std::ranges::find(styles, name.substr(dash + 1), &Style::suffix);
        if (style != std::end(styles)) {
            font.isBold = style->isBold;
            font.isItalic = style->isItalic;
            name = name.substr(0, dash);
        }
    }
    font.familyName = familyNamed(name);
    return font;
}

void RTFFontTable::apply(const RTFToken& token) {
    static constexpr RTFWord<RTFFontTable> words[] = {
        {"f",
         [](RTFFontTable& table, const RTFToken& word) {
             table.finishEntry();
             table.number_ = word.parameter;
         }},
        {"fcharset",
         [](RTFFontTable& table, const RTFToken& word) {
             table.current_.codePage = rtfCodePageOfCharset(word.parameter);
         }},
        {"cpg",
         [](RTFFontTable& table, const RTFToken& word) {
             if (word.parameter > 0)
                 table.current_.codePage = word.parameter;
         }},
        {"fmodern", [](RTFFontTable& table, const RTFToken&) { table.current_.font.isFixedPitch = true; }},
        {"fprq",
         [](RTFFontTable& table, const RTFToken& word) {
             if (word.parameter == 1)
                 table.current_.font.isFixedPitch = true;
         }},
    };
    applyRTFWord<RTFFontTable>(words, *this, token);
}

void RTFFontTable::append(std::u16string_view units) {
    for (const char16_t unit : units) {
        if (unit == u';')
            finishEntry();
        else if (name_.size() < maximumNameLength && unit >= 0x20)
            name_ += unit;
    }
}

void RTFFontTable::finishEntry() {
    std::u16string_view name = name_;
    while (name.ends_with(u' '))
        name.remove_suffix(1);
    while (name.starts_with(u' '))
        name.remove_prefix(1);
    if (number_ >= 0 && !name.empty() && entries_.size() < maximumFonts) {
        const bool isFixedPitch = current_.font.isFixedPitch;
        current_.font = fontNamed(name);
        current_.font.isFixedPitch = isFixedPitch;
        if (current_.codePage == RTFOtherSignsCodePage)
            current_.codePage = pageOfSigns(current_.font.familyName);
        entries_.insert_or_assign(number_, std::move(current_));
    }
    current_ = Entry();
    name_.clear();
    number_ = -1;
}

RTFCodePage RTFFontTable::codePageOf(std::int32_t number) const {
    const auto entry = entries_.find(number);
    return entry == entries_.end() ? RTFDocumentCodePage : entry->second.codePage;
}

NSFont RTFFontTable::fontOf(std::int32_t number) const {
    const auto entry = entries_.find(number);
    return entry == entries_.end() ? NSFont() : entry->second.font;
}

} // namespace kelvo
