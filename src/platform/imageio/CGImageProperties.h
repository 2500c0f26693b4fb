#pragma once

namespace kelvo {

// What an image says of itself. Nothing is there that the file does not say.

// Of every image:
inline constexpr const char16_t* kCGImagePropertyPixelWidth = u"PixelWidth";   // integer
inline constexpr const char16_t* kCGImagePropertyPixelHeight = u"PixelHeight"; // integer
/// Bits of a sample.
inline constexpr const char16_t* kCGImagePropertyDepth = u"Depth"; // integer
/// RGB, Gray, CMYK or Lab.
inline constexpr const char16_t* kCGImagePropertyColorModel = u"ColorModel"; // string
/// Of formats that may have alpha.
inline constexpr const char16_t* kCGImagePropertyHasAlpha = u"HasAlpha"; // boolean
/// Only when true.
inline constexpr const char16_t* kCGImagePropertyIsFloat = u"IsFloat";     // boolean
inline constexpr const char16_t* kCGImagePropertyIsIndexed = u"IsIndexed"; // boolean

// Of those that say so:
inline constexpr const char16_t* kCGImagePropertyDPIWidth = u"DPIWidth";       // number
inline constexpr const char16_t* kCGImagePropertyDPIHeight = u"DPIHeight";     // number
inline constexpr const char16_t* kCGImagePropertyOrientation = u"Orientation"; // integer, 1 to 8
inline constexpr const char16_t* kCGImagePropertyProfileName = u"ProfileName"; // string

// Groups, dictionaries by the names that their standards give.
inline constexpr const char16_t* kCGImagePropertyTIFFDictionary = u"{TIFF}";
inline constexpr const char16_t* kCGImagePropertyExifDictionary = u"{Exif}";
inline constexpr const char16_t* kCGImagePropertyExifAuxDictionary = u"{ExifAux}";
inline constexpr const char16_t* kCGImagePropertyGPSDictionary = u"{GPS}";
inline constexpr const char16_t* kCGImagePropertyIPTCDictionary = u"{IPTC}";
inline constexpr const char16_t* kCGImagePropertyJFIFDictionary = u"{JFIF}";
inline constexpr const char16_t* kCGImagePropertyPNGDictionary = u"{PNG}";
inline constexpr const char16_t* kCGImagePropertyGIFDictionary = u"{GIF}";

} // namespace kelvo
