#include "platform/coregraphics/Bitmap.h"

#include <algorithm>
#include <cstring>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr unsigned opaque = 0xFF;

/// The first 8 bits of each sample.
struct SampleReader {
    explicit SampleReader(const Bitmap& image)
        : bytesPerSample(image.bitsPerSample / 8),
          samples(samplesPerPixel(image)),
          isGray(image.colors == BitmapColors::gray),
          hasAlphaSample(hasAlpha(image)) {}

    unsigned at(const std::uint8_t* sample) const {
        if (bytesPerSample == 1)
            return *sample;
        std::uint16_t wide = 0;
        std::memcpy(&wide, sample, sizeof wide);
        return wide >> 8;
    }

    std::size_t bytesPerSample;
    std::size_t samples;
    bool isGray;
    bool hasAlphaSample;
};

} // namespace

// No product of these numbers passes 64 bits but the last, which is compared by division.
bool isWhole(const Bitmap& image) {
    if (image.width == 0 || image.height == 0 || (image.bitsPerSample != 8 && image.bitsPerSample != 16))
        return false;
    const std::uint64_t used =
        std::uint64_t{image.width} * samplesPerPixel(image) * (image.bitsPerSample / 8);
    const std::size_t length = image.data.length();
    return image.bytesPerRow >= used && length >= used &&
           (image.height - 1 == 0 || (length - used) / (image.height - 1) >= image.bytesPerRow);
}

BitmapRef bitmapOfImage(const CGImage& image) {
    if (image.isNil())
        return nullptr;
    Bitmap bitmap;
    bitmap.width = static_cast<std::uint32_t>(image.width());
    bitmap.height = static_cast<std::uint32_t>(image.height());
    bitmap.bytesPerRow = image.bytesPerRow();
    bitmap.alpha = image.alphaInfo() == kCGImageAlphaLast ? BitmapAlpha::last : BitmapAlpha::skipLast;
    bitmap.data = image.data();
    return std::make_shared<const Bitmap>(std::move(bitmap));
}

CGImage imageOfBitmap(const BitmapRef& bitmap) {
    if (!bitmap || !isWhole(*bitmap))
        return {};
    const Bitmap& image = *bitmap;
    const bool isMultiplied = image.alpha == BitmapAlpha::premultipliedLast;
    const CGImageAlphaInfo alphaInfo = hasAlpha(image) ? kCGImageAlphaLast : kCGImageAlphaNoneSkipLast;
    const std::size_t bytesPerRow = std::size_t{image.width} * CGImage::bytesPerPixel;
    if (image.bitsPerSample == 8 && image.colors == BitmapColors::RGB && image.alpha != BitmapAlpha::none &&
        !isMultiplied && image.bytesPerRow == bytesPerRow &&
        image.data.length() == bytesPerRow * image.height)
        return CGImage(image.width, image.height, alphaInfo, image.data);

    std::vector<std::uint8_t> pixels(bytesPerRow * image.height);
    const SampleReader reader(image);
    std::uint8_t* to = pixels.data();
    for (std::uint32_t y = 0; y < image.height; ++y) {
        const std::uint8_t* from = image.data.bytes().data() + y * image.bytesPerRow;
        for (std::uint32_t x = 0; x < image.width; ++x, to += CGImage::bytesPerPixel) {
            const std::uint8_t* const pixel = from + x * reader.samples * reader.bytesPerSample;
            const unsigned alpha = reader.hasAlphaSample
                                       ? reader.at(pixel + (reader.samples - 1) * reader.bytesPerSample)
                                       : opaque;
            for (std::size_t color = 0; color < 3; ++color) {
                unsigned value = reader.at(pixel + (reader.isGray ? 0 : color) * reader.bytesPerSample);
                if (isMultiplied)
                    value = alpha == 0 ? 0 : std::min((value * opaque + alpha / 2) / alpha, opaque);
                to[color] = static_cast<std::uint8_t>(value);
            }
            to[3] = static_cast<std::uint8_t>(alpha);
        }
    }
    return CGImage(image.width, image.height, alphaInfo, NSData::dataWithBytesNoCopy(std::move(pixels)));
}

} // namespace kelvo
