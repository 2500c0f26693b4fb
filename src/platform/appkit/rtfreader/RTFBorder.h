#pragma once

#include "platform/appkit/NSTextTable.h"

#include <cstdint>
#include <span>

namespace kelvo {

class RTFColorTable;
template <typename State>
struct RTFWord;

/// One side of a frame as RTF states it, around a cell or a paragraph; lengths are in twips.
struct RTFBorder {
    bool isStated = false;
    bool isNone = false;
    std::int32_t width = -1;
    std::int32_t color = -1;
    /// Between it and the text.
    std::int32_t space = 0;

    /// What may follow the word that begins a border.
    static std::span<const RTFWord<RTFBorder>> words();
    /// Nothing of width 0 where none is stated.
    NSTextBlockBorder border(const RTFColorTable& colors) const;

    friend bool operator==(const RTFBorder&, const RTFBorder&) = default;
};

} // namespace kelvo
