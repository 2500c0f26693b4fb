#include "platform/appkit/drawing/NSGraphicsContext.h"

#include "platform/appkit/drawing/CairoPixels.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

struct CairoEnd {
    void operator()(cairo_t* cairo) const noexcept { ::cairo_destroy(cairo); }
};

struct State {
    bool antialias = true;
    NSImageInterpolation interpolation = NSImageInterpolationDefault;
    std::optional<NSShadow> shadow;
};

cairo_filter_t filterOf(NSImageInterpolation interpolation) {
    switch (interpolation) {
    case NSImageInterpolationNone:
        return CAIRO_FILTER_NEAREST;
    case NSImageInterpolationLow:
        return CAIRO_FILTER_BILINEAR;
    case NSImageInterpolationHigh:
        return CAIRO_FILTER_BEST;
    case NSImageInterpolationDefault:
        break;
    }
    return CAIRO_FILTER_GOOD;
}

cairo_operator_t operatorOf(NSCompositingOperation operation) {
    switch (operation) {
    case NSCompositeClear:
        return CAIRO_OPERATOR_CLEAR;
    case NSCompositeCopy:
        return CAIRO_OPERATOR_SOURCE;
    case NSCompositeSourceIn:
        return CAIRO_OPERATOR_IN;
    case NSCompositeSourceOut:
        return CAIRO_OPERATOR_OUT;
    case NSCompositeSourceAtop:
        return CAIRO_OPERATOR_ATOP;
    case NSCompositeDestinationOver:
        return CAIRO_OPERATOR_DEST_OVER;
    case NSCompositeDestinationIn:
        return CAIRO_OPERATOR_DEST_IN;
    case NSCompositeDestinationOut:
        return CAIRO_OPERATOR_DEST_OUT;
    case NSCompositeDestinationAtop:
        return CAIRO_OPERATOR_DEST_ATOP;
    case NSCompositeXOR:
        return CAIRO_OPERATOR_XOR;
    case NSCompositePlusLighter:
        return CAIRO_OPERATOR_ADD;
    case NSCompositeSourceOver:
    case NSCompositePlusDarker:
    case NSCompositeHighlight:
        break;
    }
    return CAIRO_OPERATOR_OVER;
}

bool hasExtent(NSRect rect) {
    return std::isfinite(rect.origin.x) && std::isfinite(rect.origin.y) && std::isfinite(rect.size.width) &&
           std::isfinite(rect.size.height) && rect.size.width > 0 && rect.size.height > 0;
}

/// Leaves of the part what the bitmap has, and of the rectangle the place for that; gives the pixels that the part touches,
/// so that those beside it are not mixed in, and counts the part from there.
PixelArea cutToBitmap(NSRect& rect, NSRect& part, const Bitmap& bitmap) {
    struct Pixels {
        std::uint32_t first;
        std::uint32_t count;
    };
    // Ends that are next to whole are meant to be.
    constexpr float nearness = 1e-3F;
    const auto cut = [](float& start, float& length, float& partStart, float& partLength,
                        std::uint32_t available) -> Pixels {
        const float scale = length / partLength;
        const float from = std::max(partStart, 0.0F);
        const float to = std::min(partStart + partLength, static_cast<float>(available));
        start += (from - partStart) * scale;
        length = (to - from) * scale;
        partLength = to - from;
        if (!(partLength > 0))
            return {0, 0};
        const auto first = std::min(static_cast<std::uint32_t>(std::floor(from + nearness)), available - 1);
        const auto end = std::min(static_cast<std::uint32_t>(std::ceil(to - nearness)), available);
        partStart = std::max(from - static_cast<float>(first), 0.0F);
        return {first, std::max(end, first + 1) - first};
    };
    const Pixels across = cut(rect.origin.x, rect.size.width, part.origin.x, part.size.width, bitmap.width);
    const Pixels up = cut(rect.origin.y, rect.size.height, part.origin.y, part.size.height, bitmap.height);
    return {across.first, bitmap.height - up.first - up.count, across.count, up.count};
}

void addRectangle(cairo_t* cairo, NSRect rect) {
    ::cairo_rectangle(cairo, rect.origin.x, rect.origin.y, rect.size.width, rect.size.height);
}

cairo_antialias_t antialiasOf(const State& state) {
    return state.antialias ? CAIRO_ANTIALIAS_DEFAULT : CAIRO_ANTIALIAS_NONE;
}

