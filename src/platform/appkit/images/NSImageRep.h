#pragma once

#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSObject.h"

#include <cstdint>

namespace kelvo {

/// One form in which an image is there. What it holds is settled when it is made; only its size can be changed.
class NSImageRep : public NSObject {
public:
    /// In points: how large it is meant to be drawn.
    NSSize size() const noexcept { return size_; }
    void setSize(NSSize size) noexcept { size_ = size; }
    /// 0 for what is not made of pixels.
    std::uint32_t pixelsWide() const noexcept { return pixelsWide_; }
    std::uint32_t pixelsHigh() const noexcept { return pixelsHigh_; }

    /// Whether it is drawn from a description, as PDF and EPS are; otherwise it is a bitmap, or the cached copy of one.
    virtual bool isVector() const { return false; }
    virtual bool hasAlpha() const = 0;

protected:
    NSImageRep(NSSize size, std::uint32_t pixelsWide, std::uint32_t pixelsHigh) noexcept
        : size_(size), pixelsWide_(pixelsWide), pixelsHigh_(pixelsHigh) {}

private:
    NSSize size_;
    std::uint32_t pixelsWide_;
    std::uint32_t pixelsHigh_;
};

/// How many points as many pixels take at that many dots per inch: a pixel each at 72, and where the resolution is not a
/// positive number.
NSSize sizeInPoints(std::uint32_t pixelsWide, std::uint32_t pixelsHigh, NSSize dotsPerInch);

} // namespace kelvo
