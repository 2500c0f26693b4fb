#include "importers/mail/FlowedText.h"

#include <algorithm>
#include <cstddef>

namespace kelvo::importers {
namespace {

constexpr std::u16string_view signatureMark = u"-- ";

struct Line {
    std::size_t depth = 0;
    std::u16string_view text;

    bool isFlowed() const { return text.ends_with(u' ') && text != signatureMark; }
};

Line takeLine(std::u16string_view& rest) {
    const std::size_t end = std::min(rest.find(u'\n'), rest.size());
    Line line;
    line.text = rest.substr(0, end);
    rest.remove_prefix(std::min(end + 1, rest.size()));
    line.depth = std::min(line.text.find_first_not_of(u'>'), line.text.size());
    line.text.remove_prefix(line.depth);
    // Senders put one before what begins with a space, a ">" or "From ".
    if (line.text.starts_with(u' '))
        line.text.remove_prefix(1);
    return line;
}

} // namespace

std::u16string textOfFlowed(std::u16string_view text, bool deletesSpaces) {
    std::u16string result;
    bool isFirst = true;
    for (Line before; !text.empty(); isFirst = false) {
        const Line line = takeLine(text);
        // An empty line that ends a paragraph is meant to be seen, whatever the line before it ends in.
        const bool goesOn = before.isFlowed() && before.depth == line.depth && !line.text.empty() &&
                            line.text != signatureMark;
        if (goesOn && deletesSpaces) {
            result.pop_back();
        } else if (!goesOn) {
            result.append(isFirst ? u"" : u"\n").append(line.depth, u'>');
            result.append(line.depth > 0 && !line.text.empty() ? u" " : u"");
        }
        result += line.text;
        before = line;
    }
    return result;
}

} // namespace kelvo::importers
