#include "platform/imageio/CGImageDestination.h"

#include "TestPictures.h"
#include "platform/imageio/CGImageSource.h"
#include "platform/imageio/ImageEngine.h"
#include "platform/ledger/RequestNotes.h"

#include <array>
#include <cmath>
#include <string>

namespace kelvo {
namespace {

using namespace tests;

NSDictionary quality(double value) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithDouble(value), kCGImageDestinationLossyCompressionQuality}});
}

/// What stands in the middle of each quarter once it has been written and read again.
std::array<Color, 4> readBack(const NSData& file) {
    const CGImage image =
        CGImageSourceCreateImageAtIndex(CGImageSourceCreateWithData(file, nullptr), 0, nullptr);
    std::array<Color, 4> found{};
    if (image.width() == 64 && image.height() == 48)
        found = {pixelAt(image, 16, 12), pixelAt(image, 48, 12), pixelAt(image, 16, 36),
                 pixelAt(image, 48, 36)};
    return found;
}

TEST(CGImageDestinationTest, WhatIsWrittenIsReadAgain) {
    const CGImage opaque = thumbnailOf(pictureFile(".png", 64, 48, "RGBW"));
    const CGImage pierced = thumbnailOf(pictureFile(".png", 64, 48, "Rr.K"));
    const std::array<Color, 4> colors{
        {{255, 0, 0, 255}, {0, 255, 0, 255}, {0, 0, 255, 255}, {255, 255, 255, 255}}};
    const std::array<Color, 4> holes{{{255, 0, 0, 255}, {255, 0, 0, 128}, {0, 0, 0, 0}, {0, 0, 0, 255}}};
    const std::array<Color, 4> onWhite{
        {{255, 0, 0, 255}, {255, 127, 127, 255}, {255, 255, 255, 255}, {0, 0, 0, 255}}};
    struct Row {
        const char* name;
        const char16_t* type;
        const std::array<Color, 4>& pierced;
        int tolerance;
    };
    const Row rows[] = {
        {"PNG", u"public.png", holes, 0},
        {"JPEG", u"public.jpeg", onWhite, 3},
        {"BMP", u"com.microsoft.bmp", onWhite, 1},
        {"JPEG 2000", u"public.jpeg-2000", holes, 3},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const NSData file = dataOfImage(opaque, row.type, nullptr);
        const CGImageSource source = CGImageSourceCreateWithData(file, nullptr);
        EXPECT_EQ(CGImageSourceGetType(source), NSString(row.type));
        EXPECT_EQ(CGImageSourceGetStatus(source), kCGImageStatusComplete);
        const std::array<Color, 4> found = readBack(file);
        const std::array<Color, 4> seen = readBack(dataOfImage(pierced, row.type, nullptr));
        for (std::size_t quarter = 0; quarter < 4; ++quarter) {
            EXPECT_LE(distance(found[quarter], colors[quarter]), row.tolerance) << quarter;
            EXPECT_LE(distance(seen[quarter], row.pierced[quarter]), row.tolerance) << quarter;
        }
    }
    // A pixel of a GIF is seen or not, and no colour is hidden in one that is not.
    const std::array<Color, 4> gif = readBack(dataOfImage(pierced, u"com.compuserve.gif", nullptr));
    EXPECT_EQ(gif[0], holes[0]);
    EXPECT_EQ(gif[2][3], 0);
    EXPECT_EQ(gif[3], holes[3]);
}

TEST(CGImageDestinationTest, Quality) {
    const CGImage image = thumbnailOf(pictureFile(".png", 64, 48, "RGBW"));
    for (const char16_t* const type : {u"public.jpeg", u"public.jpeg-2000"}) {
        const std::size_t low = dataOfImage(image, type, quality(0)).length();
        const std::size_t high = dataOfImage(image, type, quality(0.9)).length();
        EXPECT_GT(low, 0U);
        EXPECT_LT(low, high);
        EXPECT_EQ(dataOfImage(image, type, quality(-3)).length(), low);
        EXPECT_EQ(dataOfImage(image, type, quality(7)), dataOfImage(image, type, quality(1)));
        EXPECT_FALSE(dataOfImage(image, type, quality(std::nan(""))).isNil());
    }
    EXPECT_EQ(described(CGImageSourceCreateImageAtIndex(
                            CGImageSourceCreateWithData(dataOfImage(image, u"public.jpeg-2000", quality(1)),
                                                        nullptr),
                            0, nullptr),
                        0),
              "64x48 RGBW");
}

TEST(CGImageDestinationTest, ResolutionIsAPointForEachPixel) {
    const CGImage image = thumbnailOf(pictureFile(".png", 64, 48, "RGBW"));
    for (const char16_t* const type : {u"public.png", u"public.jpeg"}) {
        const NSDictionary properties = CGImageSourceCopyPropertiesAtIndex(
            CGImageSourceCreateWithData(dataOfImage(image, type, nullptr), nullptr), 0, nullptr);
        const NSNumber* const resolution = properties.objectForKey(kCGImagePropertyDPIWidth).numberIfAny();
        ASSERT_TRUE(resolution) << NSString(type).UTF8String();
        EXPECT_NEAR(resolution->doubleValue(), 72, 0.1);
    }
}

TEST(CGImageDestinationTest, WhatCannotBeWritten) {
    const CGImage image = thumbnailOf(pictureFile(".png", 8, 8, "RGBW"));
    const pid_t engine = ImageEngine::sharedEngine().processIdentifier();
    const std::size_t tooLong = 70000;
    const CGImage wide(tooLong, 1, kCGImageAlphaLast,
                       NSData::dataWithBytesNoCopy(std::string(tooLong * 4, 'x')));
    struct Row {
        const char* name;
        const CGImage& image;
        const char16_t* type;
        const char* sentence;
    };
    const CGImage none;
    const Row rows[] = {
        {"no image", none, u"public.png", ""},
        {"no type", image, nullptr, ""},
        {"a type that is not written here", image, u"public.tiff", ""},
        {"a type that is none", image, u"", ""},
        {"too wide for the format", wide, u"public.jpeg", "the image cannot be written in this format"},
        {"too wide for another", wide, u"com.compuserve.gif", "the image cannot be written in this format"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const RequestNotes notes;
        EXPECT_TRUE(dataOfImage(row.image, row.type ? NSString(row.type) : NSString(), nullptr).isNil());
        EXPECT_EQ(notes.sentence().isNil() ? "" : notes.sentence().UTF8String(), row.sentence);
    }
    EXPECT_FALSE(dataOfImage(wide, u"public.png", nullptr).isNil());
    EXPECT_EQ(ImageEngine::sharedEngine().processIdentifier(), engine);
}

} // namespace
} // namespace kelvo
