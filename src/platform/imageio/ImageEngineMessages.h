#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo::imageengine {

// What the stand-in for image sources and plumwick-image-engine say to each other.

inline constexpr const char* programName = "plumwick-image-engine";

// Every message is a dictionary. Without an image it asks for the types that can be read, and its answer is an array of
// strings, or holds pixels and wants a file of them. Otherwise it holds the image whole, so that it can be answered whatever became of the engine meanwhile; what
// the engine has found out about the last image it keeps, and knows it by its number.

/// A number that stands for these bytes alone.
inline constexpr const char16_t* numberKey = u"Number";
/// Data: the bytes of the file.
inline constexpr const char16_t* imageKey = u"Image";
/// A string, a type that the file may have; optional. For files that do not say themselves what they are.
inline constexpr const char16_t* hintKey = u"Hint";
/// A number.
inline constexpr const char16_t* wantKey = u"Want";
enum class Want : std::uint8_t {
    /// A dictionary: type, count, whether it is cut off. Nil when the bytes are no image.
    facts,
    /// A dictionary: the pixels. Nil when there are none.
    pixels,
    /// A dictionary by the keys of CGImageProperties.h; nil when there is no such image.
    properties,
    /// A number: how many rows were there, from the top. Costs little after the pixels of the whole image.
    rows,
    /// Data: a file of the pixels that the message holds in place of an image. Nil when it cannot be made.
    file
};
/// A number, from 0: which of the images in the file.
inline constexpr const char16_t* indexKey = u"Index";

// Of the facts:

inline constexpr const char16_t* typeKey = u"Type";
inline constexpr const char16_t* countKey = u"Count";
inline constexpr const char16_t* incompleteKey = u"Incomplete";

// How pixels are wanted:

/// A number: the longer side at most; 0 or absent: as large as the image is.
inline constexpr const char16_t* mostPixelsKey = u"MostPixels";
/// Booleans. Without the first there is no embedded thumbnail; with it the image itself is decoded only by the second.
inline constexpr const char16_t* embeddedKey = u"Embedded";
inline constexpr const char16_t* fromImageKey = u"FromImage";
/// A boolean: upright, as the file says.
inline constexpr const char16_t* uprightKey = u"Upright";

// Of pixels, beside the booleans above: the bytes are 4 of each pixel (red, green, blue, alpha, not multiplied by it),
// without gaps, from the top, in sRGB.

inline constexpr const char16_t* widthKey = u"Width";
inline constexpr const char16_t* heightKey = u"Height";
/// A boolean; without it all alpha is 255.
inline constexpr const char16_t* alphaKey = u"Alpha";
/// Data of width * height * 4 bytes.
inline constexpr const char16_t* bytesKey = u"Bytes";
inline constexpr std::size_t bytesOfPixel = 4;
/// What has more pixels is decoded smaller, or not at all. Nor are files made of more.
inline constexpr std::uint64_t mostPixelsOfImage = 100'000'000;

// Of a file that is to be made, beside what describes its pixels:

/// A number from 0 to 1; absent: as the kind of file usually has it.
inline constexpr const char16_t* qualityKey = u"Quality";

} // namespace kelvo::imageengine
