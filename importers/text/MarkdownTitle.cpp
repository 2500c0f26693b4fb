#include "importers/text/MarkdownTitle.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>

namespace kelvo::importers {
namespace {

constexpr std::u16string_view blanks = u" \t\r\uFEFF";

std::u16string_view withoutBlanks(std::u16string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    text.remove_suffix(text.size() - (text.find_last_not_of(blanks) + 1));
    return text;
}

/// The next line without the blanks around it.
std::u16string_view takeLine(std::u16string_view& text) {
    const std::size_t end = std::min(text.find(u'\n'), text.size());
    const std::u16string_view line = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return withoutBlanks(line);
}

bool consistsOf(std::u16string_view line, char16_t unit) {
    return !line.empty() && line.find_first_not_of(unit) == line.npos;
}

std::u16string_view valueOfTitle(std::u16string_view line, char16_t separator) {
    constexpr std::u16string_view name = u"title";
    if (!equalsASCIIIgnoringCase(line.substr(0, name.size()), name))
        return {};
    std::u16string_view value = withoutBlanks(line.substr(name.size()));
    if (!value.starts_with(separator))
        return {};
    value = withoutBlanks(value.substr(1));
    const bool isQuoted =
        value.size() >= 2 && (value[0] == u'"' || value[0] == u'\'') && value.back() == value[0];
    return isQuoted ? value.substr(1, value.size() - 2) : value;
}

/// A line of the first level is "# Title", perhaps with more of them behind, or is underlined with "=".
std::u16string_view titleOfHeading(std::u16string_view line, std::u16string_view nextLine) {
    if (consistsOf(nextLine, u'='))
        return line;
    if (!line.starts_with(u"# "))
        return {};
    line.remove_prefix(2);
    const std::size_t end = line.find_last_not_of(u'#') + 1;
    return end > 0 && blanks.find(line[end - 1]) != blanks.npos ? line.substr(0, end) : line;
}

} // namespace

NSString titleOfMarkdown(std::u16string_view text) {
    text = text.substr(0, mostUnitsBeforeTitle);
    std::u16string_view rest = text;
    std::u16string_view title;
    if (const std::u16string_view fence = takeLine(rest); fence == u"---" || fence == u"+++") {
        const char16_t separator = fence == u"---" ? u':' : u'=';
        for (std::u16string_view line; !rest.empty() && (line = takeLine(rest)) != fence;) {
            if (title.empty())
                title = valueOfTitle(line, separator);
        }
        text = rest;
    }
    while (title.empty() && !text.empty()) {
        const std::u16string_view line = takeLine(text);
        if (line.empty())
            continue;
        title = titleOfHeading(line, takeLine(text));
        break;
    }
    return title.empty() ? NSString() : NSString(title);
}

} // namespace kelvo::importers
