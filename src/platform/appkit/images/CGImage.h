#pragma once

#include "platform/foundation/NSData.h"

#include <cstdint>
#include <memory>

namespace kelvo {

enum class CGColorSpaceModel : std::uint8_t {
    monochrome,
    /// sRGB.
    RGB
};

/// Where the alpha of a pixel stands, if anywhere, and whether its colours have been multiplied by it.
enum class CGImageAlphaInfo : std::uint8_t {
    none,
    premultipliedLast,
    last,
    /// A sample after the colours that means nothing.
    noneSkipLast
};

/// A decoded image as its decoder handed it over. Nothing has been checked: NSBitmapImageRep does so.
struct CGImage {
    /// In pixels.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Of each sample: 8, or 16 in the byte order of this machine.
    std::uint32_t bitsPerComponent = 8;
    /// At least what the pixels of a row take; the rows come from the top.
    std::size_t bytesPerRow = 0;
    CGColorSpaceModel colorSpaceModel = CGColorSpaceModel::RGB;
    CGImageAlphaInfo alphaInfo = CGImageAlphaInfo::none;
    /// The samples of a pixel stand together: colours, then alpha. May be memory that an engine has filled.
    NSData data;
};

/// Null is no image.
using CGImageRef = std::shared_ptr<const CGImage>;

constexpr std::uint32_t colorsPerPixel(const CGImage& image) {
    return image.colorSpaceModel == CGColorSpaceModel::RGB ? 3 : 1;
}
/// Those that mean nothing included.
constexpr std::uint32_t samplesPerPixel(const CGImage& image) {
    return colorsPerPixel(image) + (image.alphaInfo == CGImageAlphaInfo::none ? 0 : 1);
}
constexpr bool hasAlpha(const CGImage& image) {
    return image.alphaInfo == CGImageAlphaInfo::premultipliedLast ||
           image.alphaInfo == CGImageAlphaInfo::last;
}

} // namespace kelvo
