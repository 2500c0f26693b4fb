#include "images/NSImageKelvoExtensions.h"
#include "platform/appkit/images/NSCachedImageRep.h"
#include "support/Pictures.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvo {
namespace {

using namespace NSImageKelvoExtensions;
using tests::Letters;
using tests::picture;

/// As a PDF is one: red on the left, nothing on the right. One that is out of order cannot be drawn.
class Drawing : public NSImageRep {
public:
    explicit Drawing(bool works = true) : NSImageRep({4, 2}, 0, 0), works_(works) {}
    bool isVector() const override { return true; }
    bool hasAlpha() const override { return true; }
    BitmapRef pixelsForSize(NSSize pixels, ImageGround) const override {
        if (!works_)
            return nullptr;
        const auto half = static_cast<std::size_t>(pixels.width / 2);
        return picture(Letters(static_cast<std::size_t>(pixels.height),
                               std::string(half, 'R') + std::string(half, '.')));
    }

private:
    bool works_;
};

std::shared_ptr<NSImage> imageOf(const Letters& rows) {
    auto image = imageWithBitmap(picture(rows));
    image->setScalesWhenResized(true);
    return image;
}

std::shared_ptr<NSImage> imageOf(std::shared_ptr<NSImageRep> rep) {
    auto image = std::make_shared<NSImage>();
    image->addRepresentation(std::move(rep));
    return image;
}

/// What the only representation shows.
Letters shown(const std::shared_ptr<NSImage>& image) {
    if (!image || image->representations().size() != 1)
        return {"no image of one representation"};
    const auto& rep = image->representations().front();
    if (const auto cached = std::dynamic_pointer_cast<NSCachedImageRep>(rep))
        return tests::lettersOf(cached->bitmap());
    return tests::lettersOf(std::dynamic_pointer_cast<NSBitmapImageRep>(rep)->bitmap());
}

TEST(ScaledImagesTest, WhatIsDrawn) {
    const auto onBlue = imageOf({"rR", ".R"});
    onBlue->setBackgroundColor({0, 0, 1, 1});
    const auto opaqueOnBlue = imageOf({"RG"});
    opaqueOnBlue->setBackgroundColor({0, 0, 1, 1});
    const auto unscaled = imageWithBitmap(picture({"RG"}));
    unscaled->setSize({4, 2});
    const struct {
        const char* name;
        std::shared_ptr<NSImage> image;
        NSSize size;
        NSRect part;
        Letters expected;
    } rows[] = {
        {"as it is", imageOf({"RG", "BW"}), {2, 2}, {}, {"RG", "BW"}},
        {"larger", imageOf({"R"}), {3, 2}, {}, {"RRR", "RRR"}},
        {"smaller", imageOf({"RRGG", "RRGG", "BBWW", "BBWW"}), {2, 2}, {}, {"RG", "BW"}},
        {"a size in fractions", imageOf({"R"}), {1.5F, 0.5F}, {}, {"RR"}},
        {"alpha on nothing", imageOf({"r."}), {2, 1}, {}, {"r."}},
        {"alpha on the background", onBlue, {2, 2}, {}, {"vR", "BR"}},
        {"no alpha", opaqueOnBlue, {2, 1}, {}, {"RG"}},
        {"a description, on white", imageOf(std::make_shared<Drawing>()), {4, 1}, {}, {"RRWW"}},
        {"nothing", std::make_shared<NSImage>(), {2, 1}, {}, {".."}},
        {"a part, from below", imageOf({"RG", "BW"}), {1, 1}, {{1, 0}, {1, 1}}, {"W"}},
        {"a part from above, larger", imageOf({"RG", "BW"}), {2, 1}, {{0, 1}, {1, 1}}, {"RR"}},
        {"a part that passes the edge", imageOf({"RG"}), {3, 1}, {{0, 0}, {3, 1}}, {"RG."}},
        {"a part of a description", imageOf(std::make_shared<Drawing>()), {2, 1}, {{1, 0}, {2, 1}}, {"RW"}},
        {"a part with alpha", onBlue, {1, 1}, {{0, 1}, {1, 1}}, {"v"}},
        {"what does not scale", unscaled, {4, 2}, {{0, 0}, {4, 2}}, {"....", "RG.."}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(shown(initWithImage_fromRect_size(*row.image, row.part, row.size)), row.expected)
            << row.name;

    // Two representations: the description is drawn, whatever came later.
    const auto both = imageOf(std::make_shared<Drawing>());
    both->addRepresentation(NSBitmapImageRep::initWithBitmap(picture({"GGGG", "GGGG"})));
    EXPECT_EQ(shown(initWithImage_size(*both, {4, 2})), (Letters{"RRWW", "RRWW"}));
    EXPECT_EQ(both->backgroundColor(), (NSColor{0, 0, 0, 0}));
}

TEST(ScaledImagesTest, WhatCannotBeDrawn) {
    const float none = std::numeric_limits<float>::quiet_NaN();
    const auto image = imageOf({"R"});
    for (const NSSize size : {NSSize{0, 5}, NSSize{5, -1}, NSSize{none, 5}, NSSize{40'000, 1},
                              NSSize{20'000, 20'000}, NSSize{std::numeric_limits<float>::infinity(), 1}}) {
        EXPECT_TRUE(TIFFRepresentationWithSize(*image, size).isNil());
        EXPECT_FALSE(bitmapImageWithSize_cachedSeparately(*image, size, true));
    }
    const auto broken = imageOf(std::make_shared<Drawing>(false));
    EXPECT_TRUE(TIFFRepresentationWithSize(*broken, {4, 2}).isNil());
    EXPECT_TRUE(broken->TIFFRepresentation().isNil());
    EXPECT_FALSE(NSGraphicsContext::currentContext());
}

TEST(ScaledImagesTest, TheFamily) {
    const auto image = imageOf({"RGRGRGRG", "GRGRGRGR"});
    constexpr NSSize size{3, 1};
    constexpr NSRect part{{0, 0}, {2, 2}};
    const auto careful = imageWithSize_shouldAntialias_interpolation_cachedSeparately(
        *image, size, true, NSImageInterpolationHigh, true);
    const auto careless = imageWithSize_shouldAntialias_interpolation_cachedSeparately(
        *image, size, false, NSImageInterpolationNone, false);
    const NSData plain = initWithImage_size(*image, size)->TIFFRepresentation();
    EXPECT_EQ(shown(careless).front().find_first_not_of("RG"), std::string::npos);
    EXPECT_EQ(shown(careful).front(), "???");
    EXPECT_TRUE(careful->isCachedSeparately());
    EXPECT_FALSE(careless->isCachedSeparately() || initWithImage_size(*image, size)->isCachedSeparately());

    const auto bitmap = bitmapImageWithSize_shouldAntialias_interpolation_cachedSeparately(
        *image, size, true, NSImageInterpolationHigh, true);
    EXPECT_TRUE(isBitmapImage(*bitmap) && bitmap->isCachedSeparately());
    EXPECT_FALSE(isBitmapImage(*careful));
    EXPECT_EQ(shown(bitmap), shown(careful));
    EXPECT_TRUE(isBitmapImage(*bitmapImageWithSize_cachedSeparately(*image, size, false)));

    const std::pair<NSData, NSData> data[] = {
        {TIFFRepresentationWithSize_shouldAntialias_interpolation_cachedSeparately(
             *image, size, true, NSImageInterpolationHigh, true),
         careful->TIFFRepresentation()},
        {TIFFRepresentationWithSize_shouldAntialias_interpolation_cachedSeparately(
             *image, size, false, NSImageInterpolationNone, false),
         careless->TIFFRepresentation()},
        {imageWithSize_cachedSeparately(*image, size, true)->TIFFRepresentation(), plain},
        {bitmapImageWithSize_cachedSeparately(*image, size, true)->TIFFRepresentation(), plain},
        {TIFFRepresentationWithSize(*image, size), plain},
        {TIFFRepresentationWithSize_cachedSeparately(*image, size, true), plain},
        {TIFFRepresentationWithSize_fromRect(*image, size, part),
         initWithImage_fromRect_size(*image, part, size)->TIFFRepresentation()},
        {TIFFRepresentationWithSize_fromRect_cachedSeparately(*image, size, part, true),
         initWithImage_fromRect_size(*image, part, size)->TIFFRepresentation()},
        {TIFFRepresentationFromRect(*image, part),
         initWithImage_fromRect(*image, part)->TIFFRepresentation()},
        {thumbForSize_cachedSeparately(*image, {4, 4}, true)->TIFFRepresentation(),
         TIFFRepresentationWithSize(*image, {4, 1})},
    };
    std::size_t index = 0;
    for (const auto& [left, right] : data)
        EXPECT_TRUE(left == right && !left.isNil()) << index++;
    EXPECT_TRUE(imageWithSize_cachedSeparately(*image, size, true)->isCachedSeparately());
    EXPECT_TRUE(initWithImage_fromRect_size_cachedSeparately(*image, part, size, true)->isCachedSeparately());
    EXPECT_EQ(initWithImage_fromRect(*image, part)->size(), part.size);
    const auto thumb = thumbForSize_shouldAntialias_interpolation_cachedSeparately(
        *image, {4, 4}, true, NSImageInterpolationHigh, true);
    EXPECT_EQ(thumb->size(), (NSSize{4, 1}));
    EXPECT_TRUE(thumb->isCachedSeparately());
}

TEST(ScaledImagesTest, Encodings) {
    const auto image = imageOf({"RG", "BW"});
    const auto& rep = dynamic_cast<const NSBitmapImageRep&>(*image->representations().front());
    const std::string beginnings[] = {"II*",          "BM",      "GIF8",
                                      "\xFF\xD8\xFF", "\x89PNG", std::string("\0\0\0\x0CjP", 6)};
    for (int type = 0; type < 6; ++type) {
        const NSData data = representationUsingType_compression(rep, type, 1);
        EXPECT_TRUE(data.characters().starts_with(beginnings[type])) << type;
        EXPECT_EQ(data, representationUsingType_compression(*image, type, 1)) << type;
        const auto read = NSImage::initWithData(data);
        ASSERT_TRUE(read) << type;
        if (type != NSJPEGFileType) {
            EXPECT_EQ(shown(read), (Letters{"RG", "BW"})) << type;
        }
    }
    EXPECT_TRUE(representationUsingType_compression(rep, 6, 1).isNil());
    EXPECT_TRUE(representationUsingType_compression(rep, -1, 1).isNil());
    const auto drawing = imageOf(std::make_shared<Drawing>());
    EXPECT_TRUE(representationUsingType_compression(*drawing, NSPNGFileType, 1).isNil());
    drawing->addRepresentation(image->representations().front());
    EXPECT_EQ(representationUsingType_compression(*drawing, NSPNGFileType, 1),
              representationUsingType_compression(rep, NSPNGFileType, 1));

    // Of what was downloaded until now all rows must be there.
    const NSData png =
        representationUsingType_compression(*imageOf(Letters(64, std::string(64, 'R'))), NSPNGFileType, 1);
    const NSData bmp =
        representationUsingType_compression(*imageOf(Letters(64, std::string(64, 'R'))), NSBMPFileType, 1);
    const auto whole = initWithDownloadedData_cachedSeparately(png, true);
    ASSERT_TRUE(whole);
    EXPECT_TRUE(whole->isCachedSeparately());
    EXPECT_EQ(whole->size(), (NSSize{64, 64}));
    EXPECT_TRUE(initWithDownloadedData_cachedSeparately(png.subdataWithRange({0, png.length() - 12}), false));
    for (const NSData& part : {bmp.subdataWithRange({0, bmp.length() / 2}), png.subdataWithRange({0, 40}),
                               NSData::dataWithBytes("text"), NSData()})
        EXPECT_FALSE(initWithDownloadedData_cachedSeparately(part, false)) << part.length();
}

} // namespace
} // namespace kelvo
