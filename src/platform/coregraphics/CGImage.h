#pragma once

#include "platform/foundation/NSData.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// What the fourth byte of a pixel is.
enum CGImageAlphaInfo : std::uint8_t {
    /// Alpha; the colours are not multiplied by it.
    kCGImageAlphaLast = 3,
    /// 255 in every pixel.
    kCGImageAlphaNoneSkipLast = 5
};

/// A decoded image: rows from the top, 8 bits each of red, green, blue and alpha, in sRGB. Default-constructed it is nil,
/// and has no size. Copies share the pixels.
class CGImage {
public:
    static constexpr std::size_t bytesPerPixel = 4;

    CGImage() noexcept = default;
    /// Nil when the sides are 0 or the bytes are not as many as they need.
    CGImage(std::size_t width, std::size_t height, CGImageAlphaInfo alphaInfo, NSData bytes);

    bool isNil() const noexcept { return bytes_.isNil(); }
    /// In pixels.
    std::size_t width() const noexcept { return width_; }
    std::size_t height() const noexcept { return height_; }
    /// Rows follow each other without gaps.
    std::size_t bytesPerRow() const noexcept;
    CGImageAlphaInfo alphaInfo() const noexcept { return alphaInfo_; }
    /// All pixels, shared with the engine as it wrote them. Nil for nil.
    const NSData& data() const noexcept { return bytes_; }

private:
    std::size_t width_ = 0;
    std::size_t height_ = 0;
    CGImageAlphaInfo alphaInfo_ = kCGImageAlphaNoneSkipLast;
    NSData bytes_;
};

} // namespace kelvo
