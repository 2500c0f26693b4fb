#include "platform/coregraphics/CGImage.h"

#include <utility>

namespace kelvo {

CGImage::CGImage(std::size_t width, std::size_t height, CGImageAlphaInfo alphaInfo, NSData bytes) {
    const std::size_t pixels = bytes.length() / bytesPerPixel;
    // By division, which does not overflow.
    if (width == 0 || height == 0 || bytes.length() % bytesPerPixel != 0 || pixels % width != 0 ||
        pixels / width != height)
        return;
    width_ = width;
    height_ = height;
    alphaInfo_ = alphaInfo;
    bytes_ = std::move(bytes);
}

std::size_t CGImage::bytesPerRow() const noexcept {
    return width_ * bytesPerPixel;
}

} // namespace kelvo
