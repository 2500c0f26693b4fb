#include "platform/imageio/engine/ImageEncoder.h"

#include "platform/imageio/engine/BitmapEncoder.h"
#include "platform/imageio/engine/VipsHandles.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <memory>
#include <utility>

namespace kelvo {
namespace {

using vips::Image;
using vips::made;

/// In 3 channels, or in 4 where there is alpha.
Image imageOf(ImageSize size, bool hasAlpha, std::span<const std::uint8_t> pixels) {
    const Image memory(vips_image_new_from_memory(pixels.data(), pixels.size(), static_cast<int>(size.width),
                                                  static_cast<int>(size.height), 4, VIPS_FORMAT_UCHAR));
    if (!memory)
        vips::fail();
    // A point for each pixel.
    constexpr double pixelsOfMillimetre = 72 / 25.4;
    Image image = made([&](auto** to) {
        return vips_copy(memory.get(), to, "interpretation", VIPS_INTERPRETATION_sRGB, "xres",
                         pixelsOfMillimetre, "yres", pixelsOfMillimetre, nullptr);
    });
    return hasAlpha ? std::move(image)
                    : made([&](auto** to) { return vips_extract_band(image.get(), to, 0, "n", 3, nullptr); });
}

Image onWhite(Image image) {
    if (vips_image_hasalpha(image.get()) == 0)
        return image;
    constexpr double most = 255;
    const std::unique_ptr<VipsArrayDouble, void (*)(VipsArrayDouble*)> white(
        vips_array_double_newv(1, most), [](VipsArrayDouble* one) { vips_area_unref(VIPS_AREA(one)); });
    return made([&](auto** to) { return vips_flatten(image.get(), to, "background", white.get(), nullptr); });
}

NSData bitmapFile(const Image& image) {
    Image channels[3];
    for (int channel = 0; channel < 3; ++channel)
        channels[channel] =
            made([&](auto** to) { return vips_extract_band(image.get(), to, channel, nullptr); });
    ::VipsImage* inOrder[]{channels[2].get(), channels[1].get(), channels[0].get()};
    const Image joined = made([&](auto** to) { return vips_bandjoin(inOrder, to, 3, nullptr); });
    std::size_t length = 0;
    const std::unique_ptr<void, void (*)(void*)> pixels(vips_image_write_to_memory(joined.get(), &length),
                                                        g_free);
    if (!pixels)
        vips::fail();
    return encodedBitmap({static_cast<std::size_t>(joined->Xsize), static_cast<std::size_t>(joined->Ysize)},
                         {static_cast<const std::uint8_t*>(pixels.get()), length});
}

using Saver = int (*)(::VipsImage* image, void** bytes, std::size_t* length, std::optional<double> quality);

int savePNG(::VipsImage* image, void** bytes, std::size_t* length, std::optional<double>) {
    return vips_pngsave_buffer(image, bytes, length, "strip", TRUE, nullptr);
}

int saveJPEG(::VipsImage* image, void** bytes, std::size_t* length, std::optional<double> quality) {
    constexpr double usualQuality = 0.8;
    constexpr double best = 100;
    const int parts = static_cast<int>(std::lround(quality.value_or(usualQuality) * best));
    // Stripped it would not say its resolution either.
    return vips_jpegsave_buffer(image, bytes, length, "Q", std::max(parts, 1), nullptr);
}

int saveGIF(::VipsImage* image, void** bytes, std::size_t* length, std::optional<double>) {
    return vips_gifsave_buffer(image, bytes, length, "strip", TRUE, nullptr);
}

int saveJPEG2000(::VipsImage* image, void** bytes, std::size_t* length, std::optional<double> quality) {
    // The library wants the distance from the image in decibels.
    constexpr double usualQuality = 0.7;
    constexpr double leastDecibels = 20;
    constexpr double span = 40;
    const double wanted = quality.value_or(usualQuality);
    return vips_jp2ksave_buffer(image, bytes, length, "lossless", wanted >= 1 ? TRUE : FALSE, "Q",
                                static_cast<int>(leastDecibels + span * wanted), nullptr);
}

struct EncoderRow {
    std::u16string_view type;
    bool hasAlpha;
    Saver save;
};
constexpr EncoderRow rows[] = {{u"public.png", true, savePNG},
                               {u"public.jpeg", false, saveJPEG},
                               {u"com.compuserve.gif", true, saveGIF},
                               {u"public.jpeg-2000", true, saveJPEG2000},
                               {u"com.microsoft.bmp", false, nullptr}};

} // namespace

NSData encodedImage(ImageSize size, bool hasAlpha, std::span<const std::uint8_t> pixels,
                    std::u16string_view type, std::optional<double> quality) {
    const EncoderRow* const row = std::find_if(std::begin(rows), std::end(rows),
                                               [type](const EncoderRow& one) { return one.type == type; });
    if (row == std::end(rows))
        return nullptr;
    requirePixels(static_cast<std::int64_t>(size.width), static_cast<std::int64_t>(size.height));
    if (pixels.size() != size.width * size.height * imageengine::bytesOfPixel)
        vips::fail(u"the pixels of the image are not whole");
    Image image = imageOf(size, hasAlpha, pixels);
    if (!row->hasAlpha)
        image = onWhite(std::move(image));
    if (!row->save)
        return bitmapFile(image);
    void* bytes = nullptr;
    std::size_t length = 0;
    if (row->save(image.get(), &bytes, &length, quality) != 0)
        vips::fail(u"the image cannot be written in this format");
    const std::shared_ptr<const void> owner(bytes, g_free);
    return NSData::dataWithBytesNoCopy({static_cast<const std::uint8_t*>(bytes), length}, owner);
}

} // namespace kelvo
