#include "platform/appkit/rtfwriter/RTFHeadTables.h"

#include "platform/appkit/rtfwriter/RTFOutput.h"
#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

/// How many of the latest lists are searched for one that a path fits, so that the time stays linear. A
/// document with more variants gets more lists.
constexpr std::size_t triedLists = 8;

std::string_view familyWord(std::u16string_view family, bool isFixedPitch) {
    if (isFixedPitch)
        return "fmodern";
    const auto beginsWithOneOf = [family](std::initializer_list<std::u16string_view> names) {
        return std::ranges::any_of(names,
                                   [family](std::u16string_view name) { return family.starts_with(name); });
    };
    if (beginsWithOneOf({u"Helvetica", u"Arial", u"Verdana", u"Lucida Grande", u"Geneva", u"Tahoma",
                         u"DejaVu Sans", u"Liberation Sans"}))
        return "fswiss";
    if (beginsWithOneOf(
            {u"Times", u"Georgia", u"Palatino", u"Garamond", u"DejaVu Serif", u"Liberation Serif"}))
        return "froman";
    return "fnil";
}

struct MarkerKind {
    std::u16string_view name;
    /// The number of the kind in list tables: 23 is a sign of its own, 255 none.
    std::int32_t number;
};
constexpr std::int32_t signKind = 23;
constexpr MarkerKind markerKinds[] = {
    {u"decimal", 0},     {u"upper-roman", 1},       {u"lower-roman", 2},
    {u"upper-alpha", 3}, {u"lower-alpha", 4},       {u"octal", 0},
    {u"lower-greek", 0}, {u"lower-hexadecimal", 0}, {u"upper-hexadecimal", 0},
};

/// A format such as "({decimal})", taken apart.
struct MarkerFormat {
    std::int32_t kind = signKind;
    std::u16string_view prefix;
    std::u16string_view suffix;
};

MarkerFormat partsOfFormat(std::u16string_view format) {
    const std::size_t open = format.find(u'{');
    const std::size_t close = open == std::u16string_view::npos ? open : format.find(u'}', open);
    if (close == std::u16string_view::npos)
        return {};
    const std::u16string_view name = format.substr(open + 1, close - open - 1);
    const auto found = std::ranges::find(markerKinds, name, &MarkerKind::name);
    if (found == std::end(markerKinds))
        return {};
    return {found->number, format.substr(0, open), format.substr(close + 1)};
}

void writeHexByte(RTFOutput& output, std::size_t byte) {
    output.raw("\\'");
    output.raw(lowerHexDigits.substr(byte >> 4 & 15, 1));
    output.raw(lowerHexDigits.substr(byte & 15, 1));
}

/// What the items of a level are marked with, and where in it, from 1, the numbers of levels stand.
struct LevelText {
    void addLiteral(std::u16string_view units) {
        written.string(units);
        length += units.size();
    }
    void addNumber(std::size_t level) {
        writeHexByte(written, level);
        places.push_back(++length);
    }
    /// Numbers of levels that are not around the own one are literal text.
    void addEnclosing(std::u16string_view format, std::size_t depth) {
        while (!format.empty()) {
            const bool isNumber = format.size() >= 3 && format[0] == u'{' && format[2] == u'}' &&
                                  format[1] >= u'1' && format[1] < u'1' + static_cast<int>(depth);
            if (isNumber)
                addNumber(static_cast<std::size_t>(format[1] - u'1'));
            else
                addLiteral(format.substr(0, 1));
            format.remove_prefix(isNumber ? 3 : 1);
        }
    }

    RTFOutput written;
    std::size_t length = 0;
    std::vector<std::size_t> places;
};

} // namespace

std::int32_t RTFFontNumbers::numberOfFont(const NSFont& font) {
    const NSString& family = font.familyName.isEmpty() ? NSFont::defaultFamilyName() : font.familyName;
    const auto [found, isNew] =
        numbers_[font.isFixedPitch].emplace(family, static_cast<std::int32_t>(entries_.size()));
    if (isNew)
        entries_.push_back({family, font.isFixedPitch});
    return found->second;
}

void RTFFontNumbers::write(RTFOutput& output) const {
    output.raw("{");
    output.word("fonttbl");
    for (std::size_t number = 0; number < entries_.size(); ++number) {
        const auto& [family, isFixedPitch] = entries_[number];
        if (number % 8 == 7)
            output.raw("\n");
        output.word("f", static_cast<std::int32_t>(number));
        output.word(familyWord(family, isFixedPitch));
        if (isFixedPitch)
            output.word("fprq", 1);
        output.word("fcharset", 0);
        // A semicolon would end the name.
        std::u16string name(family.characters());
        std::ranges::replace(name, u';', u',');
        output.string(name);
        output.raw(";");
    }
    output.raw("}\n");
}

RTFColorNumbers::Components RTFColorNumbers::componentsOf(const NSColor& color) {
    const auto component = [](float value) { return std::max(rtfNumber(value, 100000, 100000), 0); };
    return {component(color.red), component(color.green), component(color.blue), component(color.alpha)};
}

std::int32_t RTFColorNumbers::numberOfColor(const std::optional<NSColor>& color) {
    if (!color)
        return 0;
    const Components components = componentsOf(*color);
    const auto [found, isNew] = numbers_.emplace(components, static_cast<std::int32_t>(entries_.size() + 1));
    if (isNew)
        entries_.push_back(components);
    return found->second;
}

