#include "images/ScaledDrawing.h"

#include "images/ImageContents.h"

namespace kelvo {
namespace {

constexpr NSShadow dropShadow{{0, -2}, 4, {0, 0, 0, 0.8F}};

/// The graphics state as it is now, for as long as this stands and what is drawn meanwhile may throw.
class SavedGraphicsState {
public:
    explicit SavedGraphicsState(NSGraphicsContext& context) : context_(context) {
        context_.saveGraphicsState();
    }
    SavedGraphicsState(const SavedGraphicsState&) = delete;
    SavedGraphicsState& operator=(const SavedGraphicsState&) = delete;
    ~SavedGraphicsState() { context_.restoreGraphicsState(); }

private:
    NSGraphicsContext& context_;
};

/// Has the image scale when it is resized for as long as this stands.
class ScalingImage {
public:
    explicit ScalingImage(NSImage& image) : image_(image), scaledBefore_(image.scalesWhenResized()) {
        image_.setScalesWhenResized(true);
    }
    ScalingImage(const ScalingImage&) = delete;
    ScalingImage& operator=(const ScalingImage&) = delete;
    ~ScalingImage() { image_.setScalesWhenResized(scaledBefore_); }

private:
    NSImage& image_;
    bool scaledBefore_;
};

} // namespace

void drawScaledInRect_flip_operation_fraction(NSImage& image, NSRect rect, bool flip,
                                              NSCompositingOperation operation, float fraction) {
    const auto context = NSGraphicsContext::currentContext();
    if (!context)
        return;
    const ScalingImage scaling(image);
    const auto rep = image.bestRepresentationForDevice();
    const bool isStraight = operation == NSCompositeSourceOver && fraction >= 1 && !hasAlpha(image) &&
                            NSGraphicsContext::currentContextDrawingToScreen() && rep;
    const auto draw = [&](NSRect place) {
        if (isStraight)
            image.drawRepresentation_inRect(*rep, place);
        else
            image.drawInRect_fromRect_operation_fraction(place, {}, operation, fraction);
    };
    if (!flip)
        return draw(rect);
    const SavedGraphicsState state(*context);
    context->translateBy(0, rect.origin.y + rect.size.height);
    context->scaleBy(1, -1);
    draw({{rect.origin.x, 0}, rect.size});
}

void drawScaledInRect_flip_operation(NSImage& image, NSRect rect, bool flip,
                                     NSCompositingOperation operation) {
    drawScaledInRect_flip_operation_fraction(image, rect, flip, operation, 1);
}

void drawScaledInRect_flip_operation_shadow(NSImage& image, NSRect rect, bool flip,
                                            NSCompositingOperation operation, bool shadow) {
    if (!shadow || !NSGraphicsContext::currentContextDrawingToScreen())
        return drawScaledInRect_flip_operation(image, rect, flip, operation);
    const auto context = NSGraphicsContext::currentContext();
    const SavedGraphicsState state(*context);
    context->setShadow(dropShadow);
    drawScaledInRect_flip_operation(image, rect, flip, operation);
}

} // namespace kelvo
