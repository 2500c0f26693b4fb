#include "platform/imageio/CGImageSource.h"

#include "TestPictures.h"
#include "platform/imageio/ImageEngine.h"
#include "platform/imageio/engine/ImageKind.h"
#include "platform/ledger/RequestNotes.h"
#include "support/TemporaryFolder.h"

#include <csignal>
#include <string>

namespace kelvo {
namespace {

using namespace tests;
using namespace std::string_literals;

std::string jpeg(int width, int height, std::string_view colors) {
    return pictureFile(".jpg[Q=95,subsample_mode=off]", width, height, colors);
}

TEST(CGImageSourceTest, EveryOrientationComesUpright) {
    struct Row {
        const char* name;
        const char* orientation;
        const char* stored;
        bool isLying;
    };
    const Row rows[] = {
        {"upright", "1", "RGBW", false},
        {"mirrored", "2", "GRWB", false},
        {"upside down", "3", "WBGR", false},
        {"upside down, mirrored", "4", "BWRG", false},
        {"transposed", "5", "RBGW", true},
        {"to be turned right", "6", "GWRB", true},
        {"transposed the other way", "7", "WGBR", true},
        {"to be turned left", "8", "BRWG", true},
    };
    const std::string upright = "64x48 RGBW";
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const int width = row.isLying ? 48 : 64;
        const int height = row.isLying ? 64 : 48;
        const std::string stored = (row.isLying ? "48x64 "s : "64x48 "s) + row.stored;
        const std::vector<std::pair<std::string, std::string>> values{
            {"Exif.Image.Orientation", row.orientation}};
        const std::string small = jpeg(width, height, row.stored);
        const std::string bare = withMetadata(jpeg(width * 4, height * 4, row.stored), values);
        const std::string full = withMetadata(jpeg(width * 4, height * 4, "KKKK"), values, small);
        EXPECT_EQ(described(thumbnailOf(bare, {.most = 64, .upright = true})), upright) << "from the image";
        EXPECT_EQ(described(thumbnailOf(bare, {.most = 64})), stored) << "as it is stored";
        EXPECT_EQ(described(thumbnailOf(full, {.most = 64, .upright = true})), upright) << "embedded";
        const CGImageSource source = sourceOf(withMetadata(small, values));
        const CGImage whole = CGImageSourceCreateImageAtIndex(source, 0, optionsOf({.upright = true}));
        EXPECT_EQ(described(whole), upright) << "whole";
    }
}

/// Pages of 8 by 4 gray pixels, black in the quarter at the top left, white elsewhere, each with its orientation.
std::string tiffOfPages(const std::vector<int>& orientations) {
    std::string file = "II*\0"s;
    const auto put = [&](std::uint32_t number, std::size_t size) {
        for (std::size_t byte = 0; byte < size; ++byte)
            file += static_cast<char>(number >> (8 * byte));
    };
    constexpr std::uint32_t pixels = 32, entries = 10, sizeOfPage = pixels + 2 + entries * 12 + 4;
    for (std::size_t page = 0; page < orientations.size(); ++page) {
        const auto start = static_cast<std::uint32_t>(8 + page * sizeOfPage);
        if (page == 0)
            put(start + pixels, 4);
        const std::string black(4, '\0'), white(4, '\xFF');
        file += black + white + black + white + std::string(16, '\xFF');
        put(entries, 2);
        const std::pair<int, std::uint32_t> fields[] = {{256, 8},
                                                        {257, 4},
                                                        {258, 8},
                                                        {259, 1},
                                                        {262, 1},
                                                        {273, start},
                                                        {274, static_cast<std::uint32_t>(orientations[page])},
                                                        {277, 1},
                                                        {278, 4},
                                                        {279, pixels}};
        for (const auto& [tag, value] : fields) {
            put(static_cast<std::uint32_t>(tag), 2);
            put(4, 2);
            put(1, 4);
            put(value, 4);
        }
        put(page + 1 < orientations.size() ? start + sizeOfPage + pixels : 0, 4);
    }
    return file;
}

TEST(CGImageSourceTest, PagesAreTurnedEachByItself) {
    const CGImageSource source = sourceOf(tiffOfPages({1, 6, 3}));
    const char* const upright[] = {"8x4 KWWW", "4x8 WKWW", "8x4 WWWK"};
    for (std::size_t page = 0; page < std::size(upright); ++page) {
        EXPECT_EQ(described(CGImageSourceCreateImageAtIndex(source, page, optionsOf({.upright = true}))),
                  upright[page]);
        EXPECT_EQ(described(CGImageSourceCreateImageAtIndex(source, page, nullptr)), "8x4 KWWW");
    }
    const int orientations[] = {1, 6, 3};
    for (std::size_t page = 0; page < std::size(orientations); ++page)
        EXPECT_EQ(CGImageSourceCopyPropertiesAtIndex(source, page, nullptr)
                      .objectForKey(kCGImagePropertyOrientation),
                  Value(NSNumber::numberWithInt(orientations[page])));
}

// Their libraries turn them by what the container says, and hand them out upright whatever Exif says as well.
TEST(CGImageSourceTest, WhatItsLibraryTurnsIsTurnedOnce) {
    const auto integerIn = [](const NSDictionary& properties, const char16_t* key) {
        const NSNumber* const number = properties.objectForKey(key).numberIfAny();
        return number ? number->longLongValue() : -1;
    };
    VipsImage* const image = quarters(64, 32, "RGBW");
    vips_image_set_int(image, VIPS_META_ORIENTATION, 6);
    vips_image_set_string(image, "exif-ifd0-Orientation", "6");
    const CGImageSource source = sourceOf(saved(image, ".avif[lossless]"));
    const NSDictionary properties = CGImageSourceCopyPropertiesAtIndex(source, 0, nullptr);
    const NSDictionary written = properties.objectForKey(kCGImagePropertyTIFFDictionary).dictionary();
    EXPECT_EQ(integerIn(written, u"Orientation"), 6) << "as it stands in the file";
    EXPECT_EQ(integerIn(properties, kCGImagePropertyOrientation), 1);
    const CGImage whole = CGImageSourceCreateImageAtIndex(source, 0, optionsOf({.upright = true}));
    EXPECT_EQ(integerIn(properties, kCGImagePropertyPixelWidth), static_cast<long long>(whole.width()));
    EXPECT_EQ(integerIn(properties, kCGImagePropertyPixelHeight), static_cast<long long>(whole.height()));
}

TEST(CGImageSourceTest, WhichThumbnailIsTaken) {
    const std::string bare = jpeg(400, 300, "BBBB");
    const std::string small = withMetadata(bare, {}, jpeg(16, 12, "RRRR"));
    const std::string large = withMetadata(bare, {}, jpeg(200, 150, "RRRR"));
    const std::string broken = withMetadata(bare, {}, "\xFF\xD8\xFF\xE0 no picture");
    struct Row {
        const char* name;
        const std::string& file;
        ThumbnailWishes wishes;
        const char* expected;
    };
    const Row rows[] = {
        {"a small one is embedded", small, {}, "16x12 RRRR"},
        {"a large one is embedded", large, {.most = 100}, "100x75 RRRR"},
        {"embedded alone", small, {.ifAbsent = false}, "16x12 RRRR"},
        {"none is embedded", bare, {.ifAbsent = false}, "nil"},
        {"none is embedded, and it may be made", bare, {}, "256x192 BBBB"},
        {"always from the image", small, {.always = true}, "256x192 BBBB"},
        {"always, and not if absent", small, {.ifAbsent = false, .always = true}, "256x192 BBBB"},
        {"never larger than the image", bare, {.most = 1000}, "400x300 BBBB"},
        {"without a bound", bare, {.most = 0}, "400x300 BBBB"},
        {"what is embedded is broken", broken, {}, "256x192 BBBB"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(described(thumbnailOf(row.file, row.wishes)), row.expected) << row.name;
}

VipsImage* inBands(VipsImage* image, int first, int count) {
    VipsImage* part = nullptr;
    EXPECT_EQ(vips_extract_band(image, &part, first, "n", count, nullptr), 0);
    g_object_unref(image);
    return part;
}

VipsImage* sixteenBits(VipsImage* image) {
    VipsImage* wide = nullptr;
    VipsImage* told = nullptr;
    const double factor[]{257, 257, 257, 257};
    const double nothing[]{0, 0, 0, 0};
    EXPECT_EQ(vips_linear(image, &wide, factor, nothing, 4, nullptr), 0);
    g_object_unref(image);
    EXPECT_EQ(vips_cast_ushort(wide, &told, nullptr), 0);
    g_object_unref(wide);
    VipsImage* result = nullptr;
    EXPECT_EQ(vips_copy(told, &result, "interpretation", VIPS_INTERPRETATION_RGB16, nullptr), 0);
    g_object_unref(told);
    return result;
}

TEST(CGImageSourceTest, AlphaOfEachKind) {
    struct Row {
        const char* name;
        std::string file;
        const char* expected;
        bool hasAlpha;
    };
    const Row rows[] = {
        {"none", pictureFile(".png", 40, 40, "RGBW"), "40x40 RGBW", false},
        {"straight", pictureFile(".png", 40, 40, "Rr.W"), "40x40 Rr.W", true},
        {"16 bits", saved(sixteenBits(quarters(40, 40, "Rr.W")), ".png"), "40x40 Rr.W", true},
        {"beside grey", saved(inBands(quarters(40, 40, "W.WW"), 2, 2), ".png"), "40x40 W.WW", true},
        {"one colour of a palette", pictureFile(".png[palette]", 40, 40, "RG.W"), "40x40 RG.W", true},
        {"GIF", pictureFile(".gif", 40, 40, "RG.W"), "40x40 RG.W", true},
        {"WebP", pictureFile(".webp[lossless]", 40, 40, "Rr.W"), "40x40 Rr.W", true},
        {"TIFF", pictureFile(".tif", 40, 40, "Rr.W"), "40x40 Rr.W", true},
        {"shrunk", pictureFile(".png", 400, 400, "Rr.W"), "256x256 Rr.W", true},
    };
    for (const Row& row : rows) {
        const CGImage image = thumbnailOf(row.file);
        EXPECT_EQ(described(image), row.expected) << row.name;
        EXPECT_EQ(image.alphaInfo(), row.hasAlpha ? kCGImageAlphaLast : kCGImageAlphaNoneSkipLast)
            << row.name;
    }
}

/// One colour of sRGB in another profile, which is embedded.
std::string inProfile(const char* profile, const char* format, double red, double green, double blue) {
    VipsImage* const black = quarters(64, 64, "KKKK");
    const double color[]{red, green, blue};
    const double factor[]{0, 0, 0};
    VipsImage* plain = nullptr;
    VipsImage* converted = nullptr;
    EXPECT_EQ(vips_linear(black, &plain, factor, color, 3, "uchar", TRUE, nullptr), 0);
    EXPECT_EQ(vips_icc_transform(plain, &converted, profile, "input_profile", "srgb", nullptr), 0);
    g_object_unref(black);
    g_object_unref(plain);
    return saved(converted, format);
}

TEST(CGImageSourceTest, ColoursComeInStandardOnes) {
    // What lies between the two in CMYK is rounded.
    constexpr int tolerance = 8;
    struct Row {
        const char* name;
        std::string file;
        Color expected;
    };
    const std::string wide = inProfile("p3", ".jpg[Q=100]", 220, 40, 30);
    const std::string thumbnail = saved(
        [&] {
            // Cameras leave the profile out of their thumbnails.
            VipsImage* image = vips_image_new_from_buffer(wide.data(), wide.size(), "", nullptr);
            vips_image_remove(image, VIPS_META_ICC_NAME);
            return image;
        }(),
        ".jpg[Q=100,strip]");
    const Row rows[] = {
        {"wide gamut", wide, {220, 40, 30, 255}},
        {"wide gamut, embedded", withMetadata(wide, {}, thumbnail), {220, 40, 30, 255}},
        {"CMYK with a profile", inProfile("cmyk", ".jpg[Q=100]", 150, 110, 90), {150, 110, 90, 255}},
        {"CMYK in a TIFF", inProfile("cmyk", ".tif", 90, 120, 150), {90, 120, 150, 255}},
        {"CMYK without a profile",
         inProfile("cmyk", ".jpg[Q=100,strip]", 250, 250, 250),
         {250, 250, 250, 255}},
    };
    for (const Row& row : rows) {
        const CGImage image = thumbnailOf(row.file);
        ASSERT_FALSE(image.isNil()) << row.name;
        const Color found = pixelAt(image, 30, 30);
        EXPECT_LE(distance(found, row.expected), tolerance)
            << row.name << ": " << found[0] << ' ' << found[1] << ' ' << found[2];
    }
}

/// A lossless AVIF of one colour that says in numbers what its colours are.
std::string avifIn(char primaries, char transfer, double red, double green, double blue) {
    VipsImage* const black = quarters(64, 64, "KKKK");
    const double color[]{red, green, blue};
    const double factor[]{0, 0, 0};
    VipsImage* plain = nullptr;
    EXPECT_EQ(vips_linear(black, &plain, factor, color, 3, "uchar", TRUE, nullptr), 0);
    g_object_unref(black);
    std::string file = saved(plain, ".avif[lossless]");
    const std::size_t place = file.find("colrnclx");
    EXPECT_NE(place, file.npos);
    file[place + 9] = primaries;
    file[place + 11] = transfer;
    return file;
}

TEST(CGImageSourceTest, ColoursThatAreToldInNumbers) {
    constexpr char standard = 1;
    constexpr char wide = 9;
    constexpr char display = 12;
    constexpr char likeStandard = 13;
    constexpr char absolute = 16;
    constexpr char hybridLog = 18;
    struct Row {
        const char* name;
        std::string file;
        Color expected;
        int tolerance;
    };
    // What these numbers stand for is in ITU-R BT.2100: 203 nits are paper.
    const Row rows[] = {
        {"as in sRGB", avifIn(standard, likeStandard, 200, 100, 50), {200, 100, 50, 255}, 2},
        {"not said", avifIn(2, 2, 200, 100, 50), {200, 100, 50, 255}, 2},
        {"P3", avifIn(display, likeStandard, 213, 54, 43), {230, 27, 23, 255}, 12},
        {"grey in P3", avifIn(display, likeStandard, 120, 120, 120), {120, 120, 120, 255}, 2},
        {"black", avifIn(wide, absolute, 0, 0, 0), {0, 0, 0, 255}, 1},
        {"a tenth of paper", avifIn(wide, absolute, 91, 91, 91), {89, 89, 89, 255}, 4},
        {"paper", avifIn(wide, absolute, 148, 148, 148), {246, 246, 246, 255}, 6},
        {"the sun", avifIn(wide, absolute, 255, 255, 255), {255, 255, 255, 255}, 0},
        {"red", avifIn(wide, absolute, 91, 20, 20), {112, 0, 0, 255}, 10},
        {"paper, otherwise", avifIn(wide, hybridLog, 191, 191, 191), {246, 246, 246, 255}, 6},
        {"a quarter of paper", avifIn(wide, hybridLog, 128, 128, 128), {137, 137, 137, 255}, 6},
        {"the sun, otherwise", avifIn(wide, hybridLog, 255, 255, 255), {255, 255, 255, 255}, 1},
    };
    for (const Row& row : rows) {
        const CGImage image = thumbnailOf(row.file);
        ASSERT_FALSE(image.isNil()) << row.name;
        const Color found = pixelAt(image, 30, 30);
        EXPECT_LE(distance(found, row.expected), row.tolerance)
            << row.name << ": " << found[0] << ' ' << found[1] << ' ' << found[2];
    }
    // The same numbers by a profile.
    VipsImage* wideByProfile = nullptr;
    const std::string inNumbers = avifIn(display, likeStandard, 190, 120, 70);
    VipsImage* const whole = vips_image_new_from_buffer(inNumbers.data(), inNumbers.size(), "", nullptr);
    EXPECT_EQ(vips_copy(whole, &wideByProfile, nullptr), 0);
    g_object_unref(whole);
    VipsBlob* blob = nullptr;
    ASSERT_EQ(vips_profile_load("p3", &blob, nullptr), 0);
    std::size_t length = 0;
    const void* const profile = vips_blob_get(blob, &length);
    vips_image_set_blob_copy(wideByProfile, VIPS_META_ICC_NAME, profile, length);
    vips_area_unref(VIPS_AREA(blob));
    const std::string byProfile = saved(wideByProfile, ".png");
    EXPECT_LE(distance(pixelAt(thumbnailOf(byProfile), 30, 30), pixelAt(thumbnailOf(inNumbers), 30, 30)), 2);
}

std::string bigNumber(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8)
        bytes += static_cast<char>(value >> shift);
    return bytes;
}

/// 2 by 2 pixels, the upper ones red and green, the lower ones blue and white.
std::string bitmap(const std::string& head) {
    return head + "\x28\0\0\0\2\0\0\0\2\0\0\0\1\0\x18\0\0\0\0\0\x10\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"s +
           "\xFF\0\0\xFF\xFF\xFF\0\0"s + "\0\0\xFF\0\xFF\0\0\0"s;
}

TEST(CGImageSourceTest, FormatsThatAreReadOtherwise) {
    std::string icon = bitmap("");
    icon[8] = 4; // twice the height, for the mask, which hides the pixel at the bottom left
    const std::string folder =
        "\0\0\1\0\1\0\2\2\0\0\1\0\x18\0"s + "\x40\0\0\0\x16\0\0\0"s + icon + "\x80\0\0\0\0\0\0\0"s;
    // 16 by 16: runs of 8 within rows, each channel by itself.
    const auto plane = [](const char* quarters) {
        std::string packed;
        for (int row = 0; row < 16; ++row) {
            for (int half = 0; half < 2; ++half)
                packed += "\x85"s + (quarters[(row < 8 ? 0 : 2) + half] == '1' ? '\xFF' : '\0');
        }
        return packed;
    };
    const std::string packed = plane("1001") + plane("0101") + plane("0011");
    const std::string family = "is32" + bigNumber(static_cast<std::uint32_t>(packed.size() + 8)) + packed +
                               "s8mk" + bigNumber(264) + std::string(256, '\xFF');
    struct Row {
        const char* name;
        std::string file;
        const char16_t* type;
        const char* expected;
    };
    const Row rows[] = {
        {"BMP", bitmap("BM\x46\0\0\0\0\0\0\0\x36\0\0\0"s), u"com.microsoft.bmp", "2x2 RGBW"},
        {"TGA", "\0\0\2\0\0\0\0\0\0\0\0\0\2\0\2\0\x18\x20\0\0\xFF\0\xFF\0\xFF\0\0\xFF\xFF\xFF"s,
         u"com.truevision.tga-image", "2x2 RGBW"},
        {"PNM", "P6 2 2 255\n\xFF\0\0\0\xFF\0\0\0\xFF\xFF\xFF\xFF"s, u"public.pbm", "2x2 RGBW"},
        {"ICO", folder, u"com.microsoft.ico", "2x2 RG.W"},
        {"ICNS", "icns" + bigNumber(static_cast<std::uint32_t>(family.size() + 8)) + family,
         u"com.apple.icns", "16x16 RGBW"},
        {"SVG after a long comment",
         "<?xml version='1.0'?><!--" + std::string(2000, ' ') +
             "--><svg xmlns='http://www.w3.org/2000/svg' width='20' height='10'><rect width='20' height='10' "
             "fill='#0f0'/></svg>",
         u"public.svg-image", "20x10 GGGG"},
        {"WebP", pictureFile(".webp[lossless]", 8, 8, "RGBW"), u"org.webmproject.webp", "8x8 RGBW"},
        {"AVIF", pictureFile(".avif[lossless]", 64, 64, "RGBW"), u"public.avif", "64x64 RGBW"},
        {"JPEG 2000", pictureFile(".jp2[lossless]", 64, 64, "RGBW"), u"public.jpeg-2000", "64x64 RGBW"},
        {"JPEG 2000 in several sizes", pictureFile(".jp2[lossless]", 640, 480, "RGBW"), u"public.jpeg-2000",
         "256x192 RGBW"},
        {"JPEG XL", pictureFile(".jxl[lossless]", 64, 64, "RGBW"), u"public.jpeg-xl", "64x64 RGBW"},
    };
    for (const Row& row : rows) {
        const CGImageSource source = sourceOf(row.file, row.type);
        EXPECT_EQ(CGImageSourceGetType(source), NSString(row.type)) << row.name;
        EXPECT_EQ(described(CGImageSourceCreateThumbnailAtIndex(source, 0, optionsOf({}))), row.expected)
            << row.name;
    }
}

TEST(CGImageSourceTest, SeveralImagesInAFile) {
    VipsImage* pages[]{quarters(20, 20, "RRRR"), quarters(20, 20, "GGGG")};
    VipsImage* joined = nullptr;
    ASSERT_EQ(vips_arrayjoin(pages, &joined, 2, "across", 1, nullptr), 0);
    for (VipsImage* const page : pages)
        g_object_unref(page);
    VipsImage* strip = nullptr;
    ASSERT_EQ(vips_copy(joined, &strip, nullptr), 0);
    g_object_unref(joined);
    vips_image_set_int(strip, VIPS_META_PAGE_HEIGHT, 20);
    for (const char* const format : {".tif", ".gif", ".webp[lossless]"}) {
        g_object_ref(strip);
        const std::string file = saved(strip, format);
        EXPECT_EQ(CGImageSourceGetCount(sourceOf(file)), 2U) << format;
        EXPECT_EQ(described(thumbnailOf(file)), "20x20 RRRR") << format;
        EXPECT_EQ(described(thumbnailOf(file, {}, 1)), "20x20 GGGG") << format;
        EXPECT_TRUE(thumbnailOf(file, {}, 2).isNil()) << format;
    }
    g_object_unref(strip);
}

TEST(CGImageSourceTest, AllTypesOfTheTableCanBeRead) {
    const NSArray types = CGImageSourceCopyTypeIdentifiers();
    ASSERT_EQ(types.count(), imageKinds().size());
    for (std::size_t index = 0; index < types.count(); ++index)
        EXPECT_EQ(types.objectAtIndex(index).string(), NSString(imageKinds()[index].type));
}

TEST(CGImageSourceTest, AFileIsNotReadHere) {
    const TemporaryFolder folder;
    const std::string path = folder.write("picture.png", pictureFile(".png", 300, 300, "RGBW"));
    const NSData data = NSData::dataWithContentsOfFileWhenNeeded(NSString::stringWithUTF8String(path));
    const CGImageSource source = CGImageSourceCreateWithData(data, {});
    EXPECT_EQ(described(CGImageSourceCreateThumbnailAtIndex(source, 0, optionsOf({}))), "256x256 RGBW");
    EXPECT_TRUE(data.isUnread());
}

TEST(CGImageSourceTest, AnotherEngineGoesOn) {
    const CGImageSource source = sourceOf(pictureFile(".png", 30, 30, "RGBW"));
    ::kill(ImageEngine::sharedEngine().processIdentifier(), SIGKILL);
    // The first question may be the one that finds out.
    CGImageSourceCreateThumbnailAtIndex(source, 0, optionsOf({}));
    EXPECT_EQ(described(CGImageSourceCreateThumbnailAtIndex(source, 0, optionsOf({}))), "30x30 RGBW");
}

std::string largePNG(std::uint32_t width, std::uint32_t height) {
    const auto sum = [](std::string_view bytes) {
        std::uint32_t value = 0xFFFFFFFF;
        for (const char byte : bytes) {
            value ^= static_cast<unsigned char>(byte);
            for (int bit = 0; bit < 8; ++bit)
                value = value >> 1U ^ ((value & 1U) != 0 ? 0xEDB88320U : 0);
        }
        return bigNumber(~value);
    };
    const std::string head =
        "\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR"s + bigNumber(width) + bigNumber(height) + "\1\0\0\0\0"s;
    const std::string nothing = "IDAT\x78\x9C\x03\0\0\0\0\1"s;
    return head + sum(head.substr(12)) + bigNumber(8) + nothing + sum(nothing) +
           "\0\0\0\0IEND\xAE\x42\x60\x82"s;
}

/// 20,000 pixels on a side, up to the first pass.
std::string largeJPEG(char frame, char channelsOfPass) {
    return "\xFF\xD8\xFF\xFF"s + frame +
           "\0\x11\x08\x4E\x20\x4E\x20\3\1\x22\0\2\x11\0\3\x11\0\xFF\xDA\0\x0C"s + channelsOfPass +
           "\1\0\2\0\3\0\0\x3F\0"s;
}

TEST(CGImageSourceTest, WhatIsBrokenIsAnswered) {
    const TemporaryFolder folder;
    const std::string secret = folder.write("secret.png", pictureFile(".png", 8, 8, "RRRR"));
    const std::string whole = jpeg(400, 300, "RGRG");
    const std::string drawing =
        "<svg xmlns='http://www.w3.org/2000/svg' xmlns:xlink='http://www.w3.org/1999/xlink' "
        "width='10' height='10'><rect width='10' height='10' fill='#0f0'/>";
    struct Row {
        const char* name;
        std::string file;
        const char* expected;
        CGImageSourceStatus status;
        const char* sentence;
    };
    const Row rows[] = {
        {"nothing", "", "nil", kCGImageStatusInvalidData, ""},
        {"text", "Hello, world. This is no picture.", "nil", kCGImageStatusInvalidData,
         "it is no image of a kind that can be read"},
        {"a number for a picture of libvips", "2 2\n1 2\n3 4\n", "nil", kCGImageStatusInvalidData,
         "it is no image of a kind that can be read"},
        {"the beginning of a WebP", "RIFF\1\0", "nil", kCGImageStatusInvalidData,
         "it is no image of a kind that can be read"},
        {"two thousand million pixels on a side", largePNG(2000000000, 2000000000), "nil",
         kCGImageStatusComplete, "the image cannot be decoded"},
        {"60,000 pixels on a side", largePNG(60000, 60000), "nil", kCGImageStatusComplete,
         "the image has more pixels than are decoded"},
        {"the same in numbers that are too large", "P6 2000000000 2000000000 255\n" + std::string(99, 'x'),
         "nil", kCGImageStatusComplete, "the image cannot be decoded"},
        {"a large JPEG in passes", largeJPEG('\xC2', 3), "nil", kCGImageStatusIncomplete,
         "the image is stored in passes, and too large to be kept until the last"},
        {"a large JPEG, channel by channel", largeJPEG('\xC0', 1), "nil", kCGImageStatusIncomplete,
         "the image is stored in passes, and too large to be kept until the last"},
        {"half a JPEG", whole.substr(0, whole.size() / 2), "256x192 RG??", kCGImageStatusIncomplete,
         "the image is damaged, and may not be whole"},
        {"the head of a JPEG", whole.substr(0, 40), "nil", kCGImageStatusIncomplete,
         "the image cannot be decoded"},
        {"a picture of the disk in a drawing",
         drawing + "<image xlink:href='file://" + secret + "' width='10' height='10'/></svg>", "10x10 GGGG",
         kCGImageStatusComplete, ""},
        {"a drawing that uses itself", drawing + "<g id='a'><use xlink:href='#a'/></g></svg>", "10x10 GGGG",
         kCGImageStatusComplete, ""},
        {"icons behind the end", "\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\xFF\xFF\0\0\0\1\0\0"s, "nil",
         kCGImageStatusInvalidData, "it is no image of a kind that can be read"},
        {"an icon of icons", "\0\0\1\0\1\0\x10\x10\0\0\1\0\x20\0\x40\0\0\0\0\0\0\0"s, "nil",
         kCGImageStatusComplete, "the icon cannot be decoded"},
        {"half a family of icons", "icns\0\0\0\x40is32\0\0\0\x38"s + std::string(30, '\x85'), "16x16 ??KK",
         kCGImageStatusComplete, "the image is damaged, and may not be whole"},
        {"a family of icons of no length", "icns\0\0\0\x10is32\0\0\0\0"s, "nil", kCGImageStatusInvalidData,
         "it is no image of a kind that can be read"},
    };
    sourceOf(whole);
    const pid_t engine = ImageEngine::sharedEngine().processIdentifier();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const RequestNotes notes;
        const CGImageSource source = sourceOf(row.file);
        EXPECT_EQ(CGImageSourceGetStatus(source), row.status);
        EXPECT_EQ(described(CGImageSourceCreateThumbnailAtIndex(source, 0, optionsOf({}))), row.expected);
        EXPECT_EQ((notes.sentence().isNil() ? notes.sentenceOfResult() : notes.sentence()).UTF8String(),
                  row.sentence);
    }
    EXPECT_EQ(ImageEngine::sharedEngine().processIdentifier(), engine);
}

} // namespace
} // namespace kelvo
