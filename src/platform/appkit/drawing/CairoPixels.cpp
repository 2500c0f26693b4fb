#include "platform/appkit/drawing/CairoPixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::uint32_t opaque = 0xFF;

/// value * factor / 255, rounded; exact for all bytes.
constexpr std::uint32_t times(std::uint32_t value, std::uint32_t factor) {
    const std::uint32_t product = value * factor + 0x80;
    return (product + (product >> 8)) >> 8;
}

std::uint32_t sampleAt(const std::uint8_t* place, std::size_t bytesPerSample) {
    if (bytesPerSample == 1)
        return *place;
    std::uint16_t sample = 0;
    std::memcpy(&sample, place, sizeof sample);
    return sample >> 8;
}

std::uint32_t* rowOf(cairo_surface_t* surface, int row) {
    return reinterpret_cast<std::uint32_t*>(::cairo_image_surface_get_data(surface) +
                                            static_cast<std::ptrdiff_t>(row) *
                                                ::cairo_image_surface_get_stride(surface));
}

CairoSurface checked(cairo_surface_t* made) {
    CairoSurface surface(made);
    return ::cairo_surface_status(made) == CAIRO_STATUS_SUCCESS ? std::move(surface) : nullptr;
}

/// The mean of the pixels around each, along lines that are `step` apart and whose pixels are `stride` apart.
void blurLines(std::uint8_t* pixels, int lines, std::ptrdiff_t step, int length, std::ptrdiff_t stride,
               int radius) {
    std::vector<std::uint8_t> line(static_cast<std::size_t>(length));
    const auto width = static_cast<std::uint32_t>(2 * radius + 1);
    for (int index = 0; index < lines; ++index) {
        std::uint8_t* const start = pixels + index * step;
        const auto at = [&](int place) -> std::uint32_t {
            return place >= 0 && place < length ? line[static_cast<std::size_t>(place)] : 0;
        };
        for (int place = 0; place < length; ++place)
            line[static_cast<std::size_t>(place)] = start[place * stride];
        std::uint32_t sum = 0;
        for (int place = -radius; place < radius; ++place)
            sum += at(place);
        for (int place = 0; place < length; ++place) {
            sum += at(place + radius);
            start[place * stride] = static_cast<std::uint8_t>((sum + width / 2) / width);
            sum -= at(place - radius);
        }
    }
}

} // namespace

CairoSurface makeSurface(int width, int height) {
    return checked(::cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
}

CairoSurface surfaceOfBitmap(const Bitmap& bitmap, const PixelArea& area, float fraction) {
    CairoSurface surface = makeSurface(static_cast<int>(area.width), static_cast<int>(area.height));
    if (!surface)
        return nullptr;
    const std::size_t bytesPerSample = bitmap.bitsPerSample / 8;
    const std::size_t bytesPerPixel = samplesPerPixel(bitmap) * bytesPerSample;
    const std::size_t alphaAt = bytesPerPixel - bytesPerSample;
    const std::size_t nextColor = bitmap.colors == BitmapColors::RGB ? bytesPerSample : 0;
    const bool isMultiplied = bitmap.alpha == BitmapAlpha::premultipliedLast;
    const auto whole = static_cast<std::uint32_t>(
        std::lround(std::clamp(fraction, 0.0F, 1.0F) * static_cast<float>(opaque)));
    const std::span<const std::uint8_t> bytes = bitmap.data.bytes();
    for (std::uint32_t y = 0; y < area.height; ++y) {
        const std::uint8_t* from = bytes.data() + (area.y + y) * bitmap.bytesPerRow + area.x * bytesPerPixel;
        std::uint32_t* const to = rowOf(surface.get(), static_cast<int>(y));
        for (std::uint32_t x = 0; x < area.width; ++x, from += bytesPerPixel) {
            const std::uint32_t ownAlpha =
                hasAlpha(bitmap) ? sampleAt(from + alphaAt, bytesPerSample) : opaque;
            const std::uint32_t factor = isMultiplied ? whole : times(ownAlpha, whole);
            const auto color = [&](std::size_t index) {
                const std::uint32_t sample = sampleAt(from + index * nextColor, bytesPerSample);
                return times(isMultiplied ? std::min(sample, ownAlpha) : sample, factor);
            };
            to[x] = times(ownAlpha, whole) << 24 | color(0) << 16 | color(1) << 8 | color(2);
        }
    }
    ::cairo_surface_mark_dirty(surface.get());
    return surface;
}

BitmapRef bitmapOfSurface(cairo_surface_t* surface) {
    ::cairo_surface_flush(surface);
    Bitmap bitmap;
    bitmap.width = static_cast<std::uint32_t>(::cairo_image_surface_get_width(surface));
    bitmap.height = static_cast<std::uint32_t>(::cairo_image_surface_get_height(surface));
    bitmap.bytesPerRow = std::size_t{bitmap.width} * 4;
    std::vector<std::uint8_t> pixels(bitmap.bytesPerRow * bitmap.height);
    std::uint8_t* to = pixels.data();
    std::uint32_t alphaOfAll = opaque;
    for (std::uint32_t y = 0; y < bitmap.height; ++y) {
        const std::uint32_t* const from = rowOf(surface, static_cast<int>(y));
        for (std::uint32_t x = 0; x < bitmap.width; ++x, to += 4) {
            const std::uint32_t pixel = from[x];
            to[0] = static_cast<std::uint8_t>(pixel >> 16);
            to[1] = static_cast<std::uint8_t>(pixel >> 8);
            to[2] = static_cast<std::uint8_t>(pixel);
            to[3] = static_cast<std::uint8_t>(pixel >> 24);
            alphaOfAll &= pixel >> 24;
        }
    }
    bitmap.alpha = alphaOfAll == opaque ? BitmapAlpha::skipLast : BitmapAlpha::premultipliedLast;
    bitmap.data = NSData::dataWithBytesNoCopy(std::move(pixels));
    return std::make_shared<const Bitmap>(std::move(bitmap));
}

CairoSurface shadowOfSurface(cairo_surface_t* surface, float radius) {
    ::cairo_surface_flush(surface);
    const int width = ::cairo_image_surface_get_width(surface);
    const int height = ::cairo_image_surface_get_height(surface);
    CairoSurface shadow = checked(::cairo_image_surface_create(CAIRO_FORMAT_A8, width, height));
    if (!shadow)
        return nullptr;
    std::uint8_t* const pixels = ::cairo_image_surface_get_data(shadow.get());
    const std::ptrdiff_t stride = ::cairo_image_surface_get_stride(shadow.get());
    for (int y = 0; y < height; ++y) {
        const std::uint32_t* const from = rowOf(surface, y);
        for (int x = 0; x < width; ++x)
            pixels[y * stride + x] = static_cast<std::uint8_t>(from[x] >> 24);
    }
    // Three means are next to a Gaussian; together they reach as far as the radius.
    constexpr int means = 3;
    const int reach = static_cast<int>(std::lround(std::min(radius, 512.0F) / means));
    for (int mean = 0; reach > 0 && mean < means; ++mean) {
        blurLines(pixels, height, stride, width, 1, reach);
        blurLines(pixels, width, 1, height, stride, reach);
    }
    ::cairo_surface_mark_dirty(shadow.get());
    return shadow;
}

} // namespace kelvo
