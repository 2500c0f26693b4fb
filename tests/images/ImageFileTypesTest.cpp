#include "images/ImageFileTypes.h"

#include "images/MIMETypeExtensions.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/Value.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {

namespace {

using namespace NSImageKelvoExtensions;
using namespace std::string_literals;

/// What the predicates say of an extension and a type code, a letter for each yes.
std::string verdict(const NSString& extension, const NSString& type = nullptr) {
    std::string yes;
    yes += isImageExtension_type(extension, type) ? "i" : "";
    yes += isPDFExtension_type(extension, type) ? "p" : "";
    yes += isRealPDFExtension_type(extension, type) ? "r" : "";
    yes += isPDFBundleExtension(extension) ? "b" : "";
    yes += isWebImageExtension(extension) ? "w" : "";
    return yes;
}

TEST(ImageFileTypesTest, ByExtensionAndTypeCode) {
    const struct {
        const char* name;
        NSString extension, type;
        const char* expected;
    } rows[] = {
        {"nothing", nullptr, nullptr, ""},
        {"empty", u"", u"", ""},
        {"decoder's", u"tIfF", nullptr, "i"},
        {"browser's", u"JPEG", nullptr, "iw"},
        {"browser's in capitals", u"Gif", nullptr, "iw"},
        {"the system's own JPEG", u"Jpe", nullptr, "iw"},
        {"PDF", u"Pdf", nullptr, "pr"},
        {"PostScript", u"pS", nullptr, "ip"},
        {"EPS", u"Eps", nullptr, "ip"},
        {"Illustrator", u"Ai", nullptr, "ip"},
        {"PDF in a folder", u"PdfD", nullptr, "b"},
        {"longer", u"jpegs", nullptr, ""},
        {"code of an image", u"txt", u"'TIFF'", "i"},
        {"code in other letters", u"txt", u"'tiff'", ""},
        {"code of PDF", nullptr, u"'PDF '", "pr"},
        {"code of PDF in small letters", nullptr, u"'pdf '", ""},
        {"PostScript by name, PDF by code", u"ps", u"'PDF '", "ipr"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(verdict(row.extension, row.type), row.expected) << row.name;
}

TEST(ImageFileTypesTest, ByPath) {
    EXPECT_TRUE(isPDFFile(u"/a.b/c.EPS") && isImageFile(u"/a.b/c.EPS") && !isRealPDFFile(u"/a.b/c.EPS"));
    EXPECT_TRUE(isRealPDFFile(u"c.PDF") && !isPDFFile(u"/a.pdf/c") && !isImageFile(u"/a.png/c"));
    EXPECT_TRUE(isPDFBundle(u"Report.PDFD") && !isPDFBundle(u"Report.pdfd.zip") && !isPDFBundle(nullptr));
    EXPECT_FALSE(isImageFile(nullptr) || isPDFFile(nullptr) || isRealPDFFile(nullptr) ||
                 isUTIImageFile(u"a.png"));

    const tests::TemporaryFolder folder;
    const NSString path = NSString::stringWithUTF8String(folder.write("paper.txt", "x"));
    EXPECT_FALSE(isPDFFile(path));
    const std::string beside =
        "\0\5\x16\7\0\2\0\0"s + std::string(16, '\0') + "\0\1\0\0\0\x09\0\0\0\x26\0\0\0\x20"s;
    folder.write("._paper.txt", beside + "PDF CARO" + std::string(24, '\0'));
    EXPECT_TRUE(isRealPDFFile(path) && isPDFFile(path) && !isImageFile(path));
    folder.write("._paper.txt", beside + "PNGfogle" + std::string(24, '\0'));
    EXPECT_TRUE(isImageFile(path) && !isPDFFile(path));
}

TEST(ImageFileTypesTest, ListsInOrder) {
    const NSArray types = ImageFileTypes();
    EXPECT_TRUE(types.isIdenticalTo(ImageFileTypes()));
    const std::size_t png = types.indexOfObject(u"png");
    ASSERT_LT(png + 2, types.count());
    EXPECT_EQ(types.objectAtIndex(png + 1), Value(u"PNG"));
    EXPECT_EQ(types.objectAtIndex(png + 2), Value(u"'PNGf'"));
    EXPECT_EQ(types.indexOfObject(u"ps"), types.count() - 6) << "the system's own stand last";
    EXPECT_EQ(PDFFileTypes().count(), 9U);
    EXPECT_EQ(PDFFileTypes().indexOfObject(u"'PDF '"), 0U);
    EXPECT_EQ(PDFBundleTypes().indexOfObject(u"PDFD"), 1U);
}

TEST(MIMETypeExtensionsTest, ByLists) {
    using namespace MIMETypeExtensions;
    const struct {
        NSString extension, expected, declared;
    } rows[] = {
        {nullptr, nullptr, nullptr},
        {u"", nullptr, nullptr},
        {u"PDF", u"application/pdf", u"application/pdf"},
        {u"eps", u"application/postscript", u"image/x-eps"},
        {u"Ai", u"application/postscript", u"application/postscript"},
        {u"JPG", u"image/jpeg", u"image/jpeg"},
        {u"Jpe", u"image/jpeg", u"image/jpeg"},
        {u"TiFF", u"image/TiFF", u"image/tiff"},
        {u"rA", u"audio/rA", u"audio/vnd.rn-realaudio"},
        {u"mp3", u"audio/mp3", u"audio/mpeg"},
        {u"Midi", u"audio/Midi", u"audio/midi"},
        {u"avi", u"video/avi", u"video/avi"},
        {u"divx", u"video/divx", u"video/divx"},
        {u"movie", u"video/movie", u"video/movie"},
        {u"viv", u"application/viv", u"application/viv"},
        {u"vi", nullptr, nullptr},
        {u"movies", nullptr, nullptr},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(MIMETypeOfMediaExtension(row.extension), row.expected) << row.extension.UTF8String();
        EXPECT_EQ(MIMETypeForExtension(row.extension), row.declared) << row.extension.UTF8String();
    }
    EXPECT_FALSE(isMultimediaType_audio_video_embedded(u"swf", true, true, false));
    EXPECT_FALSE(isMultimediaType_audio_video_embedded(u"mp3", false, true, true));
    EXPECT_EQ(extensionForMIMEType(u"image/JPEG"), u"jpeg");
    EXPECT_EQ(extensionForMIMEType(u"audio/mpeg3"), u"mp3");
    EXPECT_TRUE(extensionForMIMEType(u"image/none").isNil() && extensionForMIMEType(nullptr).isNil());
}

} // namespace
} // namespace kelvo
