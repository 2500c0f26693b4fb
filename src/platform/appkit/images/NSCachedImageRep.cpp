#include "platform/appkit/images/NSCachedImageRep.h"

#include <utility>

namespace kelvo {

NSCachedImageRep::NSCachedImageRep(BitmapRef image, NSSize size)
    : NSImageRep(size, image->width, image->height), image_(std::move(image)) {}

std::shared_ptr<NSCachedImageRep> NSCachedImageRep::imageRepWithBitmap(const BitmapRef& drawn, NSSize size) {
    return drawn && isWhole(*drawn) ? std::shared_ptr<NSCachedImageRep>(new NSCachedImageRep(drawn, size))
                                    : nullptr;
}

BitmapRef NSCachedImageRep::pixelsForSize(NSSize, ImageGround) const {
    return image_;
}

} // namespace kelvo
