#pragma once

#include "platform/coregraphics/Bitmap.h"

#include <cairo.h>

#include <memory>

namespace kelvo {

struct CairoSurfaceEnd {
    void operator()(cairo_surface_t* surface) const noexcept { ::cairo_surface_destroy(surface); }
};
using CairoSurface = std::unique_ptr<cairo_surface_t, CairoSurfaceEnd>;

/// Pixels in cairo's form (32 bits, alpha first, multiplied by it), all transparent. Null when there is no memory.
CairoSurface makeSurface(int width, int height);
/// Pixels of a bitmap, counted from its top left.
struct PixelArea {
    std::uint32_t x = 0;
    std::uint32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

/// An area of the bitmap, which must be whole, at most 32,767 pixels on each side and not empty, with colours and alpha
/// times the fraction. Null when there is no memory.
CairoSurface surfaceOfBitmap(const Bitmap& bitmap, const PixelArea& area, float fraction);
/// What it shows; see NSGraphicsContext::bitmap.
BitmapRef bitmapOfSurface(cairo_surface_t* surface);

/// The surface's shape in one colour, its edge spread over the radius in pixels: what a shadow looks like. Null when there
/// is no memory.
CairoSurface shadowOfSurface(cairo_surface_t* surface, float radius);

} // namespace kelvo
