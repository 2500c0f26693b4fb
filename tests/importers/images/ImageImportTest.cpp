#include "importers/images/ImageImport.h"
#include "platform/imageio/TestPictures.h"
#include "support/Attributed.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace kelvo::importers {
namespace {

using tests::Attributed;
using tests::one;

using namespace std::string_literals;
using tests::pictureFile;
using tests::withMetadata;
using Values = std::vector<std::pair<std::string, std::string>>;

Attributed attributesOf(const std::string& file, std::string_view type = "public.jpeg") {
    // Where clocks without a zone are read.
    const tests::ScopedVariable zone("TZ", "Asia/Kolkata");
    return tests::attributesOf(importImage, file, type);
}

std::string photo(const Values& values, const char* format = ".jpg") {
    return withMetadata(pictureFile(format, 6, 4, "RGBW"), values);
}

/// As file managers write text into Exif: UTF-16 in bytes.
std::string wide(std::u16string_view text) {
    std::string bytes;
    for (const char16_t unit : text)
        bytes += std::to_string(unit & 0xFF) + ' ' + std::to_string(unit >> 8) + ' ';
    return bytes + "0 0";
}

TEST(ImageImport, SetsWhatAPhotographSays) {
    const Values values{{"Exif.Image.Make", "Okular "},
                        {"Exif.Image.Model", "O-7"},
                        {"Exif.Image.Software", "Firmware 1.2"},
                        {"Exif.Image.Orientation", "6"},
                        {"Exif.Image.XResolution", "300/1"},
                        {"Exif.Image.YResolution", "300/1"},
                        {"Exif.Image.ResolutionUnit", "2"},
                        {"Exif.Image.DateTime", "2020:03:01 10:00:00"},
                        {"Exif.Photo.OffsetTime", "Z"},
                        {"Exif.Photo.DateTimeOriginal", "2020:02:29 12:34:56"},
                        {"Exif.Photo.SubSecTimeOriginal", "25"},
                        {"Exif.Photo.OffsetTimeOriginal", "+02:00"},
                        {"Exif.Photo.ExifVersion", "48 50 51 49"},
                        {"Exif.Photo.ExposureTime", "1/250"},
                        {"Exif.Photo.FNumber", "28/10"},
                        {"Exif.Photo.ISOSpeedRatings", "400"},
                        {"Exif.Photo.FocalLength", "50/1"},
                        {"Exif.Photo.FocalLengthIn35mmFilm", "75"},
                        {"Exif.Photo.ApertureValue", "3/1"},
                        {"Exif.Photo.MaxApertureValue", "2/1"},
                        {"Exif.Photo.Flash", "65"},
                        {"Exif.Photo.MeteringMode", "5"},
                        {"Exif.Photo.WhiteBalance", "1"},
                        {"Exif.Photo.ExposureMode", "0"},
                        {"Exif.Photo.ExposureProgram", "3"},
                        {"Exif.Photo.LensModel", "O 50 mm"},
                        {"Exif.Photo.CameraOwnerName", "Ada"},
                        {"Exif.Photo.UserComment", "charset=Unicode Łódź"},
                        {"Exif.GPSInfo.GPSVersionID", "2 3 0 0"},
                        {"Exif.GPSInfo.GPSLatitude", "48/1 51/1 2772/100"},
                        {"Exif.GPSInfo.GPSLatitudeRef", "N"},
                        {"Exif.GPSInfo.GPSLongitude", "2/1 17/1 42/1"},
                        {"Exif.GPSInfo.GPSLongitudeRef", "W"},
                        {"Exif.GPSInfo.GPSAltitude", "35/1"},
                        {"Exif.GPSInfo.GPSAltitudeRef", "1"},
                        {"Exif.GPSInfo.GPSImgDirection", "1805/10"},
                        {"Exif.GPSInfo.GPSSpeed", "10/1"},
                        {"Exif.GPSInfo.GPSSpeedRef", "N"},
                        {"Iptc.Application2.ObjectName", "Under the bridge"},
                        {"Iptc.Application2.Headline", "Bridges"},
                        {"Iptc.Application2.Keywords", "tide"},
                        {"Iptc.Application2.Keywords", "quay"},
                        {"Iptc.Application2.City", "Port"},
                        {"Iptc.Application2.ProvinceState", "Shore"},
                        {"Iptc.Application2.CountryName", "Coast"},
                        {"Iptc.Application2.SubLocation", "Old quay"},
                        {"Iptc.Application2.SpecialInstructions", "Not before noon"},
                        {"Iptc.Application2.Credit", "The Agency"},
                        {"Xmp.dc.title", "lang=x-default Bridge"},
                        {"Xmp.dc.description", "lang=x-default A  bridge\nat low tide"},
                        {"Xmp.dc.creator", "Ada Lindqvist"},
                        {"Xmp.dc.rights", "lang=x-default © Ada"},
                        {"Xmp.xmp.Rating", "4"}};
    const Attributed expected{{"PixelWidth", "6"},
                              {"PixelHeight", "4"},
                              {"PixelCount", "24"},
                              {"Orientation", "1"},
                              {"ColorSpace", "RGB"},
                              {"BitsPerSample", "8"},
                              {"HasAlphaChannel", "0"},
                              {"ResolutionWidthDPI", "300"},
                              {"ResolutionHeightDPI", "300"},
                              {"AcquisitionMake", "Okular"},
                              {"AcquisitionModel", "O-7"},
                              {"Creator", "Firmware 1.2"},
                              {"ContentCreationDate", "2020-02-29 10:34:56 +0000"},
                              {"ContentModificationDate", "2020-03-01 10:00:00 +0000"},
                              {"EXIFVersion", "2.3.1"},
                              {"ExposureTimeSeconds", "0.004"},
                              {"ExposureTimeString", "1/250"},
                              {"FNumber", "2.8"},
                              {"ISOSpeed", "400"},
                              {"FocalLength", "50"},
                              {"FocalLength35mm", "75"},
                              {"Aperture", "3"},
                              {"MaxAperture", "2"},
                              {"FlashOnOff", "1"},
                              {"RedEyeOnOff", "1"},
                              {"MeteringMode", "Pattern"},
                              {"WhiteBalance", "1"},
                              {"ExposureMode", "0"},
                              {"ExposureProgram", "Aperture priority"},
                              {"LensModel", "O 50 mm"},
                              {"CameraOwner", "Ada"},
                              {"Comment", "Łódź"},
                              {"EXIFGPSVersion", "2.3.0.0"},
                              {"Latitude", "48.8577"},
                              {"Longitude", "-2.295"},
                              {"Altitude", "-35"},
                              {"ImageDirection", "180.5"},
                              {"Speed", "18.52"},
                              {"Title", "Bridge"},
                              {"Headline", "Bridges"},
                              {"Description", "A bridge at low tide"},
                              {"Keywords", "<tide><quay>"},
                              {"Authors", "<Ada Lindqvist>"},
                              {"Copyright", "© Ada"},
                              {"StarRating", "4"},
                              {"City", "Port"},
                              {"StateOrProvince", "Shore"},
                              {"Country", "Coast"},
                              {"NamedLocation", "Old quay"},
                              {"Instructions", "Not before noon"},
                              {"Publishers", "<The Agency>"}};
    const std::string file = photo(values);
    EXPECT_EQ(attributesOf(file), expected);
    const NSDictionary exact = attributesByImporter(importImage, NSData::dataWithBytes(file), "public.jpeg");
    const NSDate* const taken = exact.objectForKey(u"kMDItemContentCreationDate").dateIfAny();
    EXPECT_EQ(taken ? taken->timeIntervalSince1970() : 0, 1582972496.25);
}

TEST(ImageImport, UnderstandsEachFact) {
    struct Row {
        const char* name;
        Values values;
        const char* attribute;
        const char* expected;
    };
    const Row rows[] = {
        {"nothing is known", {}, "AcquisitionMake", "absent"},
        {"long exposure", {{"Exif.Photo.ExposureTime", "25/10"}}, "ExposureTimeString", "2.5"},
        {"no exposure", {{"Exif.Photo.ExposureTime", "0/1"}}, "ExposureTimeSeconds", "absent"},
        {"sensitivity of more than 16 bits",
         {{"Exif.Photo.ISOSpeedRatings", "65535"}, {"Exif.Photo.RecommendedExposureIndex", "102400"}},
         "ISOSpeed",
         "102400"},
        {"other metering", {{"Exif.Photo.MeteringMode", "255"}}, "MeteringMode", "absent"},
        {"latitude past the pole",
         {{"Exif.GPSInfo.GPSLatitude", "91/1 0/1 0/1"}, {"Exif.GPSInfo.GPSLatitudeRef", "N"}},
         "Latitude",
         "absent"},
        {"place in XMP", {{"Xmp.exif.GPSLatitude", "12,30.6S"}}, "Latitude", "-12.51"},
        {"nothing of a place in XMP", {{"Xmp.exif.GPSLatitude", "12,thirty"}}, "Latitude", "absent"},
        {"height in XMP",
         {{"Xmp.exif.GPSAltitude", "75/2"}, {"Xmp.exif.GPSAltitudeRef", "1"}},
         "Altitude",
         "-37.5"},
        {"zone of this machine",
         {{"Exif.Photo.DateTimeOriginal", "2020:02:29 12:34:56"}},
         "ContentCreationDate",
         "2020-02-29 07:04:56 +0000"},
        {"zone that is none",
         {{"Exif.Photo.DateTimeOriginal", "2020:02:29 12:34:56"}, {"Exif.Photo.OffsetTimeOriginal", "home"}},
         "ContentCreationDate",
         "2020-02-29 07:04:56 +0000"},
        {"clock that was not set",
         {{"Exif.Photo.DateTimeOriginal", "0000:00:00 00:00:00"}},
         "ContentCreationDate",
         "absent"},
        {"one time only",
         {{"Exif.Image.DateTime", "2020:02:29 12:34:56"}},
         "ContentCreationDate",
         "2020-02-29 07:04:56 +0000"},
        {"date in IPTC",
         {{"Iptc.Application2.DateCreated", "2020-02-29"},
          {"Iptc.Application2.TimeCreated", "12:34:56-03:00"}},
         "ContentCreationDate",
         "2020-02-29 15:34:56 +0000"},
        {"date in XMP",
         {{"Xmp.photoshop.DateCreated", "2020-02-29T12:34:56Z"}},
         "ContentCreationDate",
         "2020-02-29 12:34:56 +0000"},
        {"title of a file manager", {{"Exif.Image.XPTitle", wide(u"Łódź")}}, "Title", "Łódź"},
        {"keywords of a file manager",
         {{"Exif.Image.XPKeywords", wide(u"tide; quay;")}},
         "Keywords",
         "<tide><quay>"},
        {"artists", {{"Exif.Image.Artist", "Ada Lindqvist;Per Ek"}}, "Authors", "<Ada Lindqvist><Per Ek>"},
        {"Latin 1", {{"Iptc.Application2.Headline", "Caf\xE9"}}, "Headline", "Café"},
        {"subjects in XMP before IPTC",
         {{"Iptc.Application2.Keywords", "old"}, {"Xmp.dc.subject", "new"}},
         "Keywords",
         "<new>"},
        {"one text in XMP", {{"Xmp.photoshop.CaptionWriter", "JCCC"}}, "Editors", "<JCCC>"},
        {"camera in XMP", {{"Xmp.tiff.Model", "N78"}}, "AcquisitionModel", "N78"},
        {"rejected", {{"Xmp.xmp.Rating", "-1"}}, "StarRating", "absent"},
        {"title of blanks", {{"Iptc.Application2.ObjectName", "   "}}, "Title", "absent"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(one(attributesOf(photo(row.values)), row.attribute), row.expected) << row.name;
}

TEST(ImageImport, KnowsThePixelsOfEachKind) {
    struct Row {
        const char* name;
        std::string file;
        const char* type;
        const char* expected; ///< width, height, portrait, colours, bits, alpha, pages
    };
    VipsImage* const tower = tests::quarters(4, 6, "RGBW");
    vips_image_set_int(tower, VIPS_META_PAGE_HEIGHT, 2);
    const std::string photograph = pictureFile(".jpg", 64, 48, "RGBW");
    const Row rows[] = {
        {"PNG with alpha", pictureFile(".png", 4, 6, "R.GB"), "public.png", "4 6 1 RGB 8 1 absent"},
        {"16 bits", "P5 3 2 65535\n" + std::string(12, '\x7F'), "public.pbm", "3 2 0 Gray 16 0 absent"},
        {"square", pictureFile(".jpg", 4, 4, "RGBW"), "public.jpeg", "4 4 0 RGB 8 0 absent"},
        {"on its side", photo({{"Exif.Image.Orientation", "8"}}), "public.jpeg", "6 4 1 RGB 8 0 absent"},
        {"TIFF", pictureFile(".tif", 6, 4, "RGBW"), "public.tiff", "6 4 0 RGB 8 0 absent"},
        {"pages", tests::saved(tower, ".tif"), "public.tiff", "4 2 0 RGB 8 0 3"},
        {"WebP", pictureFile(".webp[lossless]", 6, 4, "R.GB"), "org.webmproject.webp",
         "6 4 0 RGB 8 1 absent"},
        {"bitmap",
         "BM\x46\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\2\0\0\0\2\0\0\0\1\0\x18\0"s + std::string(40, '\0'),
         "com.microsoft.bmp", "2 2 0 RGB 8 0 absent"},
        {"targa with alpha", "\0\0\2\0\0\0\0\0\0\0\0\0\1\0\2\0\x20\x08"s + std::string(8, '\x7F'),
         "com.truevision.tga-image", "1 2 1 RGB 8 1 absent"},
        {"targa with alpha that is not used", "\0\0\2\0\0\0\0\0\0\0\0\0\1\0\1\0\x20\x08\x7F\x7F\x7F\0"s,
         "com.truevision.tga-image", "1 1 0 RGB 8 0 absent"},
        {"portable map", "P5 3 2 255\n123456", "public.pbm", "3 2 0 Gray 8 0 absent"},
        {"Photoshop",
         "8BPS\0\1\0\0\0\0\0\0\0\3\0\0\0\2\0\0\0\3\0\x08\0\3\0\0\0\0\0\0\0\0\0\0\0\0\0\1\0\2\0\2\0\2\0\2\0\2"
         "\0\2"
         "\xFE\x7F\xFE\x7F\xFE\x7F\xFE\x7F\xFE\x7F\xFE\x7F"s,
         "com.adobe.photoshop-image", "3 2 0 RGB 8 0 absent"},
        {"Photoshop, gray of 16 bits, only its head",
         "8BPS\0\1\0\0\0\0\0\0\0\1\0\0\0\3\0\0\0\2\0\x10\0\1\0\0\0\0\0\0\0\0\0\0\0\0\0\0"s,
         "com.adobe.photoshop-image", "2 3 1 Gray 16 0 absent"},
        {"cut off", photograph.substr(0, photograph.size() - 99), "public.jpeg", "64 48 0 RGB 8 0 absent"},
    };
    for (const Row& row : rows) {
        const Attributed found = attributesOf(row.file, row.type);
        std::string text;
        for (const char* const name : {"PixelWidth", "PixelHeight", "Orientation", "ColorSpace",
                                       "BitsPerSample", "HasAlphaChannel", "NumberOfPages"})
            text += (text.empty() ? "" : " ") + one(found, name);
        EXPECT_EQ(text, row.expected) << row.name;
    }
}

TEST(ImageImport, SaysWhatKeepsItFromReading) {
    const std::string cut = photo({{"Exif.Image.Make", "Okular"}});
    const std::size_t frame = cut.find("\xFF\xC0");
    ASSERT_NE(frame, cut.npos);
    struct Row {
        const char* name;
        std::string file;
        const char* type;
        Attributed expected;
    };
    const Row rows[] = {
        {"empty", "", "public.jpeg", {{"note", "broken: the file is no image that can be read"}}},
        {"text", "Dear Ada", "public.png", {{"note", "broken: the file is no image that can be read"}}},
        {"of no kind",
         "FORM\0\0\0\4ILBM",
         "public.image",
         {{"note", "unsupported: the file is no image that can be read"}}},
        {"a camera's, and empty",
         "IIRS",
         "com.olympus.raw-image",
         {{"note", "broken: the file does not say how large the image is"}}},
        {"ends before its size",
         cut.substr(0, frame),
         "public.jpeg",
         {{"AcquisitionMake", "Okular"},
          {"EXIFVersion", "2.1"},
          {"note", "broken: the image cannot be decoded"}}},
    };
    for (const Row& row : rows)
        EXPECT_EQ(attributesOf(row.file, row.type), row.expected) << row.name;
    const std::string boxPastTheEnd =
        pictureFile(".jp2[lossless]", 32, 32, "RGBW") + "\xFF\xFF\xFF\0uuidabcd"s;
    const Attributed found = attributesOf(boxPastTheEnd, "public.jpeg-2000");
    EXPECT_EQ(one(found, "PixelWidth"), "32");
    EXPECT_EQ(found.at("note"), "answered: what is written on the image cannot be read");
}

} // namespace
} // namespace kelvo::importers
