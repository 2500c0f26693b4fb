#pragma once

#include "platform/foundation/Value.h"
#include "platform/imageio/CGImageSource.h"

#include <exiv2/exiv2.hpp>
#include <gtest/gtest.h>
#include <vips/vips.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::tests {

using Color = std::array<int, 4>;

inline const std::map<char, Color>& namedColors() {
    static const std::map<char, Color> colors{{'R', {255, 0, 0, 255}}, {'G', {0, 255, 0, 255}},
                                              {'B', {0, 0, 255, 255}}, {'W', {255, 255, 255, 255}},
                                              {'K', {0, 0, 0, 255}},   {'.', {0, 0, 0, 0}},
                                              {'r', {255, 0, 0, 128}}};
    return colors;
}

/// A picture in four quarters, of the named colours from the top left; to be released. Alpha only where there is some.
inline VipsImage* quarters(int width, int height, std::string_view colors) {
    static const bool isReady = VIPS_INIT("tests") == 0;
    EXPECT_TRUE(isReady);
    const int channels = colors.find_first_of(".r") == colors.npos ? 3 : 4;
    std::vector<std::uint8_t> pixels;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const Color& color = namedColors().at(colors[(y < height / 2 ? 0 : 2) + (x < width / 2 ? 0 : 1)]);
            pixels.insert(pixels.end(), color.begin(), color.begin() + channels);
        }
    }
    VipsImage* const memory = vips_image_new_from_memory_copy(pixels.data(), pixels.size(), width, height,
                                                              channels, VIPS_FORMAT_UCHAR);
    VipsImage* image = nullptr;
    EXPECT_EQ(vips_copy(memory, &image, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr), 0);
    g_object_unref(memory);
    return image;
}

/// As a file, by the ending and options of its name; releases the picture.
inline std::string saved(VipsImage* image, const char* format) {
    void* bytes = nullptr;
    std::size_t length = 0;
    EXPECT_EQ(vips_image_write_to_buffer(image, format, &bytes, &length, nullptr), 0) << vips_error_buffer();
    g_object_unref(image);
    std::string file(static_cast<const char*>(bytes), length);
    g_free(bytes);
    return file;
}

inline std::string pictureFile(const char* format, int width, int height, std::string_view colors) {
    return saved(quarters(width, height, colors), format);
}

/// The file with metadata by Exiv2's keys, and with an embedded thumbnail where one is given.
inline std::string withMetadata(const std::string& file,
                                const std::vector<std::pair<std::string, std::string>>& values,
                                const std::string& thumbnail = {}) {
    const auto* const start = reinterpret_cast<const Exiv2::byte*>(file.data());
    const std::unique_ptr<Exiv2::Image> image(
        Exiv2::ImageFactory::open(start, static_cast<long>(file.size())).release());
    image->readMetadata();
    for (const auto& [key, value] : values) {
        if (key.starts_with("Iptc.")) {
            Exiv2::Iptcdatum datum((Exiv2::IptcKey(key)));
            datum.setValue(value);
            image->iptcData().add(datum);
        } else if (key.starts_with("Xmp.")) {
            image->xmpData()[key] = value;
        } else {
            image->exifData()[key] = value;
        }
    }
    if (!thumbnail.empty())
        Exiv2::ExifThumb(image->exifData())
            .setJpegThumbnail(reinterpret_cast<const Exiv2::byte*>(thumbnail.data()),
                              static_cast<long>(thumbnail.size()));
    image->writeMetadata();
    Exiv2::BasicIo& io = image->io();
    io.open();
    const Exiv2::DataBuf written = io.read(static_cast<long>(io.size()));
    return {reinterpret_cast<const char*>(written.pData_), static_cast<std::size_t>(written.size_)};
}

inline CGImageSource sourceOf(const std::string& file, const char16_t* hint = nullptr) {
    auto options = NSMutableDictionary::dictionary();
    if (hint)
        options.setObject_forKey(hint, kCGImageSourceTypeIdentifierHint);
    return CGImageSourceCreateWithData(NSData::dataWithBytes(file), options);
}

struct ThumbnailWishes {
    int most = 256;
    bool ifAbsent = true;
    bool always = false;
    bool upright = false;
};

inline NSDictionary optionsOf(const ThumbnailWishes& wishes) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithInt(wishes.most), kCGImageSourceThumbnailMaxPixelSize},
         {NSNumber::numberWithBool(wishes.ifAbsent), kCGImageSourceCreateThumbnailFromImageIfAbsent},
         {NSNumber::numberWithBool(wishes.always), kCGImageSourceCreateThumbnailFromImageAlways},
         {NSNumber::numberWithBool(wishes.upright), kCGImageSourceCreateThumbnailWithTransform}});
}

inline CGImage thumbnailOf(const std::string& file, const ThumbnailWishes& wishes = {},
                           std::size_t index = 0) {
    return CGImageSourceCreateThumbnailAtIndex(sourceOf(file), index, optionsOf(wishes));
}

inline Color pixelAt(const CGImage& image, std::size_t x, std::size_t y) {
    Color color{};
    for (std::size_t channel = 0; channel < color.size(); ++channel)
        color[channel] = image.data().bytes()[y * image.bytesPerRow() + x * 4 + channel];
    return color;
}

inline int distance(const Color& left, const Color& right) {
    int most = 0;
    for (std::size_t channel = 0; channel < left.size(); ++channel)
        most = std::max(most, std::abs(left[channel] - right[channel]));
    return most;
}

/// "64x48 RGBW": the size, and the middles of the quarters by the names of their colours, '?' for all others; "nil".
inline std::string described(const CGImage& image, int tolerance = 8) {
    if (image.isNil())
        return "nil";
    std::string text = std::to_string(image.width()) + 'x' + std::to_string(image.height()) + ' ';
    for (std::size_t quarter = 0; quarter < 4; ++quarter) {
        const Color found = pixelAt(image, (quarter % 2 * 2 + 1) * image.width() / 4,
                                    (quarter / 2 * 2 + 1) * image.height() / 4);
        char name = '?';
        for (const auto& [candidate, color] : namedColors()) {
            const bool isNothing = candidate == '.' && found[3] == 0;
            name = isNothing || distance(found, color) <= tolerance ? candidate : name;
        }
        text += name;
    }
    return text;
}

} // namespace kelvo::tests
