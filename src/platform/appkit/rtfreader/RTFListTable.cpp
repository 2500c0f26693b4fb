#include "platform/appkit/rtfreader/RTFListTable.h"

#include "platform/appkit/rtfreader/RTFWords.h"

#include <algorithm>
#include <iterator>

namespace kelvo {
namespace {

constexpr std::size_t maximumLists = 65536;
constexpr std::int32_t bulletKind = 23;
constexpr std::int32_t emptyKind = 255;

const char16_t* kindNamed(std::int32_t number) {
    switch (number) {
    case 1:
        return u"{upper-roman}";
    case 2:
        return u"{lower-roman}";
    case 3:
        return u"{upper-alpha}";
    case 4:
        return u"{lower-alpha}";
    default:
        return u"{decimal}";
    }
}

// Bullets as characters, and as the places of them in the fonts of signs that word processors use.
constexpr std::pair<char16_t, const char16_t*> bullets[] = {
    {0x2022, u"{disc}"},    {0x00B7, u"{disc}"},    {0xF0B7, u"{disc}"},   {0x25CF, u"{disc}"},
    {0x25E6, u"{circle}"},  {0x25CB, u"{circle}"},  {u'o', u"{circle}"},   {0x25AA, u"{square}"},
    {0x25A0, u"{square}"},  {0xF0A7, u"{square}"},  {0x25FE, u"{square}"}, {u'-', u"{hyphen}"},
    {0x2010, u"{hyphen}"},  {0x2013, u"{hyphen}"},  {0x2043, u"{hyphen}"}, {0x2713, u"{check}"},
    {0xF0FC, u"{check}"},   {0x25A1, u"{box}"},     {0x25FB, u"{box}"},    {0xF0A8, u"{box}"},
    {0x25C6, u"{diamond}"}, {0xF075, u"{diamond}"},
};

std::u16string_view withoutSemicolon(std::u16string_view text) {
    return text.ends_with(u';') ? text.substr(0, text.size() - 1) : text;
}

} // namespace

NSString markerFormatOfBullet(std::u16string_view bullet) {
    if (bullet.size() == 1) {
        const auto row = std::ranges::find(bullets, bullet[0], [](const auto& pair) { return pair.first; });
        if (row != std::end(bullets))
            return row->second;
    }
    return NSString(bullet);
}

void RTFListTable::beginList() {
    isInOverrides_ = false;
    if (lists_.size() < maximumLists)
        lists_.emplace_back();
}

RTFListTable::Definition& RTFListTable::current() {
    auto& table = isInOverrides_ ? overrides_ : lists_;
    if (table.empty())
        table.emplace_back();
    return table.back();
}

RTFListTable::Level* RTFListTable::currentLevel() {
    Definition& definition = current();
    const int index = definition.currentLevel;
    return index >= 0 && index < static_cast<int>(definition.levels.size()) ? &definition.levels[index]
                                                                            : nullptr;
}

void RTFListTable::beginOverride() {
    isInOverrides_ = true;
    if (overrides_.size() < maximumLists)
        overrides_.emplace_back();
}

void RTFListTable::addLevel() {
    Definition& definition = current();
    if (definition.levels.size() < levelCount)
        definition.levels.emplace_back();
    ++definition.currentLevel;
}

void RTFListTable::apply(const RTFToken& token) {
    using Table = RTFListTable;
    constexpr auto setKind = [](Table& table, const RTFToken& word) {
        if (Level* const level = table.currentLevel())
            level->kind = word.parameter;
    };
    static constexpr RTFWord<Table> words[] = {
        {"listoverride", [](Table& table, const RTFToken&) { table.beginOverride(); }},
        {"listid",
         [](Table& table, const RTFToken& word) {
             table.current().identifier = word.parameter;
             if (!table.isInOverrides_)
                 table.listOfIdentifier_.emplace(word.parameter, table.lists_.size() - 1);
         }},
        {"ls",
         [](Table& table, const RTFToken& word) {
             if (table.isInOverrides_ && !table.overrides_.empty())
                 table.overrideOfNumber_.emplace(word.parameter, table.overrides_.size() - 1);
         }},
        {"lfolevel", [](Table& table, const RTFToken&) { table.addLevel(); }},
        {"listlevel",
         [](Table& table, const RTFToken&) {
             // Inside an override it describes the level that \lfolevel has begun.
             if (!table.isInOverrides_)
                 table.addLevel();
             else if (Level* const level = table.currentLevel())
                 level->isFormatStated = true;
         }},
        {"levelnfc", setKind},
        {"levelnfcn", setKind},
        {"levelstartat",
         [](Table& table, const RTFToken& word) {
             if (Level* const level = table.currentLevel())
                 level->startingNumber = word.parameter;
         }},
    };
    applyRTFWord<Table>(words, *this, token);
}

void RTFListTable::setMarker(std::u16string_view marker) {
    if (Level* const level = currentLevel())
        level->marker = marker;
}

void RTFListTable::setText(std::u16string_view text) {
    if (Level* const level = currentLevel())
        level->text = withoutSemicolon(text);
}

/// Of a level's text, what stands before the number of its own, with "{1}" for the outermost level's number.
/// Empty without a number of another level there.
std::u16string RTFListTable::enclosingNumbers(std::u16string_view before) {
    std::u16string format;
    bool hasNumber = false;
    for (const char16_t unit : before) {
        if (unit < levelCount) {
            hasNumber = true;
            format.append({u'{', static_cast<char16_t>(u'1' + unit), u'}'});
        } else {
            format += unit;
        }
    }
    return hasNumber ? format : std::u16string();
}

NSTextList RTFListTable::makeList(const Level& level, int index) {
    NSTextList list;
    list.startingItemNumber = level.startingNumber.value_or(1);
    // The first unit is the length; units below the count of levels stand for the numbers of levels.
    std::u16string_view text = level.text;
    if (!text.empty())
        text.remove_prefix(1);
    const std::size_t own = text.find(static_cast<char16_t>(index));
    const bool isNumbered = own != std::u16string_view::npos;
    std::u16string_view before = text.substr(0, isNumbered ? own : text.size());
    if (!level.marker.empty()) {
        list.markerFormat = NSString(level.marker);
        const std::u16string_view literal =
            std::u16string_view(level.marker).substr(0, level.marker.find(u'{'));
        if (isNumbered && before.ends_with(literal))
            list.enclosingNumbersFormat =
                NSString(enclosingNumbers(before.substr(0, before.size() - literal.size())));
        return list;
    }
    if (level.kind == bulletKind) {
        list.markerFormat = markerFormatOfBullet(text);
        return list;
    }
    const std::u16string enclosing = enclosingNumbers(before);
    if (!enclosing.empty() && isNumbered) {
        list.enclosingNumbersFormat = NSString(std::u16string_view(enclosing));
        before = {};
    }
    std::u16string format;
    const auto addLiteral = [&format](std::u16string_view units) {
        std::ranges::copy_if(units, std::back_inserter(format),
                             [](char16_t unit) { return unit >= levelCount; });
    };
    addLiteral(before);
    if (isNumbered && level.kind != emptyKind)
        format += kindNamed(level.kind);
    if (isNumbered)
        addLiteral(text.substr(own + 1));
    list.markerFormat = NSString(std::u16string_view(format));
    return list;
}

std::vector<RTFListTable::List> RTFListTable::listsOf(std::int32_t number, int level) {
    const auto override = overrideOfNumber_.find(number);
    if (override == overrideOfNumber_.end())
        return {};
    const Definition& definition = overrides_[override->second];
    const auto list = listOfIdentifier_.find(definition.identifier);
    if (list == listOfIdentifier_.end())
        return {};
    const std::vector<Level>& levels = lists_[list->second].levels;
    std::vector<List>& made = made_[number];
    const int count = std::clamp(level, 0, levelCount - 1) + 1;
    for (int index = static_cast<int>(made.size()); index < count; ++index) {
        const auto place = static_cast<std::size_t>(index);
        Level own = place < levels.size() ? levels[place] : Level();
        if (place < definition.levels.size()) {
            const Level& other = definition.levels[place];
            const auto start = other.startingNumber ? other.startingNumber : own.startingNumber;
            if (other.isFormatStated && !other.text.empty())
                own = other;
            own.startingNumber = start;
        }
        made.push_back(std::make_shared<const NSTextList>(makeList(own, index)));
    }
    return {made.begin(), made.begin() + count};
}

template <RTFOldList::Kind kind>
void RTFOldList::setKind(RTFOldList& list, const RTFToken&) {
    list.kind_ = kind;
}

void RTFOldList::apply(const RTFToken& token) {
    static constexpr RTFWord<RTFOldList> words[] = {
        {"pnstart", [](RTFOldList& list, const RTFToken& word) { list.startingNumber_ = word.parameter; }},
        {"pnlvlblt", setKind<Kind::bullet>},
        {"pnlvlcont", setKind<Kind::none>},
        {"pndec", setKind<Kind::decimal>},
        {"pnlcltr", setKind<Kind::lowerLetters>},
        {"pnucltr", setKind<Kind::upperLetters>},
        {"pnlcrm", setKind<Kind::lowerRoman>},
        {"pnucrm", setKind<Kind::upperRoman>},
    };
    applyRTFWord<RTFOldList>(words, *this, token);
}

std::optional<NSTextList> RTFOldList::list() const {
    NSTextList list;
    list.startingItemNumber = startingNumber_;
    const char16_t* kind = nullptr;
    switch (kind_) {
    case Kind::bullet:
        list.markerFormat = markerFormatOfBullet(before_ + after_);
        return list;
    case Kind::decimal:
        kind = u"{decimal}";
        break;
    case Kind::lowerLetters:
        kind = u"{lower-alpha}";
        break;
    case Kind::upperLetters:
        kind = u"{upper-alpha}";
        break;
    case Kind::lowerRoman:
        kind = u"{lower-roman}";
        break;
    case Kind::upperRoman:
        kind = u"{upper-roman}";
        break;
    case Kind::none:
        return std::nullopt;
    }
    list.markerFormat = NSString(std::u16string_view(before_ + kind + after_));
    return list;
}

} // namespace kelvo
