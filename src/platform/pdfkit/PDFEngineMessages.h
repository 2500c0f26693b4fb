#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo::pdfengine {

// What the stand-in for PDF documents and plumwick-pdf-engine say to each other. The engine holds one document at a
// time, by a number that the other side gives it.

inline constexpr const char* programName = "plumwick-pdf-engine";

// Every message is a dictionary with the number of the document. One with its bytes opens it, in place of the one that
// was open; one with a page reads something of that page; one with neither closes the document.

inline constexpr const char16_t* numberKey = u"Number";
/// Data: the bytes of the file.
inline constexpr const char16_t* documentKey = u"Document";
/// A number, from 0.
inline constexpr const char16_t* pageKey = u"Page";
/// A number: what is to be read of the page.
inline constexpr const char16_t* wantKey = u"Want";
enum class Want : std::uint8_t {
    /// Its answer is a string, empty when there is no text.
    text,
    /// Its answer is a dictionary: text, styles and runs.
    styledText,
    /// Their answers are an array of numbers: x and y of the corner at the bottom left, width and height, in points.
    mediaBox,
    cropBox,
    /// Its answer is an array of two numbers: the sides of the page as it is read, in points.
    sizeAsRead,
    /// Its answer is data, the page as it is read in as many pixels as the message says: 4 bytes each (red, green, blue,
    /// alpha, not multiplied by it), without gaps, from the top, in sRGB. Nil when the page cannot be drawn.
    pixels
};

// How pixels are wanted:

/// Numbers, above 0, whose product is at most mostPixelsOfPage.
inline constexpr const char16_t* widthKey = u"Width";
inline constexpr const char16_t* heightKey = u"Height";
/// A boolean: on nothing; without it all alpha is 255.
inline constexpr const char16_t* transparentKey = u"Transparent";
inline constexpr std::size_t bytesOfPixel = 4;
inline constexpr std::size_t mostPixelsOfPage = 100'000'000;

// An answer about a page is nil when there is no such page, and this boolean when that document is not open.
inline constexpr bool notOpen = false;

// What opening answers; nil when the bytes are no PDF:

/// A boolean: it is encrypted, and the empty password does not open it.
inline constexpr const char16_t* lockedKey = u"Locked";
inline constexpr const char16_t* pageCountKey = u"PageCount";
/// A dictionary by the keys of PDFDocument.h; missing when the document says nothing of itself.
inline constexpr const char16_t* attributesKey = u"Attributes";

// Of a page with its styles:

inline constexpr const char16_t* textKey = u"Text";
/// An array of dictionaries, not empty where there is text:
inline constexpr const char16_t* stylesKey = u"Styles";
inline constexpr const char16_t* fontNameKey = u"Font";
inline constexpr const char16_t* fontSizeKey = u"Size";
/// A number, 0xRRGGBB.
inline constexpr const char16_t* colorKey = u"Color";
inline constexpr const char16_t* underlinedKey = u"Underlined";
/// Data: two 32-bit numbers each, low byte first: how many units of the text, and the index of their style.
inline constexpr const char16_t* runsKey = u"Runs";
inline constexpr std::size_t bytesOfRun = 8;

/// What a page has beyond so many units is left out.
inline constexpr std::size_t mostUnitsOfPage = std::size_t{16} << 20;

} // namespace kelvo::pdfengine
