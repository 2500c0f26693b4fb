#include "markup/PlainTextTags.h"

#include "text/FoldingTables.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelvo {

namespace {

using Rule = PlainTextRule;

/// Not letter by letter in both cases but through the upper-case table, where U+017F is an S.
enum class Compared : bool { inBothCases, throughTable };

struct Row {
    std::string_view name;
    Rule rule;
    Compared compared = Compared::inBothCases;
};

// "#" stands for 1 to 9. Rows of one length and first letter stand together, frequent ones first.
constexpr Row rows[] = {
    {"p", Rule::paragraphBreak},
    {"a", Rule::link},

    {"br", Rule::lineBreak},
    {"dd", Rule::lineBreak},
    {"dt", Rule::lineBreak},
    {"dl", Rule::lineBreak},
    {"h#", Rule::heading},
    {"hr", Rule::paragraphBreak},
    {"li", Rule::lineBreak},
    {"ol", Rule::lineBreak},
    {"td", Rule::cell},
    {"th", Rule::cell},
    {"tr", Rule::lineBreak},
    {"ul", Rule::lineBreak},

    {"div", Rule::division},
    {"dir", Rule::lineBreak},
    {"img", Rule::separation},
    {"nav", Rule::lineBreak},
    {"pre", Rule::preformatted},

    {"body", Rule::body},
    {"font", Rule::font},
    {"form", Rule::lineBreak},
    {"head", Rule::head},
    {"main", Rule::lineBreak},
    {"menu", Rule::lineBreak},

    {"aside", Rule::lineBreak},
    {"audio", Rule::separation},
    {"embed", Rule::separation},
    {"input", Rule::input},
    {"label", Rule::separation},
    {"table", Rule::separation},
    {"tbody", Rule::separation},
    {"tfoot", Rule::separation},
    {"thead", Rule::separation},
    {"title", Rule::separation},
    {"video", Rule::separation},

    {"button", Rule::separation},
    {"canvas", Rule::separation},
    {"center", Rule::lineBreak},
    {"dialog", Rule::lineBreak},
    {"figure", Rule::lineBreak},
    {"footer", Rule::lineBreak},
    {"header", Rule::lineBreak},
    {"hgroup", Rule::lineBreak},
    {"iframe", Rule::iframe},
    {"legend", Rule::lineBreak},
    {"object", Rule::separation},
    {"option", Rule::option, Compared::throughTable},
    {"select", Rule::select, Compared::throughTable},

    {"address", Rule::lineBreak},
    {"article", Rule::lineBreak},
    {"caption", Rule::separation},
    {"details", Rule::lineBreak},
    {"section", Rule::lineBreak},
    {"summary", Rule::lineBreak},

    {"fieldset", Rule::lineBreak},
    {"noframes", Rule::noframes},
    {"noscript", Rule::noscript},
    {"textarea", Rule::separation},

    {"blockquote", Rule::paragraphBreak, Compared::throughTable},
    {"figcaption", Rule::lineBreak},
};

constexpr std::size_t longestName = 10;

struct Bucket {
    std::uint8_t begin = 0, end = 0;
};

constexpr auto buckets = [] {
    std::array<std::array<Bucket, 26>, longestName + 1> result{};
    for (std::size_t index = 0; index < std::size(rows); ++index) {
        Bucket& bucket = result[rows[index].name.size()][static_cast<std::size_t>(rows[index].name[0] - 'a')];
        if (bucket.end == 0)
            bucket.begin = static_cast<std::uint8_t>(index);
        else if (bucket.end != index)
            throw "the rows of a bucket must stand together";
        bucket.end = static_cast<std::uint8_t>(index + 1);
    }
    return result;
}();

bool matches(const char16_t* name, const Row& row) {
    const char16_t* upper = row.compared == Compared::throughTable ? initUpperCharsTable() : nullptr;
    for (const char wanted : row.name) {
        const char16_t unit = *name++;
        const auto letter = static_cast<char16_t>(wanted);
        if (upper ? upper[unit] == letter - 32 : (unit | 0x20) == letter && unit >= u'A')
            continue;
        if (letter == u'#' && unit >= u'1' && unit <= u'9')
            continue;
        return false;
    }
    return true;
}

} // namespace

PlainTextRule plainTextRuleOfTag(const char16_t* name, std::size_t length) {
    if (length == 0 || length > longestName)
        return Rule::none;
    const unsigned first = name[0] < 128 ? name[0] : toUpper(name[0]);
    const unsigned letter = (first | 0x20) - u'a';
    if (letter >= 26)
        return Rule::none;
    const Bucket bucket = buckets[length][letter];
    for (std::size_t index = bucket.begin; index < bucket.end; ++index) {
        if (matches(name, rows[index]))
            return rows[index].rule;
    }
    return Rule::none;
}

} // namespace kelvo