/// The part of the source, all of which is in the rectangle, as large as that; the source's rows come from the top.
void paint(cairo_t* cairo, cairo_surface_t* source, NSRect rect, NSRect part, const State& state,
           cairo_operator_t how) {
    const double height = ::cairo_image_surface_get_height(source);
    ::cairo_save(cairo);
    // Some operations would change what lies outside of the source as well.
    ::cairo_set_antialias(cairo, antialiasOf(state));
    addRectangle(cairo, rect);
    ::cairo_clip(cairo);
    ::cairo_translate(cairo, rect.origin.x, static_cast<double>(rect.origin.y) + rect.size.height);
    ::cairo_scale(cairo, static_cast<double>(rect.size.width) / part.size.width,
                  -static_cast<double>(rect.size.height) / part.size.height);
    ::cairo_set_source_surface(cairo, source, -static_cast<double>(part.origin.x),
                               static_cast<double>(part.origin.y) + part.size.height - height);
    cairo_pattern_t* const pattern = ::cairo_get_source(cairo);
    ::cairo_pattern_set_filter(pattern, filterOf(state.interpolation));
    // Edges are not mixed with the nothing around them.
    ::cairo_pattern_set_extend(pattern, CAIRO_EXTEND_PAD);
    ::cairo_set_operator(cairo, how);
    ::cairo_paint(cairo);
    ::cairo_restore(cairo);
}

std::shared_ptr<NSGraphicsContext>& current() {
    static thread_local std::shared_ptr<NSGraphicsContext> context;
    return context;
}

} // namespace

struct NSGraphicsContext::Surface {
    CairoSurface pixels;
    std::unique_ptr<cairo_t, CairoEnd> cairo;
    State state;
    std::vector<State> saved;

    void drawShadow(cairo_surface_t* source, NSRect rect, NSRect part) const;
    void invert(NSRect rect) const;
};

/// What lacks of white, where anything is.
void NSGraphicsContext::Surface::invert(NSRect rect) const {
    ::cairo_save(cairo.get());
    addRectangle(cairo.get(), rect);
    ::cairo_clip(cairo.get());
    ::cairo_set_source_rgb(cairo.get(), 1, 1, 1);
    ::cairo_set_operator(cairo.get(), CAIRO_OPERATOR_DIFFERENCE);
    ::cairo_paint(cairo.get());
    ::cairo_restore(cairo.get());
}

void NSGraphicsContext::Surface::drawShadow(cairo_surface_t* source, NSRect rect, NSRect part) const {
    const CairoSurface drawn = makeSurface(::cairo_image_surface_get_width(pixels.get()),
                                           ::cairo_image_surface_get_height(pixels.get()));
    if (!drawn)
        return;
    cairo_matrix_t matrix;
    ::cairo_get_matrix(cairo.get(), &matrix);
    {
        const std::unique_ptr<cairo_t, CairoEnd> other(::cairo_create(drawn.get()));
        ::cairo_set_matrix(other.get(), &matrix);
        paint(other.get(), source, rect, part, state, CAIRO_OPERATOR_OVER);
    }
    const CairoSurface shape = shadowOfSurface(drawn.get(), state.shadow->blurRadius);
    if (!shape)
        return;
    const NSColor& color = state.shadow->color;
    ::cairo_save(cairo.get());
    ::cairo_identity_matrix(cairo.get());
    ::cairo_set_source_rgba(cairo.get(), color.red, color.green, color.blue, color.alpha);
    ::cairo_mask_surface(cairo.get(), shape.get(), state.shadow->offset.width,
                         -static_cast<double>(state.shadow->offset.height));
    ::cairo_restore(cairo.get());
}

NSGraphicsContext::NSGraphicsContext(std::unique_ptr<Surface> surface, DrawingDestination destination)
    : surface_(std::move(surface)), destination_(destination) {}

NSGraphicsContext::~NSGraphicsContext() = default;

std::shared_ptr<NSGraphicsContext> NSGraphicsContext::contextOfSize(NSSize size,
                                                                    DrawingDestination destination) {
    const float width = std::ceil(size.width);
    const float height = std::ceil(size.height);
    // Not a number is not above 0 either.
    if (!(width > 0 && height > 0 && width <= mostPixelsOfSide && height <= mostPixelsOfSide &&
          width * height <= mostPixels))
        return nullptr;
    auto surface = std::make_unique<Surface>();
    surface->pixels = makeSurface(static_cast<int>(width), static_cast<int>(height));
    if (!surface->pixels)
        return nullptr;
    surface->cairo.reset(::cairo_create(surface->pixels.get()));
    if (::cairo_status(surface->cairo.get()) != CAIRO_STATUS_SUCCESS)
        return nullptr;
    ::cairo_translate(surface->cairo.get(), 0, height);
    ::cairo_scale(surface->cairo.get(), static_cast<double>(width) / size.width,
                  -static_cast<double>(height) / size.height);
    return std::shared_ptr<NSGraphicsContext>(new NSGraphicsContext(std::move(surface), destination));
}

