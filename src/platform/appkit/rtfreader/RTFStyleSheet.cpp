#include "platform/appkit/rtfreader/RTFStyleSheet.h"

#include "platform/appkit/rtfreader/RTFWords.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

constexpr int maximumHeaderLevel = 6;
constexpr std::size_t maximumStyles = 65536;
constexpr std::size_t maximumNameLength = 512;
/// More words than any style has, and more styles than are based on each other.
constexpr std::size_t maximumWords = 256;
constexpr std::size_t maximumBases = 64;

/// "heading 2", however it is capitalised; 0 for other names.
int headerLevelOfName(std::u16string_view name) {
    constexpr std::u16string_view prefix = u"heading ";
    if (name.size() != prefix.size() + 1 || name.back() < u'1' || name.back() > u'9')
        return 0;
    const bool isHeading = equalsASCIIIgnoringCase(name.substr(0, prefix.size()), prefix);
    return isHeading ? std::min(name.back() - u'0', maximumHeaderLevel) : 0;
}

} // namespace

int headerLevelOfOutlineLevel(std::int32_t outlineLevel) {
    return outlineLevel < 0 || outlineLevel > 8 ? 0 : std::min(outlineLevel + 1, maximumHeaderLevel);
}

void RTFStyleSheet::apply(const RTFToken& token) {
    static constexpr RTFWord<RTFStyleSheet> words[] = {
        {"s", [](RTFStyleSheet& sheet, const RTFToken& word) { sheet.number_ = word.parameter; }},
        {"cs",
         [](RTFStyleSheet& sheet, const RTFToken& word) {
             sheet.number_ = word.parameter;
             sheet.isParagraphStyle_ = false;
         }},
        {"sbasedon",
         [](RTFStyleSheet& sheet, const RTFToken& word) { sheet.current_.base = word.parameter; }},
        {"outlinelevel",
         [](RTFStyleSheet& sheet, const RTFToken& word) { sheet.outlineLevel_ = word.parameter; }},
    };
    applyRTFWord<RTFStyleSheet>(words, *this, token);
}

void RTFStyleSheet::addWord(Word word, const RTFToken& token) {
    if (current_.words.size() >= maximumWords)
        return;
    word.token = token;
    current_.words.push_back(word);
}

void RTFStyleSheet::append(std::u16string_view units) {
    for (const char16_t unit : units) {
        if (unit == u';')
            finishEntry();
        else if (name_.size() < maximumNameLength && !(name_.empty() && unit == u' '))
            name_ += unit;
    }
}

void RTFStyleSheet::finishEntry() {
    int level = headerLevelOfOutlineLevel(outlineLevel_);
    if (outlineLevel_ < 0)
        level = headerLevelOfName(name_);
    if (isParagraphStyle_ && level > 0 && headerLevels_.size() < maximumStyles)
        headerLevels_.insert_or_assign(number_, level);
    auto& stated = isParagraphStyle_ ? ofParagraphs_.stated : ofCharacters_.stated;
    if (stated.size() < maximumStyles)
        stated.insert_or_assign(number_, std::move(current_));
    current_ = {};
    number_ = 0;
    isParagraphStyle_ = true;
    outlineLevel_ = -1;
    name_.clear();
}

int RTFStyleSheet::headerLevelOf(std::int32_t style) const {
    const auto found = headerLevels_.find(style);
    return found == headerLevels_.end() ? 0 : found->second;
}

template <typename Resolved, typename Make>
const Resolved* RTFStyleSheet::resolve(Styles<Resolved>& styles, std::int32_t style, const Resolved& root,
                                       Make make) {
    // From the style down to the first that is resolved; each style's words are gone through once.
    std::vector<std::int32_t> bases;
    for (auto base = styles.stated.find(style);
         base != styles.stated.end() && bases.size() < maximumBases && !styles.resolved.contains(base->first);
         base = styles.stated.find(base->second.base))
        bases.push_back(base->first);
    for (; !bases.empty(); bases.pop_back()) {
        const Style& next = styles.stated.at(bases.back());
        const auto known = styles.resolved.find(next.base);
        Resolved made = known == styles.resolved.end() ? root : known->second;
        for (const Word& word : next.words)
            make(made, word);
        styles.resolved.insert_or_assign(bases.back(), std::move(made));
    }
    const auto found = styles.resolved.find(style);
    return found == styles.resolved.end() ? nullptr : &found->second;
}

const RTFStyleSheet::Formats* RTFStyleSheet::formatsOf(std::int32_t style, std::int32_t defaultFont) {
    return resolve(ofParagraphs_, style, {RTFCharacterState(defaultFont), RTFParagraphFormat()},
                   [](Formats& formats, const Word& word) {
                       if (word.isOfParagraphs)
                           RTFParagraphFormat::words()[word.row].apply(formats.paragraph, word.token);
                       else
                           RTFCharacterState::words()[word.row].apply(formats.characters, word.token);
                   });
}

void RTFStyleSheet::applyCharacterStyle(std::int32_t style, RTFCharacterState& characters) {
    const Words* const words = resolve(ofCharacters_, style, {}, [](Words& all, const Word& word) {
        if (word.isOfParagraphs)
            return;
        // So that no chain of styles grows longer than the table of words.
        std::erase_if(all, [&](const Word& other) { return other.row == word.row; });
        all.push_back(word);
    });
    if (!words)
        return;
    for (const Word& word : *words)
        RTFCharacterState::words()[word.row].apply(characters, word.token);
}

} // namespace kelvo
