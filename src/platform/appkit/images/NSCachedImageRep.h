#pragma once

#include "platform/appkit/images/NSImageRep.h"

#include <memory>

namespace kelvo {

/// What was drawn once, as pixels.
class NSCachedImageRep : public NSImageRep {
public:
    /// Null when the pixels are not whole.
    static std::shared_ptr<NSCachedImageRep> imageRepWithBitmap(const BitmapRef& drawn, NSSize size);

    NSString className() const override { return u"NSCachedImageRep"; }
    bool hasAlpha() const override { return kelvo::hasAlpha(*image_); }
    BitmapRef pixelsForSize(NSSize pixels, ImageGround ground) const override;
    /// Never null.
    const BitmapRef& bitmap() const noexcept { return image_; }

private:
    NSCachedImageRep(BitmapRef image, NSSize size);

    BitmapRef image_;
};

} // namespace kelvo