std::shared_ptr<NSGraphicsContext> NSGraphicsContext::currentContext() {
    return current();
}

void NSGraphicsContext::setCurrentContext(std::shared_ptr<NSGraphicsContext> context) {
    current() = std::move(context);
}

bool NSGraphicsContext::currentContextDrawingToScreen() {
    return current() && current()->isDrawingToScreen();
}

bool NSGraphicsContext::shouldAntialias() const noexcept {
    return surface_->state.antialias;
}

void NSGraphicsContext::setShouldAntialias(bool antialias) {
    surface_->state.antialias = antialias;
}

NSImageInterpolation NSGraphicsContext::imageInterpolation() const noexcept {
    return surface_->state.interpolation;
}

void NSGraphicsContext::setImageInterpolation(NSImageInterpolation interpolation) {
    surface_->state.interpolation = interpolation;
}

const std::optional<NSShadow>& NSGraphicsContext::shadow() const noexcept {
    return surface_->state.shadow;
}

void NSGraphicsContext::setShadow(std::optional<NSShadow> shadow) {
    surface_->state.shadow = shadow;
}

void NSGraphicsContext::translateBy(float x, float y) {
    ::cairo_translate(surface_->cairo.get(), x, y);
}

void NSGraphicsContext::scaleBy(float x, float y) {
    // By nothing, or by what is no number, cairo would draw nothing ever after.
    if (std::isfinite(x) && std::isfinite(y) && x != 0 && y != 0)
        ::cairo_scale(surface_->cairo.get(), x, y);
}

void NSGraphicsContext::saveGraphicsState() {
    ::cairo_save(surface_->cairo.get());
    surface_->saved.push_back(surface_->state);
}

void NSGraphicsContext::restoreGraphicsState() {
    if (surface_->saved.empty())
        return;
    ::cairo_restore(surface_->cairo.get());
    surface_->state = surface_->saved.back();
    surface_->saved.pop_back();
}

void NSGraphicsContext::fillRect(NSRect rect, NSColor color) {
    if (!hasExtent(rect))
        return;
    cairo_t* const cairo = surface_->cairo.get();
    ::cairo_save(cairo);
    ::cairo_set_antialias(cairo, antialiasOf(surface_->state));
    ::cairo_set_operator(cairo, CAIRO_OPERATOR_SOURCE);
    ::cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.alpha);
    addRectangle(cairo, rect);
    ::cairo_fill(cairo);
    ::cairo_restore(cairo);
}

void NSGraphicsContext::drawBitmap_inRect_fromRect_operation_fraction(const Bitmap& bitmap, NSRect rect,
                                                                      NSRect part,
                                                                      NSCompositingOperation operation,
                                                                      float fraction) {
    if (!hasExtent(rect) || !hasExtent(part) || !isWhole(bitmap) ||
        static_cast<float>(std::max(bitmap.width, bitmap.height)) > mostPixelsOfSide)
        return;
    const PixelArea area = cutToBitmap(rect, part, bitmap);
    if (!hasExtent(rect) || !hasExtent(part))
        return;
    const CairoSurface source = surfaceOfBitmap(bitmap, area, fraction);
    if (!source)
        return;
    if (surface_->state.shadow)
        surface_->drawShadow(source.get(), rect, part);
    cairo_t* const cairo = surface_->cairo.get();
    if (operation != NSCompositePlusDarker)
        return paint(cairo, source.get(), rect, part, surface_->state, operatorOf(operation));
    // Of a sum of what lacks, what lacks again.
    cairo_t* const other = ::cairo_create(source.get());
    ::cairo_set_operator(other, CAIRO_OPERATOR_DIFFERENCE);
    ::cairo_set_source_rgb(other, 1, 1, 1);
    ::cairo_paint(other);
    ::cairo_destroy(other);
    surface_->invert(rect);
    paint(cairo, source.get(), rect, part, surface_->state, CAIRO_OPERATOR_ADD);
    surface_->invert(rect);
}

NSSize NSGraphicsContext::pixelsOfSize(NSSize size) const {
    cairo_matrix_t matrix;
    ::cairo_get_matrix(surface_->cairo.get(), &matrix);
    return {static_cast<float>(std::hypot(matrix.xx, matrix.yx)) * size.width,
            static_cast<float>(std::hypot(matrix.xy, matrix.yy)) * size.height};
}

BitmapRef NSGraphicsContext::bitmap() const {
    return bitmapOfSurface(surface_->pixels.get());
}

} // namespace kelvo
