#include "platform/appkit/images/NSPICTImageRep.h"

#include "platform/appkit/images/SourceFacts.h"

#include <utility>

namespace kelvo {

NSPICTImageRep::NSPICTImageRep(CGImageSource source, NSData data, NSSize size)
    : NSImageRep(size, 0, 0), source_(std::move(source)), data_(std::move(data)) {}

std::shared_ptr<NSPICTImageRep> NSPICTImageRep::imageRepWithSource(const CGImageSource& source,
                                                                   const NSData& pict) {
    const auto facts = SourceFacts::read(source, 0);
    return facts ? std::shared_ptr<NSPICTImageRep>(new NSPICTImageRep(source, pict, facts->size)) : nullptr;
}

BitmapRef NSPICTImageRep::pixelsForSize(NSSize, ImageGround) const {
    return bitmapOfImage(CGImageSourceCreateImageAtIndex(source_, 0, nullptr));
}

} // namespace kelvo
