#include "images/ScaledImages.h"

#include "images/ImageSizes.h"
#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSCachedImageRep.h"

#include <optional>
#include <utility>

namespace kelvo {
namespace {

constexpr NSColor white{1, 1, 1, 1};

/// How a drawing is done where it is not left to the context.
struct Quality {
    bool shouldAntialias;
    NSImageInterpolation interpolation;
};

/// The settings of the current context for as long as this stands.
class QualityOfContext {
public:
    explicit QualityOfContext(const std::optional<Quality>& quality)
        : context_(NSGraphicsContext::currentContext()),
          before_{context_->shouldAntialias(), context_->imageInterpolation()} {
        if (quality)
            set(*quality);
    }
    QualityOfContext(const QualityOfContext&) = delete;
    QualityOfContext& operator=(const QualityOfContext&) = delete;
    ~QualityOfContext() { set(before_); }

private:
    void set(const Quality& quality) {
        context_->setShouldAntialias(quality.shouldAntialias);
        context_->setImageInterpolation(quality.interpolation);
    }

    std::shared_ptr<NSGraphicsContext> context_;
    Quality before_;
};

/// Into the current context; false when there is something that could not be drawn.
bool drawScaled(const NSImage& image, NSRect rect, NSRect part) {
    const auto rep = image.bestRepresentationForDevice();
    if (!rep)
        return true;
    const bool isPart = part.size.width > 0 && part.size.height > 0;
    if (rep->isVector() || !rep->hasAlpha()) {
        const auto drawn = image.copy();
        if (rep->isVector())
            drawn->setBackgroundColor(white);
        if (!isPart)
            return drawn->drawRepresentation_inRect(*rep, rect);
        if (rep->isVector())
            NSGraphicsContext::currentContext()->fillRect(rect, white);
    } else {
        NSGraphicsContext::currentContext()->fillRect(rect, image.backgroundColor());
    }
    return image.drawInRect_fromRect_operation_fraction(rect, part, NSCompositeSourceOver, 1);
}

std::shared_ptr<NSImage> drawnImage(const NSImage& image, NSRect part, NSSize size,
                                    const std::optional<Quality>& quality,
                                    std::optional<bool> cachedSeparately) {
    auto drawn = std::make_shared<NSImage>(size);
    if (cachedSeparately)
        drawn->setCachedSeparately(*cachedSeparately);
    FocusOnImage focus(*drawn);
    if (!focus)
        return nullptr;
    const QualityOfContext context(quality);
    return drawScaled(image, {{}, size}, part) ? drawn : nullptr;
}

/// What it shows in one bitmap, in place of all its representations.
std::shared_ptr<NSImage> inOneBitmap(std::shared_ptr<NSImage> image) {
    if (!image)
        return nullptr;
    const auto reps = image->representations();
    for (const auto& rep : reps) {
        image->removeRepresentation(rep);
        if (const auto cached = std::dynamic_pointer_cast<const NSCachedImageRep>(rep)) {
            const auto bitmap = NSBitmapImageRep::initWithBitmap(cached->bitmap());
            bitmap->setSize(cached->size());
            image->addRepresentation(bitmap);
        }
    }
    return image;
}

NSData TIFFOf(const std::shared_ptr<NSImage>& image) {
    return image ? image->TIFFRepresentation() : NSData();
}

} // namespace

NSData TIFFRepresentationWithSize_shouldAntialias_interpolation_cachedSeparately(
    const NSImage& image, NSSize size, bool shouldAntialias, NSImageInterpolation interpolation, bool) {
    return TIFFOf(drawnImage(image, {}, size, Quality{shouldAntialias, interpolation}, std::nullopt));
}

std::shared_ptr<NSImage> imageWithSize_shouldAntialias_interpolation_cachedSeparately(
    const NSImage& image, NSSize size, bool shouldAntialias, NSImageInterpolation interpolation,
    bool cachedSeparately) {
    return drawnImage(image, {}, size, Quality{shouldAntialias, interpolation}, cachedSeparately);
}

std::shared_ptr<NSImage> bitmapImageWithSize_shouldAntialias_interpolation_cachedSeparately(
    const NSImage& image, NSSize size, bool shouldAntialias, NSImageInterpolation interpolation,
    bool cachedSeparately) {
    return inOneBitmap(imageWithSize_shouldAntialias_interpolation_cachedSeparately(
        image, size, shouldAntialias, interpolation, cachedSeparately));
}

std::shared_ptr<NSImage> imageWithSize_cachedSeparately(const NSImage& image, NSSize size,
                                                        bool cachedSeparately) {
    return NSImageKelvoExtensions::initWithImage_size_cachedSeparately(image, size, cachedSeparately);
}

std::shared_ptr<NSImage> bitmapImageWithSize_cachedSeparately(const NSImage& image, NSSize size,
                                                              bool cachedSeparately) {
    return inOneBitmap(imageWithSize_cachedSeparately(image, size, cachedSeparately));
}

NSData TIFFRepresentationWithSize(const NSImage& image, NSSize size) {
    return TIFFOf(NSImageKelvoExtensions::initWithImage_size(image, size));
}

NSData TIFFRepresentationWithSize_cachedSeparately(const NSImage& image, NSSize size, bool cachedSeparately) {
    return TIFFOf(NSImageKelvoExtensions::initWithImage_size_cachedSeparately(image, size, cachedSeparately));
}

NSData TIFFRepresentationWithSize_fromRect(const NSImage& image, NSSize size, NSRect part) {
    return TIFFOf(NSImageKelvoExtensions::initWithImage_fromRect_size(image, part, size));
}

NSData TIFFRepresentationWithSize_fromRect_cachedSeparately(const NSImage& image, NSSize size, NSRect part,
                                                            bool cachedSeparately) {
    return TIFFOf(NSImageKelvoExtensions::initWithImage_fromRect_size_cachedSeparately(image, part, size,
                                                                                       cachedSeparately));
}

NSData TIFFRepresentationFromRect(const NSImage& image, NSRect part) {
    return TIFFOf(NSImageKelvoExtensions::initWithImage_fromRect(image, part));
}

std::shared_ptr<NSImage> thumbForSize_cachedSeparately(const NSImage& image, NSSize maximum,
                                                       bool cachedSeparately) {
    return imageWithSize_cachedSeparately(image, thumbSize(image, maximum), cachedSeparately);
}

std::shared_ptr<NSImage> thumbForSize_shouldAntialias_interpolation_cachedSeparately(
    const NSImage& image, NSSize maximum, bool shouldAntialias, NSImageInterpolation interpolation,
    bool cachedSeparately) {
    return imageWithSize_shouldAntialias_interpolation_cachedSeparately(
        image, thumbSize(image, maximum), shouldAntialias, interpolation, cachedSeparately);
}

namespace NSImageKelvoExtensions {

std::shared_ptr<NSImage> initWithImage_size(const NSImage& image, NSSize size) {
    return drawnImage(image, {}, size, std::nullopt, std::nullopt);
}

std::shared_ptr<NSImage> initWithImage_size_cachedSeparately(const NSImage& image, NSSize size,
                                                             bool cachedSeparately) {
    return drawnImage(image, {}, size, std::nullopt, cachedSeparately);
}

std::shared_ptr<NSImage> initWithImage_fromRect(const NSImage& image, NSRect part) {
    return initWithImage_fromRect_size(image, part, part.size);
}

std::shared_ptr<NSImage> initWithImage_fromRect_size(const NSImage& image, NSRect part, NSSize size) {
    return drawnImage(image, part, size, std::nullopt, std::nullopt);
}

std::shared_ptr<NSImage> initWithImage_fromRect_size_cachedSeparately(const NSImage& image, NSRect part,
                                                                      NSSize size, bool cachedSeparately) {
    return drawnImage(image, part, size, std::nullopt, cachedSeparately);
}

} // namespace NSImageKelvoExtensions

} // namespace kelvo
