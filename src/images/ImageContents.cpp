#include "images/ImageContents.h"

#include <algorithm>
#include <utility>

namespace kelvo {

bool hasAlpha(const NSImage& image) {
    return std::ranges::any_of(image.representations(),
                               [](const auto& rep) { return rep->isVector() || rep->hasAlpha(); });
}

bool isReallyValid(const NSImage& image) {
    const NSSize size = image.size();
    return size.width > 0 && size.height > 0 && !image.representations().empty();
}

NSData data(const NSBitmapImageRep& rep) {
    const BitmapRef& decoded = rep.bitmap();
    return decoded ? decoded->data : NSData();
}

std::shared_ptr<NSImage> NSImageKelvoExtensions::imageWithBitmap(const BitmapRef& decoded) {
    if (!decoded || decoded->width == 0 || decoded->height == 0)
        return nullptr;
    auto image = std::make_shared<NSImage>(
        NSSize{static_cast<float>(decoded->width), static_cast<float>(decoded->height)});
    image->addRepresentation(NSBitmapImageRep::initWithBitmap(decoded));
    return image;
}

std::shared_ptr<NSImage> NSImageKelvoExtensions::imageWithCGImageRef(const CGImage& decoded) {
    if (decoded.isNil())
        return nullptr;
    return imageWithBitmap(bitmapOfImage(decoded));
}

} // namespace kelvo
