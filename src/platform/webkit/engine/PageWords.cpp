#include "platform/webkit/engine/PageWords.h"

#include "platform/foundation/units/ASCII.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace kelvo {
namespace {

constexpr std::array<std::string_view, 4> wordless{"script", "style", "title", "template"};

bool isNamed(std::string_view tag, std::string_view name) {
    const std::string_view rest = tag.substr(std::min(name.size(), tag.size()));
    return equalsASCIIIgnoringCase(tag.substr(0, name.size()), name) &&
           (rest.empty() || rest[0] == '>' || rest[0] == '/' || rest[0] <= ' ');
}

/// Past the next occurrence, or the end.
std::size_t endOf(std::string_view page, std::string_view mark, std::size_t start) {
    const std::size_t found = page.find(mark, start);
    return found == std::string_view::npos ? page.size() : found + mark.size();
}

/// Past the end tag, or the end.
std::size_t endOfElement(std::string_view page, std::string_view name, std::size_t start) {
    for (;;) {
        start = endOf(page, "</", start);
        if (start == page.size() || isNamed(page.substr(start), name))
            return endOf(page, ">", start);
    }
}

} // namespace

bool holdsWords(std::string_view page) {
    for (std::size_t at = 0; at < page.size();) {
        if (page[at] != '<') {
            const auto unit = static_cast<unsigned char>(page[at++]);
            if (unit >= 0x80 || isASCIILetter(unit) || isASCIIDigit(unit))
                return true;
            continue;
        }
        const std::string_view tag = page.substr(at + 1);
        if (tag.starts_with("!--")) {
            at = endOf(page, "-->", at + 4);
            continue;
        }
        at = endOf(page, ">", at);
        for (const std::string_view name : wordless)
            if (isNamed(tag, name))
                at = endOfElement(page, name, at);
    }
    return false;
}

} // namespace kelvo
