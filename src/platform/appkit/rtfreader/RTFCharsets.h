#pragma once

#include "platform/foundation/encodings/TextCodec.h"

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

namespace kelvo {

/// The number of a code page, as \ansicpg and \cpg say it, or one of these.
using RTFCodePage = std::int32_t;
/// The page of fonts that do not say their own.
inline constexpr RTFCodePage RTFDocumentCodePage = 0;
/// Fonts of signs: each byte is a sign at a place of the font's own.
inline constexpr RTFCodePage RTFSymbolCodePage = -1;
inline constexpr RTFCodePage RTFWingdingsCodePage = -2;
inline constexpr RTFCodePage RTFOtherSignsCodePage = -3;

/// What \fcharset means; the document's page for numbers that nobody uses.
RTFCodePage rtfCodePageOfCharset(std::int32_t charset);

/// Turns the bytes of the text into units, by code page.
class RTFCharsets {
public:
    /// Appends the text of the bytes, which end at the end of a character. Anything is taken: a code page
    /// that is not known here is read as 1252.
    void decode(std::string_view bytes, RTFCodePage page, std::u16string& units);
    /// Every byte is one character of one unit.
    bool isSingleByte(RTFCodePage page) { return pageOf(page).isSingleByte; }
    /// The character of a sign that the text states as U+F020 to U+F0FF, where the font is one of signs;
    /// other units as they are.
    char16_t unitOfSign(char16_t unit, RTFCodePage page);

private:
    struct Page {
        bool isSingleByte = true;
        std::array<char16_t, 256> units{};
        std::unique_ptr<TextCodec> codec;
    };

    Page& pageOf(RTFCodePage page);
    static Page makePage(RTFCodePage page);

    RTFCodePage currentNumber_ = RTFDocumentCodePage;
    Page* current_ = nullptr;
    std::unordered_map<RTFCodePage, Page> pages_;
};

} // namespace kelvo
