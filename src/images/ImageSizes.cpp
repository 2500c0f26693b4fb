#include "images/ImageSizes.h"

#include <cmath>

namespace kelvo {

namespace NSImageKelvoExtensions {

NSSize thumb_forSize(NSSize maximum, NSSize size) {
    if (size.width <= maximum.width && size.height <= maximum.height)
        return size;
    NSSize fitted{maximum.width, maximum.width / size.width * size.height};
    if (fitted.height > maximum.height)
        fitted = {maximum.height / size.height * size.width, maximum.height};
    const auto whole = [](float length) {
        const float floor = std::floor(length);
        return floor > 0 ? floor : 1;
    };
    return {whole(fitted.width), whole(fitted.height)};
}

NSSize scale_forSize(float factor, NSSize size) {
    return factor > 0 ? NSSize{std::floor(size.width * factor), std::floor(size.height * factor)} : size;
}

} // namespace NSImageKelvoExtensions

NSSize pixelSize(const NSImage& image) {
    NSSize largest;
    for (const auto& rep : image.representations()) {
        const NSSize pixels{static_cast<float>(rep->pixelsWide()), static_cast<float>(rep->pixelsHigh())};
        if (pixels.width > largest.width)
            largest = pixels;
    }
    return largest == NSSize{} ? image.size() : largest;
}

NSSize thumbSize(const NSImage& image, NSSize maximum) {
    return NSImageKelvoExtensions::thumb_forSize(maximum, pixelSize(image));
}

NSSize scaledSize(const NSImage& image, float factor) {
    return NSImageKelvoExtensions::scale_forSize(factor, pixelSize(image));
}

void scaleToThumbSize(NSImage& image, NSSize maximum) {
    image.setScalesWhenResized(true);
    image.setSize(thumbSize(image, maximum));
}

float aspectRatio(const NSImage& image) {
    const NSSize size = image.size();
    return size.height > 0 ? size.width / size.height : 0;
}

} // namespace kelvo
