#pragma once

#include "platform/appkit/drawing/NSGraphicsContext.h"
#include "platform/coregraphics/Bitmap.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSObject.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace kelvo {

/// What stands behind what is drawn from a description.
enum class ImageGround : std::uint8_t { transparent, white };

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

    /// The whole of it as pixels, for being drawn about so large: what is made of pixels may come larger, and is not made
    /// larger. Null when it cannot be drawn. What engines do (see EngineProcess::ask) is thrown.
    virtual BitmapRef pixelsForSize(NSSize pixels, ImageGround ground) const = 0;

    /// Draws into the current context; false when it could not be drawn, or nobody is drawing. The part is of its own
    /// points.
    bool drawInRect(NSRect rect) const;
    bool drawInRect_fromRect_operation_fraction(NSRect rect, NSRect part, NSCompositingOperation operation,
                                                float fraction,
                                                ImageGround ground = ImageGround::transparent) const;

    /// All forms that the bytes of a file have: pages of a TIFF file and icons each by themselves, else the first image.
    /// Empty when they are no image, and for a PDF that is locked or has no page. Of a file, the bytes may be still on
    /// the disk (NSData::dataWithContentsOfFileWhenNeeded); engines look at them. At most mostOfFile.
    static std::vector<std::shared_ptr<NSImageRep>> imageRepsWithData(const NSData& data);
    static constexpr std::size_t mostOfFile = 256;

protected:
    NSImageRep(NSSize size, std::uint32_t pixelsWide, std::uint32_t pixelsHigh) noexcept
        : size_(size), pixelsWide_(pixelsWide), pixelsHigh_(pixelsHigh) {}
    void setPixels(std::uint32_t wide, std::uint32_t high) noexcept {
        pixelsWide_ = wide;
        pixelsHigh_ = high;
    }

private:
    NSSize size_;
    std::uint32_t pixelsWide_;
    std::uint32_t pixelsHigh_;
};

/// How many points as many pixels take at that many dots per inch: a pixel each at 72, and where the resolution is not a
/// positive number that makes sense.
NSSize sizeInPoints(std::uint32_t pixelsWide, std::uint32_t pixelsHigh, NSSize dotsPerInch);

} // namespace kelvo
