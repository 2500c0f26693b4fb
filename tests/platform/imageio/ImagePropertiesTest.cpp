#include "platform/imageio/CGImageProperties.h"

#include "TestPictures.h"
#include "platform/foundation/propertylists/NSJSONSerialization.h"
#include "platform/imageio/engine/ContainerFacts.h"

#include <string>

namespace kelvo {
namespace {

using namespace tests;
using namespace std::string_literals;

NSDictionary propertiesOf(const std::string& file, std::size_t index = 0) {
    return CGImageSourceCopyPropertiesAtIndex(sourceOf(file), index, {});
}

/// The kinds of numbers show: 5.0 is no integer.
std::string json(const Value& value) {
    return std::string(NSJSONSerialization::dataWithJSONObject_options(value, {}).characters());
}

TEST(ImagePropertiesTest, MetadataByThePlatformsRules) {
    struct Row {
        const char* key;
        const char* value;
        const char16_t* group;
        const char16_t* name;
        const char* expected;
    };
    constexpr auto tiff = kCGImagePropertyTIFFDictionary;
    constexpr auto exif = kCGImagePropertyExifDictionary;
    constexpr auto gps = kCGImagePropertyGPSDictionary;
    constexpr auto iptc = kCGImagePropertyIPTCDictionary;
    const Row rows[] = {
        {"Exif.Image.Make", "Maker  ", tiff, u"Make", "\"Maker\""},
        {"Exif.Image.Artist", "Gr\xC3\xBC\xC3\x9F", tiff, u"Artist", "\"Gr\xC3\xBC\xC3\x9F\""},
        {"Exif.Image.Copyright", "\xA9 1999", tiff, u"Copyright", "\"\xC2\xA9 1999\""},
        {"Exif.Image.XResolution", "72/1", tiff, u"XResolution", "72.0"},
        {"Exif.Image.WhitePoint", "3127/10000 3290/10000", tiff, u"WhitePoint", "[0.3127,0.329]"},
        {"Exif.Photo.ExposureTime", "1/1000", exif, u"ExposureTime", "0.001"},
        {"Exif.Photo.FNumber", "5/1", exif, u"FNumber", "5.0"},
        {"Exif.Photo.ExposureBiasValue", "-1/3", exif, u"ExposureBiasValue", "-0.3333333333333333"},
        {"Exif.Photo.SubjectDistance", "0/0", exif, u"SubjectDistance", "null"},
        {"Exif.Photo.CompressedBitsPerPixel", "4294967295/2", exif, u"CompressedBitsPerPixel",
         "2147483647.5"},
        {"Exif.Photo.ISOSpeedRatings", "400", exif, u"ISOSpeedRatings", "[400]"},
        {"Exif.Photo.SubjectArea", "7 8 9", exif, u"SubjectArea", "[7,8,9]"},
        {"Exif.Photo.LensSpecification", "24/1 70/1 0/0 0/0", exif, u"LensSpecification",
         "[24.0,70.0,0.0,0.0]"},
        {"Exif.Photo.ExifVersion", "48 50 51 48", exif, u"ExifVersion", "[2,3]"},
        {"Exif.Photo.FlashpixVersion", "48 49 48 48", exif, u"FlashPixVersion", "[1,0]"},
        {"Exif.Photo.ComponentsConfiguration", "1 2 3 0", exif, u"ComponentsConfiguration", "[1,2,3,0]"},
        {"Exif.Photo.FileSource", "3", exif, u"FileSource", "3"},
        {"Exif.Photo.UserComment", "charset=Ascii A comment", exif, u"UserComment", "\"A comment\""},
        {"Exif.Photo.SubSecTimeOriginal", "07", exif, u"SubsecTimeOriginal", "\"07\""},
        {"Exif.Photo.FocalLengthIn35mmFilm", "50", exif, u"FocalLenIn35mmFilm", "50"},
        {"Exif.Photo.DateTimeDigitized", "2020:01:02 03:04:05", exif, u"DateTimeDigitized",
         "\"2020:01:02 03:04:05\""},
        {"Exif.GPSInfo.GPSVersionID", "2 3 0 0", gps, u"GPSVersion", "[2,3,0,0]"},
        {"Exif.GPSInfo.GPSLatitude", "43/1 28/1 168/10", gps, u"Latitude", "43.471333333333334"},
        {"Exif.GPSInfo.GPSLatitudeRef", "S", gps, u"LatitudeRef", "\"S\""},
        {"Exif.GPSInfo.GPSAltitudeRef", "1", gps, u"AltitudeRef", "1"},
        {"Exif.GPSInfo.GPSTimeStamp", "4/1 5/1 625/100", gps, u"TimeStamp", "\"04:05:06.25\""},
        {"Iptc.Application2.Caption", "A caption", iptc, u"Caption/Abstract", "\"A caption\""},
        {"Iptc.Application2.Keywords", "alone", iptc, u"Keywords", "[\"alone\"]"},
        {"Iptc.Application2.DateCreated", "2020-01-02", iptc, u"DateCreated", "\"20200102\""},
        {"Xmp.xmp.Rating", "4", iptc, u"StarRating", "4"},
        {"Xmp.aux.LensInfo", "24/1 70/1 28/10 28/10", kCGImagePropertyExifAuxDictionary, u"LensInfo",
         "[24.0,70.0,2.8,2.8]"},
    };
    std::vector<std::pair<std::string, std::string>> values;
    for (const Row& row : rows)
        values.emplace_back(row.key, row.value);
    const std::string plain = pictureFile(".jpg", 16, 16, "RGBW");
    const NSDictionary properties = propertiesOf(withMetadata(plain, values));
    for (const Row& row : rows)
        EXPECT_EQ(json(properties.objectForKey(row.group).dictionary().objectForKey(row.name)), row.expected)
            << row.key;
}

TEST(ImagePropertiesTest, TheTopLevel) {
    const std::string photograph = pictureFile(".jpg", 30, 20, "RGBW");
    const auto gray = [](VipsInterpretation kind, const char* format) {
        VipsImage* const colored = quarters(30, 20, "RGBW");
        VipsImage* plain = nullptr;
        EXPECT_EQ(vips_colourspace(colored, &plain, kind, nullptr), 0);
        g_object_unref(colored);
        return saved(plain, format);
    };
    VipsImage* const dense = quarters(30, 20, "RGB.");
    VipsImage* told = nullptr;
    ASSERT_EQ(vips_copy(dense, &told, "xres", 5.905, "yres", 5.905, nullptr), 0);
    g_object_unref(dense);
    struct Row {
        const char* name;
        std::string file;
        const char* expected;
    };
    const Row rows[] = {
        {"JPEG", photograph, R"({"PixelWidth":30,"PixelHeight":20,"Depth":8,"ColorModel":"RGB")"},
        {"grey", gray(VIPS_INTERPRETATION_B_W, ".jpg"),
         R"({"PixelWidth":30,"PixelHeight":20,"Depth":8,"ColorModel":"Gray")"},
        {"PNG of 16 bits", gray(VIPS_INTERPRETATION_GREY16, ".png"),
         R"({"PixelWidth":30,"PixelHeight":20,"Depth":16,"ColorModel":"Gray")"},
        {"orientation and centimetres",
         withMetadata(pictureFile(".png", 30, 20, "RGBW"), {{"Exif.Image.Orientation", "6"},
                                                            {"Exif.Image.XResolution", "100/1"},
                                                            {"Exif.Image.YResolution", "50/1"},
                                                            {"Exif.Image.ResolutionUnit", "3"}}),
         R"("Orientation":6,)"},
        {"centimetres",
         withMetadata(photograph, {{"Exif.Image.XResolution", "100/1"},
                                   {"Exif.Image.YResolution", "50/1"},
                                   {"Exif.Image.ResolutionUnit", "3"}}),
         R"("DPIWidth":254.0,"DPIHeight":127.0})"},
        {"an orientation that is none", withMetadata(photograph, {{"Exif.Image.Orientation", "9"}}),
         R"("PixelYDimension":20},"DPIWidth":25.4,"DPIHeight":25.4})"},
        {"metres, alpha", saved(told, ".png"),
         R"("HasAlpha":true,"{PNG}":{"InterlaceType":0,"XPixelsPerMeter":5905,)"},
        {"a profile", saved(quarters(8, 8, "RRRR"), ".jpg[profile=p3]"), R"("ProfileName":)"},
    };
    for (const Row& row : rows) {
        const std::string found = json(propertiesOf(row.file));
        EXPECT_NE(found.find(row.expected), found.npos) << row.name << ": " << found;
    }
}

TEST(ImagePropertiesTest, WhatContainersSay) {
    const std::string jfif = "\xFF\xD8\xFF\xE0\0\x10JFIF\0\1\2\2\0\x1C\0\x1D\0\0"s;
    const std::string animation = "GIF89a\4\0\3\0\x80\0\0\0\0\0\xFF\xFF\xFF\x21\xFF\x0BNETSCAPE2.0\3\1\7\0\0"
                                  "\x21\xF9\4\0\1\0\0\0\x2C\0\0\0\0\4\0\3\0\0\2\2\x44\x01\0"
                                  "\x21\xF9\4\0\x32\0\0\0\x2C\0\0\0\0\4\0\3\0\0\2\2\x44\x01\0\x3B"s;
    const std::string chunks = "\x89PNG\r\n\x1A\n\0\0\0\x0DIHDR\0\0\0\1\0\0\0\1\x08\0\0\0\1    "
                               "\0\0\0\4gAMA\0\0\xB1\x8F    \0\0\0\1sRGB\2    \0\0\0\x08"
                               "acTL\0\0\0\2\0\0\0\5    \0\0\0\x1A"s +
                               "fcTL\0\0\0\0\0\0\0\1\0\0\0\1\0\0\0\0\0\0\0\0\0\1\0\4\0\0    "s;
    EXPECT_EQ(json(groupOfJFIF(jfif + "\xFF\xC2\0\2"s).copy()),
              R"({"JFIFVersion":[1,0,2],"DensityUnit":2,"XDensity":28,"YDensity":29,"IsProgressive":true})");
    EXPECT_EQ(
        json(groupOfGIF(animation, 0).copy()),
        R"({"CanvasPixelWidth":4,"CanvasPixelHeight":3,"HasGlobalColorMap":true,"LoopCount":7,"DelayTime":0.1,)"
        R"("UnclampedDelayTime":0.01})");
    EXPECT_EQ(json(groupOfGIF(animation, 1).objectForKey(u"DelayTime")), "0.5");
    EXPECT_EQ(json(groupOfPNG(chunks, {{"Creation Time", "today"}, {"other", "x"}}).copy()),
              R"({"InterlaceType":1,"Gamma":0.45455,"sRGBIntent":2,"LoopCount":5,"DelayTime":0.25,)"
              R"("UnclampedDelayTime":0.25,"CreationTime":"today"})");
    // However much of them is there.
    for (std::size_t length = 0; length <= animation.size(); ++length) {
        groupOfGIF(animation.substr(0, length), 1);
        EXPECT_EQ(isCutOffGIF(animation.substr(0, length)), length < animation.size()) << length;
    }
    for (std::size_t length = 0; length < chunks.size(); ++length)
        groupOfPNG(std::string_view(chunks).substr(0, length), {});
    for (std::size_t length = 0; length < jfif.size(); ++length)
        groupOfJFIF(std::string_view(jfif).substr(0, length));
}

TEST(ImagePropertiesTest, SizesOfCamerasAreThoseOfTheSensor) {
    // A thumbnail at the beginning, what was seen, and a preview of it.
    const std::string file = withMetadata(pictureFile(".tif", 8, 6, "RGBW"),
                                          {{"Exif.Image.NewSubfileType", "1"},
                                           {"Exif.Image.DNGVersion", "1 4 0 0"},
                                           {"Exif.SubImage1.PhotometricInterpretation", "32803"},
                                           {"Exif.SubImage1.ImageWidth", "6000"},
                                           {"Exif.SubImage1.ImageLength", "4000"},
                                           {"Exif.SubImage2.PhotometricInterpretation", "6"},
                                           {"Exif.SubImage2.ImageWidth", "7000"},
                                           {"Exif.SubImage2.ImageLength", "5000"}});
    EXPECT_EQ(CGImageSourceGetType(sourceOf(file)), NSString(u"com.adobe.raw-image"));
    const NSDictionary properties = propertiesOf(file);
    EXPECT_EQ(json(properties.objectForKey(kCGImagePropertyPixelWidth)), "6000");
    EXPECT_EQ(json(properties.objectForKey(kCGImagePropertyPixelHeight)), "4000");
}

} // namespace
} // namespace kelvo
