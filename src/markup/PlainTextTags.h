#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// What PlainTextHandler does at a tag.
enum class PlainTextRule : std::uint8_t {
    none,
    lineBreak,
    paragraphBreak,
    /// A space, unless there is white space already.
    cell,
    /// The words before and after belong apart.
    separation,
    link,
    heading,
    division,
    preformatted,
    input,
    iframe,
    option,
    select,
    font,
    body,
    head,
    noframes,
    noscript,
};

/// The rule of the tag of that name, in either case. Names are found by their length and first letter, in one
/// table without strings.
PlainTextRule plainTextRuleOfTag(const char16_t* name, std::size_t length);

} // namespace kelvo
