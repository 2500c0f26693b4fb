#pragma once

#include "platform/appkit/drawing/NSShadow.h"
#include "platform/coregraphics/Bitmap.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSObject.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace kelvo {

/// How carefully pixels are made larger or smaller.
enum NSImageInterpolation : std::uint8_t {
    NSImageInterpolationDefault = 0,
    NSImageInterpolationNone = 1, ///< the pixel that is nearest
    NSImageInterpolationLow = 2,  ///< between the four nearest
    NSImageInterpolationHigh = 3  ///< of all that a pixel covers
};

/// How what is drawn (the source) and what is there (the destination) become one.
enum NSCompositingOperation : std::uint8_t {
    NSCompositeClear = 0,
    NSCompositeCopy = 1,
    NSCompositeSourceOver = 2,
    NSCompositeSourceIn = 3,
    NSCompositeSourceOut = 4,
    NSCompositeSourceAtop = 5,
    NSCompositeDestinationOver = 6,
    NSCompositeDestinationIn = 7,
    NSCompositeDestinationOut = 8,
    NSCompositeDestinationAtop = 9,
    NSCompositeXOR = 10,
    NSCompositePlusDarker = 11, ///< what both lack of white is added
    NSCompositeHighlight = 12,  ///< as source-over
    NSCompositePlusLighter = 13 ///< what both have is added
};

enum class DrawingDestination : std::uint8_t { screen, printer };

/// Pixels to draw into, transparent at first, and the state that drawing is done with. Coordinates are points; their
/// origin is the corner at the bottom left. Who draws sets the context as the current one of the thread; two drawings
/// must not interleave.
class NSGraphicsContext : public NSObject {
public:
    static constexpr float mostPixelsOfSide = 32767;
    static constexpr float mostPixels = 100e6F;

    /// A pixel for each point, and for what is left over of one another pixel, so that the whole is a little finer than
    /// its points. Null when a side is not above 0, is no number or longer than mostPixelsOfSide, when they have more
    /// than mostPixels, and when there is no memory.
    static std::shared_ptr<NSGraphicsContext>
    contextOfSize(NSSize size, DrawingDestination destination = DrawingDestination::screen);
    ~NSGraphicsContext() override;

    /// Null when nobody is drawing.
    static std::shared_ptr<NSGraphicsContext> currentContext();
    static void setCurrentContext(std::shared_ptr<NSGraphicsContext> context);
    /// False when nobody is drawing.
    static bool currentContextDrawingToScreen();

    NSString className() const override { return u"NSGraphicsContext"; }
    bool isDrawingToScreen() const noexcept { return destination_ == DrawingDestination::screen; }

    // The state: these, and the coordinate system.
    bool shouldAntialias() const noexcept;
    void setShouldAntialias(bool antialias);
    NSImageInterpolation imageInterpolation() const noexcept;
    void setImageInterpolation(NSImageInterpolation interpolation);
    const std::optional<NSShadow>& shadow() const noexcept;
    void setShadow(std::optional<NSShadow> shadow);
    void translateBy(float x, float y);
    void scaleBy(float x, float y);
    void saveGraphicsState();
    /// Nothing when none was saved.
    void restoreGraphicsState();

    /// The colour takes the place of what is there (NSCompositeCopy).
    void fillRect(NSRect rect, NSColor color);
    /// Draws the part of the bitmap, in its pixels from its bottom left, as large as the rectangle, with its colours and
    /// alpha times the fraction (0 to 1), and the shadow where there is one. What is not whole, and parts and rectangles
    /// without an extent, draw nothing.
    void drawBitmap_inRect_fromRect_operation_fraction(const Bitmap& bitmap, NSRect rect, NSRect part,
                                                       NSCompositingOperation operation, float fraction);

    /// How many pixels a rectangle of that size takes as things stand; not whole numbers.
    NSSize pixelsOfSize(NSSize size) const;
    /// What has been drawn until now: RGB, with alpha (and multiplied by it) where any pixel lets something through.
    BitmapRef bitmap() const;

private:
    struct Surface;
    NSGraphicsContext(std::unique_ptr<Surface> surface, DrawingDestination destination);

    std::unique_ptr<Surface> surface_;
    DrawingDestination destination_;
};

} // namespace kelvo
