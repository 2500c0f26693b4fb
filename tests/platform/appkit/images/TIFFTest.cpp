#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSImage.h"
#include "platform/appkit/images/TIFFCompressors.h"

#include <gtest/gtest.h>
#include <tiffio.h>

#include <cstdarg>
#include <cstring>
#include <random>

namespace kelvo {
namespace {

/// A file in memory, for libtiff to read.
struct Bytes {
    std::span<const std::uint8_t> all;
    std::size_t at = 0;
};

std::shared_ptr<TIFF> opened(Bytes& file) {
    // What it reads but would have written otherwise.
    TIFFSetWarningHandler(
        [](const char* module, const char* text, va_list) { ADD_FAILURE() << module << ": " << text; });
    TIFF* const tiff = TIFFClientOpen(
        "memory", "rm", &file,
        [](thandle_t handle, void* to, tmsize_t size) {
            auto* const bytes = static_cast<Bytes*>(handle);
            const std::size_t count =
                std::min<std::size_t>(static_cast<std::size_t>(size), bytes->all.size() - bytes->at);
            std::memcpy(to, bytes->all.data() + bytes->at, count);
            bytes->at += count;
            return static_cast<tmsize_t>(count);
        },
        [](thandle_t, void*, tmsize_t) -> tmsize_t { return 0; },
        [](thandle_t handle, toff_t offset, int whence) {
            auto* const bytes = static_cast<Bytes*>(handle);
            const std::size_t base = whence == SEEK_SET   ? 0
                                     : whence == SEEK_CUR ? bytes->at
                                                          : bytes->all.size();
            bytes->at = std::min<std::size_t>(base + offset, bytes->all.size());
            return static_cast<toff_t>(bytes->at);
        },
        [](thandle_t) { return 0; },
        [](thandle_t handle) { return static_cast<toff_t>(static_cast<Bytes*>(handle)->all.size()); },
        nullptr, nullptr);
    return {tiff, [](TIFF* open) {
                if (open)
                    TIFFClose(open);
            }};
}

template <typename Number>
Number field(TIFF* tiff, std::uint32_t tag) {
    Number number{};
    return TIFFGetFieldDefaulted(tiff, tag, &number) == 1 ? number : Number{};
}

/// The rows of the open page without gaps; empty when any of it could not be read.
std::string pixelsOf(TIFF* tiff) {
    const auto height = field<std::uint32_t>(tiff, TIFFTAG_IMAGELENGTH);
    const auto size = static_cast<std::size_t>(TIFFScanlineSize(tiff));
    std::string pixels(size * height, '\0');
    for (std::uint32_t line = 0; line < height; ++line) {
        if (TIFFReadScanline(tiff, &pixels[line * size], line) != 1)
            return {};
    }
    return pixels;
}

/// A whole image whose pixels are noise, or with `steps` flat areas.
BitmapRef image(std::uint32_t width, std::uint32_t height, BitmapColors model, BitmapAlpha alpha,
                std::uint32_t bits = 8, std::size_t gap = 0, unsigned steps = 1) {
    Bitmap made{width, height, bits, 0, model, alpha, nullptr};
    made.bytesPerRow = std::size_t{width} * samplesPerPixel(made) * bits / 8 + gap;
    std::minstd_rand random(width * 31 + height);
    std::vector<std::uint8_t> bytes(made.bytesPerRow * height - gap);
    for (std::size_t at = 0; at < bytes.size(); ++at)
        bytes[at] = at % steps == 0 ? static_cast<std::uint8_t>(random() >> 8) : bytes[at - 1];
    made.data = NSData::dataWithBytesNoCopy(std::move(bytes));
    return std::make_shared<const Bitmap>(made);
}

/// What is to be read of it: without gaps and samples that mean nothing.
std::string expectedPixels(const Bitmap& source) {
    const std::size_t size = source.bitsPerSample / 8;
    const std::size_t from = samplesPerPixel(source) * size;
    const std::size_t to = from - (source.alpha == BitmapAlpha::skipLast ? size : 0);
    std::string pixels;
    for (std::size_t line = 0; line < source.height; ++line) {
        for (std::size_t pixel = 0; pixel < source.width; ++pixel)
            pixels += source.data.characters().substr(line * source.bytesPerRow + pixel * from, to);
    }
    return pixels;
}

TEST(TIFFTest, IsReadByAnother) {
    using enum BitmapColors;
    using enum BitmapAlpha;
    const struct {
        const char* name;
        BitmapRef source;
        std::uint16_t photometric;
        std::vector<std::uint16_t> extraSamples;
    } rows[] = {
        {"one pixel", image(1, 1, gray, none), PHOTOMETRIC_MINISBLACK, {}},
        {"gray", image(37, 21, gray, none), PHOTOMETRIC_MINISBLACK, {}},
        {"gray with alpha", image(37, 21, gray, last), PHOTOMETRIC_MINISBLACK, {EXTRASAMPLE_UNASSALPHA}},
        {"RGB", image(37, 21, RGB, none), PHOTOMETRIC_RGB, {}},
        {"RGB and samples to skip", image(37, 21, RGB, skipLast), PHOTOMETRIC_RGB, {}},
        {"RGB with alpha", image(37, 21, RGB, last), PHOTOMETRIC_RGB, {EXTRASAMPLE_UNASSALPHA}},
        {"multiplied", image(37, 21, RGB, premultipliedLast), PHOTOMETRIC_RGB, {EXTRASAMPLE_ASSOCALPHA}},
        {"16 bits", image(37, 21, RGB, last, 16), PHOTOMETRIC_RGB, {EXTRASAMPLE_UNASSALPHA}},
        {"rows with gaps", image(37, 21, RGB, none, 8, 5), PHOTOMETRIC_RGB, {}},
        {"many strips", image(300, 311, RGB, last, 8, 0, 7), PHOTOMETRIC_RGB, {EXTRASAMPLE_UNASSALPHA}},
        {"flat", image(500, 700, gray, none, 8, 0, 1'000'000), PHOTOMETRIC_MINISBLACK, {}},
        {"encoded in parts", image(601, 1203, RGB, last, 8, 0, 7), PHOTOMETRIC_RGB, {EXTRASAMPLE_UNASSALPHA}},
        {"a row of more than a strip", image(40'000, 3, RGB, skipLast, 8, 0, 300), PHOTOMETRIC_RGB, {}},
    };
    for (const auto& row : rows) {
        for (const auto compression :
             {NSTIFFCompressionNone, NSTIFFCompressionLZW, NSTIFFCompressionPackBits}) {
            SCOPED_TRACE(row.name + (" " + std::to_string(compression)));
            const auto rep = NSBitmapImageRep::initWithBitmap(row.source);
            ASSERT_TRUE(rep);
            rep->setSize(sizeInPoints(row.source->width, row.source->height, {300, 72.5F}));
            const NSData data = rep->TIFFRepresentationUsingCompression_factor(compression, 1);
            Bytes file{data.bytes()};
            const auto tiff = opened(file);
            ASSERT_TRUE(tiff);
            EXPECT_EQ(field<std::uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH), row.source->width);
            EXPECT_EQ(field<std::uint16_t>(tiff.get(), TIFFTAG_COMPRESSION), compression);
            EXPECT_EQ(field<std::uint16_t>(tiff.get(), TIFFTAG_PHOTOMETRIC), row.photometric);
            EXPECT_EQ(field<std::uint16_t>(tiff.get(), TIFFTAG_BITSPERSAMPLE), row.source->bitsPerSample);
            EXPECT_EQ(field<std::uint16_t>(tiff.get(), TIFFTAG_RESOLUTIONUNIT), RESUNIT_INCH);
            EXPECT_NEAR(field<float>(tiff.get(), TIFFTAG_XRESOLUTION), 300, 0.001);
            EXPECT_NEAR(field<float>(tiff.get(), TIFFTAG_YRESOLUTION), 72.5, 0.001);
            std::uint16_t count = 0;
            const std::uint16_t* kinds = nullptr;
            TIFFGetFieldDefaulted(tiff.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
            EXPECT_EQ(std::vector<std::uint16_t>(kinds, kinds + count), row.extraSamples);
            EXPECT_TRUE(pixelsOf(tiff.get()) == expectedPixels(*row.source));
            std::size_t stripsInBytes = 0;
            for (std::uint32_t strip = 0; strip < TIFFNumberOfStrips(tiff.get()); ++strip)
                stripsInBytes += TIFFRawStripSize64(tiff.get(), strip);
            if (compression == NSTIFFCompressionNone) {
                EXPECT_EQ(stripsInBytes, expectedPixels(*row.source).size());
            }
            EXPECT_EQ(TIFFCurrentDirOffset(tiff.get()) % 2, 0U);
            EXPECT_EQ(TIFFLastDirectory(tiff.get()), 1);
        }
    }
}

/// What a reader makes of it that takes each code at its word and nothing after the last; "broken" of what it cannot read.
std::string readLZW(std::span<const std::uint8_t> bytes) {
    std::string text, before;
    std::vector<std::string> strings;
    std::size_t bit = 0, width = 9;
    const auto nextCode = [&] {
        std::size_t code = 0;
        for (const std::size_t end = bit + width; bit < end; ++bit)
            code = code << 1 | (bit / 8 < bytes.size() ? bytes[bit / 8] >> (7 - bit % 8) & 1 : 0);
        return code;
    };
    for (std::size_t code = nextCode(); code != 257 && bit <= bytes.size() * 8; code = nextCode()) {
        if (code == 256) {
            strings.clear();
            before.clear();
            width = 9;
            continue;
        }
        if (code >= 258 + strings.size() + (before.empty() ? 0 : 1))
            return "broken";
        std::string string = code < 256                    ? std::string(1, static_cast<char>(code))
                             : code < 258 + strings.size() ? strings[code - 258]
                                                           : before + before.front();
        if (!before.empty())
            strings.push_back(before + string.front());
        text += string;
        before = std::move(string);
        // One string early: the next one to come is 511, 1023 or 2047.
        const std::size_t next = 258 + strings.size();
        width = next < 511 ? 9 : next < 1023 ? 10 : next < 2047 ? 11 : 12;
    }
    return (bit + 7) / 8 == bytes.size() ? text : "broken";
}

// Noise takes a code for nearly each byte, so that some of these lengths end where codes become wider and where the
// strings begin anew.
TEST(TIFFTest, LZWEndsAnywhere) {
    for (std::uint32_t length = 0; length < 4200; ++length) {
        const auto noise = image(length + 1, 1, BitmapColors::gray, BitmapAlpha::none)->data;
        std::vector<std::uint8_t> compressed;
        compressWithLZW(noise.bytes().first(length), compressed);
        ASSERT_TRUE(readLZW(compressed) == noise.characters().substr(0, length)) << length;
    }
}

TEST(TIFFTest, OnePageForEachBitmap) {
    using enum BitmapColors;
    NSImage picture;
    EXPECT_TRUE(picture.TIFFRepresentation().isNil());
    for (const std::uint32_t width : {3U, 5U, 4U})
        picture.addRepresentation(NSBitmapImageRep::initWithBitmap(image(width, 3, gray, BitmapAlpha::none)));
    picture.removeRepresentation(picture.representations()[1]);
    // No bitmap is compressed in this way.
    const NSData data = picture.TIFFRepresentationUsingCompression_factor(NSTIFFCompressionJPEG, 0.5F);
    Bytes file{data.bytes()};
    const auto tiff = opened(file);
    EXPECT_EQ(field<std::uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH), 3U);
    EXPECT_EQ(field<std::uint16_t>(tiff.get(), TIFFTAG_COMPRESSION), COMPRESSION_NONE);
    EXPECT_EQ(TIFFReadDirectory(tiff.get()), 1);
    EXPECT_EQ(field<std::uint32_t>(tiff.get(), TIFFTAG_IMAGEWIDTH), 4U);
    EXPECT_EQ(pixelsOf(tiff.get()).size(), 12U);
    EXPECT_EQ(TIFFLastDirectory(tiff.get()), 1);
}

TEST(NSBitmapImageRepTest, TakesWhatIsWhole) {
    const Bitmap whole = *image(10, 10, BitmapColors::RGB, BitmapAlpha::last, 16, 8);
    const auto with = [&](auto change) {
        auto changed = std::make_shared<Bitmap>(whole);
        change(*changed);
        return NSBitmapImageRep::initWithBitmap(changed) != nullptr;
    };
    EXPECT_TRUE(with([](Bitmap&) {}));
    EXPECT_FALSE(with([](Bitmap& image) { image.width = 0; }));
    EXPECT_FALSE(with([](Bitmap& image) { image.height = 0; }));
    EXPECT_FALSE(with([](Bitmap& image) { image.height = 11; }));
    EXPECT_FALSE(with([](Bitmap& image) { image.height = 0xFFFFFFFF; }));
    EXPECT_FALSE(with([](Bitmap& image) { image.width = 0xFFFFFFFF; }));
    EXPECT_FALSE(with([](Bitmap& image) { image.width = 12; }));
    EXPECT_FALSE(with([](Bitmap& image) { image.bitsPerSample = 32; }));
    EXPECT_FALSE(with([](Bitmap& image) { image.bytesPerRow = 79; }));
    EXPECT_FALSE(with([](Bitmap& image) { image.bytesPerRow = ~std::size_t{0}; }));
    EXPECT_FALSE(with([&](Bitmap& image) { image.data = image.data.subdataWithRange({0, 871}); }));
    EXPECT_FALSE(with([](Bitmap& image) { image.data = nullptr; }));
    EXPECT_FALSE(NSBitmapImageRep::initWithBitmap(nullptr));
}

TEST(NSImageTest, SizeInPoints) {
    EXPECT_EQ(sizeInPoints(3000, 1500, {300, 144}), (NSSize{720, 750}));
    EXPECT_EQ(sizeInPoints(10, 20, {0, -1}), (NSSize{10, 20}));
    NSImage picture;
    EXPECT_EQ(picture.size(), NSSize{});
    picture.addRepresentation(nullptr);
    picture.addRepresentation(
        NSBitmapImageRep::initWithBitmap(image(8, 6, BitmapColors::RGB, BitmapAlpha::none)));
    EXPECT_EQ(picture.size(), (NSSize{8, 6}));
    picture.setSize({0, 10});
    EXPECT_EQ(picture.size(), (NSSize{0, 10}));
    EXPECT_EQ(NSImage({1, 2}).size(), (NSSize{1, 2}));
}

} // namespace
} // namespace kelvo
