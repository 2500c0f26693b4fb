#pragma once

#include "platform/foundation/NSString.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo {

/// What the instruction of a field asks for, as far as it shows in the text.
struct RTFField {
    /// Where a hyperlink leads, nil for other fields.
    NSString link;
    /// The number of a sign, its font (nil: the one in force) and whether the number is one of Unicode.
    std::optional<std::int32_t> symbol;
    NSString symbolFont;
    bool isSymbolUnicode = false;
    /// What a button shows, which is no result but stands in the instruction; empty for other fields.
    std::u16string text;

    /// `instruction` is the text between the braces: a name, arguments that may be quoted, and switches.
    static RTFField parse(std::u16string_view instruction);
};

} // namespace kelvo
