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
    return rep.bitmap()->data;
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
    Bitmap bitmap;
    bitmap.width = static_cast<std::uint32_t>(decoded.width());
    bitmap.height = static_cast<std::uint32_t>(decoded.height());
    bitmap.bytesPerRow = decoded.bytesPerRow();
    bitmap.alpha = decoded.alphaInfo() == kCGImageAlphaLast ? BitmapAlpha::last : BitmapAlpha::skipLast;
    bitmap.data = decoded.data();
    return imageWithBitmap(std::make_shared<const Bitmap>(std::move(bitmap)));
}

} // namespace kelvo
