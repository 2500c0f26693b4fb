#pragma once

#include "platform/coregraphics/CGImage.h"
#include "platform/foundation/NSData.h"

#include <cstdint>
#include <memory>

namespace kelvo {

enum class BitmapColors : std::uint8_t {
    gray,
    /// sRGB.
    RGB
};

/// Where the alpha of a pixel stands, if anywhere, and whether its colours have been multiplied by it.
enum class BitmapAlpha : std::uint8_t {
    none,
    premultipliedLast,
    last,
    /// A sample after the colours that means nothing.
    skipLast
};

/// Pixels as whoever made them handed them over. Nothing has been checked: isWhole does so.
struct Bitmap {
    /// In pixels.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Of each sample: 8, or 16 in the byte order of this machine.
    std::uint32_t bitsPerSample = 8;
    /// At least what the pixels of a row take; the rows come from the top.
    std::size_t bytesPerRow = 0;
    BitmapColors colors = BitmapColors::RGB;
    BitmapAlpha alpha = BitmapAlpha::none;
    /// The samples of a pixel stand together: colours, then alpha. May be memory that an engine has filled.
    NSData data;
};

/// Null is no image.
using BitmapRef = std::shared_ptr<const Bitmap>;

constexpr std::uint32_t colorsPerPixel(const Bitmap& image) {
    return image.colors == BitmapColors::RGB ? 3 : 1;
}
/// Those that mean nothing included.
constexpr std::uint32_t samplesPerPixel(const Bitmap& image) {
    return colorsPerPixel(image) + (image.alpha == BitmapAlpha::none ? 0 : 1);
}
constexpr bool hasAlpha(const Bitmap& image) {
    return image.alpha == BitmapAlpha::premultipliedLast || image.alpha == BitmapAlpha::last;
}

/// Whether there are pixels, of samples that are 8 or 16 bits long, and all of them are in the data.
bool isWhole(const Bitmap& image);

/// The image's pixels, shared. Null for nil.
BitmapRef bitmapOfImage(const CGImage& image);
/// The same as an image of 8 bits in RGB whose colours are not multiplied by alpha: shared where they are that already,
/// else converted. Nil for null and for what is not whole.
CGImage imageOfBitmap(const BitmapRef& bitmap);

} // namespace kelvo
