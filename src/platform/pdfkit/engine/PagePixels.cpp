#include "platform/pdfkit/engine/PagePixels.h"

#include "platform/foundation/SealedMemory.h"
#include "platform/pdfkit/PDFEngineMessages.h"

#include <poppler/cpp/poppler-page-renderer.h>
#include <poppler/cpp/poppler-page.h>

#include <algorithm>
#include <cstdint>
#include <span>

namespace kelvo {
namespace {

using namespace pdfengine;

constexpr double pointsPerInch = 72;
/// Past them the library counts with numbers that it has no place for.
constexpr double shortestSide = 0.01;
constexpr double longestSide = 10'000'000;

constexpr std::uint8_t opaque = 0xFF;
constexpr poppler::argb white = 0xFFFFFFFF;
constexpr poppler::argb black = 0xFF000000;

/// The same picture that the library's own program makes.
poppler::image drawn(const poppler::page& page, const PageSize& size, const PixelRequest& request,
                     poppler::argb ground) {
    poppler::page_renderer renderer;
    renderer.set_render_hints(poppler::page_renderer::antialiasing |
                              poppler::page_renderer::text_antialiasing);
    renderer.set_image_format(poppler::image::format_rgb24);
    renderer.set_paper_color(ground);
    const auto width = static_cast<int>(request.width);
    const auto height = static_cast<int>(request.height);
    poppler::image image = renderer.render_page(&page, pointsPerInch * width / size.width,
                                                pointsPerInch * height / size.height, 0, 0, width, height);
    const bool isWhole = image.is_valid() && image.format() == poppler::image::format_rgb24 &&
                         image.width() == width && image.height() == height;
    return isWhole ? image : poppler::image();
}

/// Calls `take` with each pixel of the image and its place in `pixels`.
template <typename Take>
void forEachPixel(const poppler::image& image, std::span<std::uint8_t> pixels, Take take) {
    constexpr std::size_t bytesOfSample = 3;
    const auto width = static_cast<std::size_t>(image.width());
    const auto stride = static_cast<std::size_t>(image.bytes_per_row());
    std::uint8_t* to = pixels.data();
    for (std::size_t row = 0; row < static_cast<std::size_t>(image.height()); ++row) {
        const auto* from = reinterpret_cast<const std::uint8_t*>(image.const_data()) + row * stride;
        for (std::size_t column = 0; column < width; ++column, from += bytesOfSample, to += bytesOfPixel)
            take(from, to);
    }
}

/// What a pixel is that looks like `to` on white and like `from` on black.
void makeTransparent(const std::uint8_t* from, std::uint8_t* to) {
    // Of how much of the white each channel keeps the least is taken, so that no channel becomes more than it can be.
    int kept = opaque;
    for (int channel = 0; channel < 3; ++channel)
        kept = std::min(kept, std::max(to[channel] - from[channel], 0));
    const int alpha = opaque - kept;
    for (int channel = 0; channel < 3; ++channel)
        to[channel] =
            static_cast<std::uint8_t>(alpha == 0 ? 0 : (from[channel] * opaque + alpha / 2) / alpha);
    to[3] = static_cast<std::uint8_t>(alpha);
}

} // namespace

PageSize sizeOfPageAsRead(const poppler::page& page) {
    const poppler::rectf box = page.page_rect(poppler::crop_box);
    const poppler::page::orientation_enum turn = page.orientation();
    const bool isLying = turn == poppler::page::landscape || turn == poppler::page::seascape;
    return isLying ? PageSize{box.height(), box.width()} : PageSize{box.width(), box.height()};
}

NSData pixelsOfPage(const poppler::page& page, const PixelRequest& request) {
    if (request.width == 0 || request.height == 0 || request.height > mostPixelsOfPage / request.width)
        return nullptr;
    const PageSize size = sizeOfPageAsRead(page);
    // Neither holds for what is no number.
    const auto isDrawable = [](double side) { return side >= shortestSide && side <= longestSide; };
    if (!isDrawable(size.width) || !isDrawable(size.height))
        throw PageFailure(u"the page has no size that could be drawn");
    SealedMemory memory(request.width * request.height * bytesOfPixel);
    {
        const poppler::image image = drawn(page, size, request, white);
        if (!image.is_valid())
            return nullptr;
        forEachPixel(image, memory.bytes(), [](const std::uint8_t* from, std::uint8_t* to) {
            std::copy_n(from, 3, to);
            to[3] = opaque;
        });
    }
    if (request.isTransparent) {
        const poppler::image image = drawn(page, size, request, black);
        if (!image.is_valid())
            return nullptr;
        forEachPixel(image, memory.bytes(), makeTransparent);
    }
    return memory.seal();
}

} // namespace kelvo