void RTFColorNumbers::write(RTFOutput& output) const {
    output.raw("{");
    output.word("colortbl");
    output.raw(";");
    for (const Components& entry : entries_) {
        constexpr std::string_view names[] = {"red", "green", "blue"};
        for (std::size_t index = 0; index < 3; ++index)
            output.word(names[index], rtfNumber(entry[index], 255.0 / 100000));
        output.raw(";");
    }
    output.raw("}\n{\\*");
    output.word("expandedcolortbl");
    // White, as the platform has it: the same as in the other table.
    output.raw(";;");
    for (const Components& entry : std::span(entries_).subspan(1)) {
        output.word("cssrgb");
        for (std::size_t index = 0; index < (entry[3] == 100000 ? 3 : 4); ++index)
            output.word("c", entry[index]);
        output.raw(";");
    }
    output.raw("}\n");
}

std::optional<std::int32_t> RTFListNumbers::listThatFits(const Path& path) const {
    const auto found = byOutermost_.find(path.front().get());
    if (found == byOutermost_.end())
        return std::nullopt;
    const std::vector<std::int32_t>& numbers = found->second;
    const std::size_t tried = std::min(numbers.size(), triedLists);
    for (const std::int32_t number : std::span(numbers).last(tried)) {
        const Levels& levels = lists_[static_cast<std::size_t>(number - 1)];
        const auto fits = [](const auto& list, const Level& level) {
            return list == level.list || (level.isOver && *list == *level.list);
        };
        if (std::equal(path.begin(),
                       path.begin() + static_cast<std::ptrdiff_t>(std::min(path.size(), levels.size())),
                       levels.begin(), fits))
            return number;
    }
    return std::nullopt;
}

RTFListNumbers::Place RTFListNumbers::placeOfLists(const Path& given, Indents indents) {
    Path path;
    for (const auto& list : given) {
        if (list && path.size() < maximumLevels)
            path.push_back(list);
    }
    if (path.empty())
        return {};
    if (path == lastPath_)
        return lastPlace_;
    std::optional<std::int32_t> number = listThatFits(path);
    if (!number) {
        lists_.emplace_back();
        number = static_cast<std::int32_t>(lists_.size());
        byOutermost_[path.front().get()].push_back(*number);
    }
    Levels& levels = lists_[static_cast<std::size_t>(*number - 1)];
    for (std::size_t level = levels.size(); level < path.size(); ++level)
        levels.push_back({path[level], std::nullopt, false});
    for (std::size_t level = 0; level < levels.size(); ++level) {
        levels[level].isOver = level >= path.size();
        if (level < path.size())
            levels[level].list = path[level];
    }
    Level& own = levels[path.size() - 1];
    if (!own.indents)
        own.indents = indents;
    lastPlace_ = {*number, static_cast<std::int32_t>(path.size() - 1)};
    lastPath_ = std::move(path);
    return lastPlace_;
}

void RTFListNumbers::writeLevel(const Level& level, std::size_t depth, std::int32_t identifier,
                                RTFOutput& output) {
    // A level's text counts its characters in one byte.
    constexpr std::size_t maximumText = 200;
    const NSTextList& list = *level.list;
    const MarkerFormat format = partsOfFormat(list.markerFormat);
    const auto head = static_cast<std::int32_t>(720 * (depth + 1));
    const Indents indents = level.indents.value_or(Indents{head, -360});
    output.raw("{");
    output.word("listlevel");
    output.word("levelnfc", format.kind);
    output.word("levelnfcn", format.kind);
    output.word("leveljc", 0);
    output.word("leveljcn", 0);
    output.word("levelfollow", 0);
    output.word("levelstartat", list.startingItemNumber);
    output.word("levelspace", 360);
    output.word("levelindent", 0);
    output.raw("{\\*");
    output.word("levelmarker");
    output.string(list.markerFormat.characters());
    output.raw("}{");
    output.word("leveltext");
    output.word("leveltemplateid", identifier);
    if (format.kind == signKind) {
        const NSString sign = list.markerForItemNumber(list.startingItemNumber);
        const std::u16string_view units = sign.characters().substr(0, maximumText);
        writeHexByte(output, units.size());
        output.string(units);
        output.raw(";}{");
        output.word("levelnumbers");
    } else {
        LevelText text;
        text.addEnclosing(list.enclosingNumbersFormat.characters().substr(0, maximumText / 3), depth);
        text.addLiteral(format.prefix.substr(0, maximumText / 3));
        text.addNumber(depth);
        text.addLiteral(format.suffix.substr(0, maximumText / 3));
        writeHexByte(output, text.length);
        output.raw(text.written.bytes());
        output.raw(";}{");
        output.word("levelnumbers");
        for (const std::size_t place : text.places)
            writeHexByte(output, place);
    }
    output.raw(";}");
    output.word("fi", indents.firstLine);
    output.word("li", indents.head);
    output.word("lin", indents.head);
    output.raw(" }");
}

void RTFListNumbers::write(RTFOutput& output) const {
    if (lists_.empty())
        return;
    output.raw("{\\*");
    output.word("listtable");
    std::int32_t templateIdentifier = 0;
    for (std::size_t index = 0; index < lists_.size(); ++index) {
        const auto identifier = static_cast<std::int32_t>(index + 1);
        output.raw("{");
        output.word("list");
        output.word("listtemplateid", identifier);
        output.word("listhybrid");
        for (std::size_t level = 0; level < lists_[index].size(); ++level)
            writeLevel(lists_[index][level], level, ++templateIdentifier, output);
        output.raw("{");
        output.word("listname");
        output.raw(" ;}");
        output.word("listid", identifier);
        output.raw("}\n");
    }
    output.raw("}\n{\\*");
    output.word("listoverridetable");
    for (std::size_t index = 0; index < lists_.size(); ++index) {
        const auto identifier = static_cast<std::int32_t>(index + 1);
        output.raw("{");
        output.word("listoverride");
        output.word("listid", identifier);
        output.word("listoverridecount", 0);
        output.word("ls", identifier);
        output.raw("}");
    }
    output.raw("}\n");
}

} // namespace kelvo
