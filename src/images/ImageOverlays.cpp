#include "images/ImageOverlays.h"

#include "images/NamedImages.h"

namespace kelvo {

std::shared_ptr<NSImage>
imageWithOverlay_atPoint_operation_fraction(const NSImage& image, const std::shared_ptr<NSImage>& overlay,
                                            NSPoint point, NSCompositingOperation operation, float fraction) {
    auto copy = image.copy();
    if (overlay) {
        if (const FocusOnImage focus(*copy); focus)
            overlay->compositeToPoint_operation_fraction(point, operation, fraction);
    }
    return copy;
}

std::shared_ptr<NSImage> imageWithOverlay_atPoint(const NSImage& image,
                                                  const std::shared_ptr<NSImage>& overlay, NSPoint point) {
    return imageWithOverlay_atPoint_operation_fraction(image, overlay, point, NSCompositeSourceOver, 1);
}

std::shared_ptr<NSImage> imageWithOverlayNamed_atPoint(const NSImage& image, const NSString& overlayName,
                                                       NSPoint point) {
    return imageWithOverlay_atPoint(image, NSImageKelvoExtensions::cachedImageNamed(overlayName), point);
}

std::shared_ptr<NSImage>
NSImageKelvoExtensions::imageNamed_withOverlayNamed_atPoint(const NSString& name, const NSString& overlayName,
                                                            NSPoint point) {
    const auto image = cachedImageNamed(name);
    return image ? imageWithOverlayNamed_atPoint(*image, overlayName, point) : nullptr;
}

} // namespace kelvo
