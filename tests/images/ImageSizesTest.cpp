#include "images/NSImageKelvoExtensions.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvo {
namespace {

using namespace NSImageKelvoExtensions;

BitmapRef pixels(std::uint32_t width, std::uint32_t height, BitmapAlpha alpha = BitmapAlpha::none) {
    Bitmap made{width, height, 8, 0, BitmapColors::RGB, alpha, nullptr};
    made.bytesPerRow = std::size_t{width} * samplesPerPixel(made);
    made.data = NSData::dataWithBytes(std::string(made.bytesPerRow * height, 'x'));
    return std::make_shared<const Bitmap>(made);
}

/// As PDF is one.
class Drawing : public NSImageRep {
public:
    Drawing() : NSImageRep({612, 792}, 0, 0) {}
    bool isVector() const override { return true; }
    bool hasAlpha() const override { return false; }
    BitmapRef pixelsForSize(NSSize, ImageGround) const override { return nullptr; }
};

TEST(ImageSizesTest, Thumbs) {
    constexpr NSSize box{256, 256};
    const struct {
        const char* name;
        NSSize maximum, size, expected;
    } rows[] = {
        {"fits", box, {100, 50}, {100, 50}},
        {"fits in fractions", box, {100.5F, 255.9F}, {100.5F, 255.9F}},
        {"fits exactly", box, {256, 256}, {256, 256}},
        {"as high, in fractions", {100, 50.5F}, {10.5F, 50.5F}, {10.5F, 50.5F}},
        {"as wide, in fractions", {50.5F, 100}, {50.5F, 10.5F}, {50.5F, 10.5F}},
        {"nothing fits", box, {0, 0}, {0, 0}},
        {"wide", box, {1000, 500}, {256, 128}},
        {"high", box, {500, 1000}, {128, 256}},
        {"square", box, {300, 300}, {256, 256}},
        {"a line", box, {10000, 1}, {256, 1}},
        {"a line upright", box, {1, 10000}, {1, 256}},
        {"rounded down", box, {256.5F, 10}, {256, 9}},
        {"a box that is high", {100, 400}, {1000, 3000}, {100, 300}},
        {"a box that is wide", {400, 100}, {3000, 1000}, {300, 100}},
        {"a box in fractions", {99.5F, 400}, {199, 100}, {99, 50}},
        {"no box", {0, 0}, {10, 10}, {1, 1}},
        {"negative", box, {300, -5}, {256, 1}},
        {"no number", box, {std::numeric_limits<float>::quiet_NaN(), 5}, {256, 1}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(thumb_forSize(row.maximum, row.size), row.expected) << row.name;
}

TEST(ImageSizesTest, Scales) {
    EXPECT_EQ(scale_forSize(0.5F, {3, 3}), (NSSize{1, 1}));
    EXPECT_EQ(scale_forSize(0.1F, {3, 30}), (NSSize{0, 3}));
    EXPECT_EQ(scale_forSize(2, {1.75F, 3}), (NSSize{3, 6}));
    for (const float factor : {0.0F, -1.0F, std::numeric_limits<float>::quiet_NaN()})
        EXPECT_EQ(scale_forSize(factor, {3.5F, 3}), (NSSize{3.5F, 3}));
}

TEST(ImageSizesTest, OfImages) {
    NSImage picture;
    EXPECT_EQ(pixelSize(picture), NSSize{});
    EXPECT_EQ(aspectRatio(picture), 0);
    picture.addRepresentation(std::make_shared<Drawing>());
    EXPECT_EQ(pixelSize(picture), (NSSize{612, 792}));
    picture.addRepresentation(NSBitmapImageRep::initWithBitmap(pixels(100, 9)));
    picture.addRepresentation(NSBitmapImageRep::initWithBitmap(pixels(512, 50)));
    picture.addRepresentation(NSBitmapImageRep::initWithBitmap(pixels(512, 60)));
    picture.addRepresentation(NSBitmapImageRep::initWithBitmap(pixels(100, 300)));
    EXPECT_EQ(pixelSize(picture), (NSSize{512, 50}));
    EXPECT_EQ(scaledSize(picture, 0.5F), (NSSize{256, 25}));
    EXPECT_FLOAT_EQ(aspectRatio(picture), 612.0F / 792);
    EXPECT_FALSE(picture.scalesWhenResized());
    scaleToThumbSize(picture, {256, 256});
    EXPECT_TRUE(picture.scalesWhenResized());
    EXPECT_EQ(picture.size(), (NSSize{256, 25}));
    EXPECT_EQ(thumbSize(picture, {128, 128}), (NSSize{128, 12}));
}

TEST(ImageContentsTest, AlphaAndValidity) {
    EXPECT_TRUE(hasAlpha(*imageWithBitmap(pixels(2, 2, BitmapAlpha::last))));
    EXPECT_TRUE(hasAlpha(*imageWithBitmap(pixels(2, 2, BitmapAlpha::premultipliedLast))));
    EXPECT_FALSE(hasAlpha(*imageWithBitmap(pixels(2, 2, BitmapAlpha::skipLast))));
    const auto opaque = imageWithBitmap(pixels(2, 2));
    EXPECT_FALSE(hasAlpha(*opaque) || hasAlpha(NSImage()));
    EXPECT_TRUE(isReallyValid(*opaque));
    opaque->addRepresentation(std::make_shared<Drawing>());
    EXPECT_TRUE(hasAlpha(*opaque));
    opaque->setSize({0, 10});
    EXPECT_FALSE(isReallyValid(*opaque) || isReallyValid(NSImage({10, 10})));
}

TEST(ImageContentsTest, OfADecodedImage) {
    const BitmapRef decoded = pixels(30, 20);
    const auto image = imageWithBitmap(decoded);
    EXPECT_EQ(image->size(), (NSSize{30, 20}));
    ASSERT_EQ(image->representations().size(), 1U);
    EXPECT_TRUE(data(dynamic_cast<const NSBitmapImageRep&>(*image->representations()[0]))
                    .isIdenticalTo(decoded->data));

    EXPECT_FALSE(imageWithBitmap(nullptr) || imageWithBitmap(pixels(0, 5)) || imageWithBitmap(pixels(5, 0)));
    const auto broken = std::make_shared<Bitmap>(*decoded);
    broken->height = 21;
    EXPECT_EQ(imageWithBitmap(broken)->size(), (NSSize{30, 21}));
    EXPECT_FALSE(isReallyValid(*imageWithBitmap(broken)));
}

} // namespace
} // namespace kelvo
