#include "images/ImagePathExtensions.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using namespace NSImageKelvoExtensions;
using namespace std::string_literals;

TEST(ImagePathExtensionsTest, ForTypes) {
    const struct {
        NSString type, expected;
    } rows[] = {
        {nullptr, nullptr},
        {u"", nullptr},
        {u"'BMP '", u"bmp"},
        {u"'.SGI'", u"sgi"},
        {u"'FPix'", u"fpix"},
        {u"'XXXX'", nullptr},
        {u"'tiff'", nullptr},
        {u"'PDF'", u"'PDF'"},
        {u"PDF", u"PDF"},
        {u"a/b/c", u"a/b/c"},
        {u"image/png", u"png"},
        {u"text/html", u"html"},
        {u"image/", nullptr},
        {u"image/x", nullptr},
        {u"image/x-", nullptr},
        {u"image/x-a", nullptr},
        {u"image/x-freehand", u"fh"},
        {u"image/X-tga", u"X-tga"},
        {u"image/vnd.adobe.photoshop", u"psd"},
        {u"image/x-Portable-AnyMap", u"pnm"},
        {u"image/x-my-portable-bitmaps", u"pbm"},
        {u"image/svg+xml", u"svg+xml"},
        {u"image/a.b", u"b"},
        {u"image/post.script", u"script"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(pathExtensionForType(row.type), row.expected) << row.type.UTF8String();
    EXPECT_EQ(NSBitmapImageRepKelvoExtensions::pathExtensionForBitmapImageFileType(5), u"jp2");
    for (const int type : {-1, 6})
        EXPECT_TRUE(NSBitmapImageRepKelvoExtensions::pathExtensionForBitmapImageFileType(type).isNil());
}

TEST(ImagePathExtensionsTest, ForData) {
    const auto blanks = [](std::size_t count) { return std::string(count, ' '); };
    const struct {
        const char* name;
        std::string bytes;
        NSString expected;
    } rows[] = {
        {"none", "", nullptr},
        {"three bytes", "%PD", nullptr},
        {"four bytes", "%PDF", u"pdf"},
        {"three letters at the end", " %PD", nullptr},
        {"and a byte more", " %PD ", u"pdf"},
        {"the last place of three letters", blanks(1020) + "TIF" + blanks(9), u"tiff"},
        {"one place later", blanks(1021) + "TIF" + blanks(9), nullptr},
        {"GIF8 at the end", " GIF8", nullptr},
        {"GIF8 and a byte more", "GIF8 ", u"gif"},
        {"the last place of GIF8", blanks(1019) + "GIF8" + blanks(9), u"gif"},
        {"GIF8, one place later", blanks(1020) + "GIF8" + blanks(9), nullptr},
        {"PNG", "\x89PNG", u"png"},
        {"JFIF", "\xFF\xD8\xFF\xE0..JFIF", u"jpeg"},
        {"JPEG in letters", " JPEG", u"jpeg"},
        {"JPEG 2000", "\0\0\0\x14"s + "ftypjp2 ", u"jp2"},
        {"JPEG 2000, another last letter", "ftypjpx", u"jp2"},
        {"JPEG 2000, an earlier letter", "ftypjX2", nullptr},
        {"JPEG 2000, too short", "ftypjp", nullptr},
        {"JPEG 2000, a second beginning", "ftypftypjp2", u"jp2"},
        {"the last place of JPEG 2000", blanks(1017) + "ftypjp2" + blanks(9), u"jp2"},
        {"JPEG 2000, one place later", blanks(1018) + "ftypjp2" + blanks(9), nullptr},
        {"Photoshop", "Photoshop", u"psd"},
        {"Photoshop, another last letter", " PhotoshoX", u"psd"},
        {"Photoshop, too short", "Photosho", nullptr},
        {"Photoshop, an earlier letter", "PhotoshXp", nullptr},
        {"TIFF without text", "II*\0\10\0\0\0"s, nullptr},
        {"PDF before all, wherever it stands", "\x89PNG JFIF GIF89 %PDF ", u"pdf"},
        {"PNG before JPEG", "JFIF \x89PNG ", u"png"},
        {"JPEG before TIFF", "TIFF JPEG ", u"jpeg"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(pathExtensionForData(NSData::dataWithBytes(row.bytes)), row.expected) << row.name;
    EXPECT_TRUE(pathExtensionForData(nullptr).isNil());
}

} // namespace
} // namespace kelvo
