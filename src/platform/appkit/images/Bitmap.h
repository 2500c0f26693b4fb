#pragma once

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

/// Pixels as whoever made them handed them over. Nothing has been checked: NSBitmapImageRep does so.
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

} // namespace kelvo
