#pragma once

#include "platform/appkit/images/NSImageRep.h"
#include "platform/imageio/CGImageSource.h"

#include <memory>

namespace kelvo {

/// A picture of the classic kind, of which what the image engine makes of it is drawn.
class NSPICTImageRep : public NSImageRep {
public:
    /// Null when the source does not say how large it is.
    static std::shared_ptr<NSPICTImageRep> imageRepWithSource(const CGImageSource& source,
                                                              const NSData& pict);

    NSString className() const override { return u"NSPICTImageRep"; }
    bool isVector() const override { return true; }
    bool hasAlpha() const override { return true; }
    BitmapRef pixelsForSize(NSSize pixels, ImageGround ground) const override;
    /// The file as it was given.
    const NSData& PICTRepresentation() const noexcept { return data_; }

private:
    NSPICTImageRep(CGImageSource source, NSData data, NSSize size);

    CGImageSource source_;
    NSData data_;
};

} // namespace kelvo
