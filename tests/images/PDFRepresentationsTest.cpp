#include "images/NSImageKelvoExtensions.h"
#include "platform/appkit/images/NSCachedImageRep.h"
#include "platform/foundation/Value.h"
#include "support/PDFDocuments.h"
#include "support/Pictures.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using tests::picture;

const std::string epsFile = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 10 10 30 20\n%%EndComments\n"
                            "1 0 0 setrgbcolor 10 10 10 10 rectfill showpage\n";

std::shared_ptr<NSPDFImageRep> somePDF(const std::string& mediaBox = "[0 0 20 10]") {
    tests::PDFParts parts;
    parts.pages = {"1 0 0 rg 0 0 10 10 re f"};
    parts.mediaBox = mediaBox;
    return NSPDFImageRep::imageRepWithData(NSData::dataWithBytes(tests::pdfDocument(parts)));
}

std::shared_ptr<NSEPSImageRep> someEPS() {
    return NSEPSImageRep::imageRepWithData(NSData::dataWithBytes(epsFile));
}

/// 'p', 'e', 'b' or 'c' each.
std::shared_ptr<NSImage> imageOfKinds(const char* kinds) {
    auto image = std::make_shared<NSImage>();
    for (; *kinds; ++kinds) {
        if (*kinds == 'p')
            image->addRepresentation(somePDF());
        else if (*kinds == 'e')
            image->addRepresentation(someEPS());
        else if (*kinds == 'b')
            image->addRepresentation(NSBitmapImageRep::initWithBitmap(picture({"R"})));
        else
            image->addRepresentation(NSCachedImageRep::imageRepWithBitmap(picture({"R"}), {1, 1}));
    }
    return image;
}

TEST(PDFRepresentationsTest, KindsByTheirOrder) {
    const struct {
        const char* kinds;
        bool isPDF, isEPS, isBitmap;
        const char16_t* extension;
    } rows[] = {
        {"", false, false, false, u"tiff"},  {"p", true, false, false, u"pdf"},
        {"b", false, false, true, u"tiff"},  {"c", false, false, false, u"tiff"},
        {"pb", false, false, false, u"pdf"}, {"pc", true, false, false, u"pdf"},
        {"cp", true, false, false, u"pdf"},  {"bp", false, false, false, u"pdf"},
        {"e", true, true, false, u"eps"},    {"ec", true, true, false, u"eps"},
        {"eb", true, false, false, u"eps"},  {"bc", false, false, true, u"tiff"},
        {"pe", true, false, false, u"pdf"},  {"bb", false, false, true, u"tiff"},
    };
    for (const auto& row : rows) {
        const auto image = imageOfKinds(row.kinds);
        EXPECT_EQ(isPDFImage(*image), row.isPDF) << row.kinds;
        EXPECT_EQ(isEPSImage(*image), row.isEPS) << row.kinds;
        EXPECT_EQ(isBitmapImage(*image), row.isBitmap) << row.kinds;
        EXPECT_FALSE(isPICTImage(*image));
        EXPECT_EQ(pathExtensionForBestRepresentation(*image), row.extension) << row.kinds;
        NSString extension;
        const NSData data = bestRepresentationAndFileExtension(*image, &extension);
        EXPECT_EQ(extension, row.extension);
        const std::string_view start = row.extension == std::u16string(u"pdf")   ? "%PDF"
                                       : row.extension == std::u16string(u"eps") ? "%!PS"
                                                                                 : "II*";
        EXPECT_TRUE(data.characters().starts_with(start) || !*row.kinds) << row.kinds;
    }
    // What was added later wins.
    const auto two = imageOfKinds("pp");
    EXPECT_EQ(PDFImageRep(*two), two->representations()[1]);
}

TEST(PDFRepresentationsTest, PostScriptBecomesPDFOnce) {
    const auto image = imageOfKinds("e");
    const auto eps = EPSImageRep(*image);
    EXPECT_EQ(eps->size(), (NSSize{20, 10}));
    EXPECT_FALSE(PDFImageRep(*image) || PDFImageRep(*eps));
    EXPECT_TRUE(PDFRepresentation(*eps).isNil());
    const auto pdf = initPDFImageRep(*eps);
    ASSERT_TRUE(pdf);
    EXPECT_EQ(PDFImageRep(*image), pdf);
    EXPECT_EQ(initPDFImageRep(*eps), pdf);
    EXPECT_TRUE(PDFRepresentation(*eps).characters().starts_with("%PDF"));
    EXPECT_EQ(pdf->size(), (NSSize{20, 10}));
    const auto drawn = bitmapImageWithSize_cachedSeparately(*image, {4, 2}, false);
    EXPECT_EQ(tests::lettersOf(dynamic_cast<const NSBitmapImageRep&>(*drawn->representations()[0]).bitmap()),
              (tests::Letters{"RRWW", "RRWW"}));

    const auto broken = NSEPSImageRep::imageRepWithData(
        NSData::dataWithBytes("%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 9 9\nnonsense\n"));
    ASSERT_TRUE(broken);
    EXPECT_FALSE(initPDFImageRep(*broken));
    EXPECT_FALSE(NSGraphicsContext::currentContext());
}

TEST(PDFRepresentationsTest, OfFiles) {
    const tests::TemporaryFolder folder;
    const auto image = [&](const std::string& contents) {
        return NSImage::initByReferencingFile(NSString::stringWithUTF8String(folder.write("file", contents)));
    };
    tests::PDFParts parts;
    parts.pages = {"", ""};
    parts.pageEntries = "/Rotate 90/CropBox[100 100 400 300]";
    const std::string pdf = tests::pdfDocument(parts);
    EXPECT_EQ(image(pdf)->size(), (NSSize{200, 300}));
    EXPECT_TRUE(isPDFImage(*image("junk\n" + pdf)));
    EXPECT_TRUE(isPDFImage(*image("%PQF-" + pdf.substr(5))));
    EXPECT_EQ(PDFImageRep(*image(pdf))->PDFRepresentation(), NSData::dataWithBytes(pdf));
    EXPECT_TRUE(isEPSImage(*image(epsFile + "%PDF-1.4")));
    parts.trailerEntries = tests::pdfEncryption();
    for (const std::string& none : {tests::pdfDocument(parts), tests::pdfDocument(tests::PDFParts()),
                                    std::string("text"), std::string()})
        EXPECT_FALSE(isReallyValid(*image(none))) << none.substr(0, 20);
    for (const char* box : {"[0 0 0 10]", "[0 0 nan 10]", "[0 0 1e30 1e30]"}) {
        const auto rep = somePDF(box);
        EXPECT_TRUE(!rep || rep->size().width > 0) << box;
    }
    EXPECT_FALSE(NSImage::initByReferencingFile(u"/none"));
    EXPECT_FALSE(NSImage::initWithData(nullptr));
}

TEST(PDFRepresentationsTest, PathsOfBundles) {
    const tests::TemporaryFolder folder;
    folder.write("Report.pdfd/Report.pdf", "");
    folder.write("Report.pdfd/A.pdf", "");
    folder.write("Report.PDFD/report.pdf", "");
    folder.write("scan.pdfd/._another.pdf", std::string("\0\5\x16\7\0\2\0\0", 8) + std::string(18, '\0'));
    folder.write("scan.pdfd/another.pdf", "");
    folder.write("scan.pdfd/notes.txt", "");
    folder.write("none.pdfd/notes.txt", "");
    const std::pair<const char*, const char*> rows[] = {
        {"Report.pdfd", "Report.pdfd/Report.pdf"}, {"Report.PDFD", "Report.PDFD/report.pdf"},
        {"scan.pdfd", "scan.pdfd/another.pdf"},    {"none.pdfd", "none.pdfd"},
        {"missing.pdfd", "missing.pdfd"},          {"Report.pdf", "Report.pdf"}};
    for (const auto& [path, expected] : rows)
        EXPECT_EQ(
            NSImageKelvoExtensions::pathToPDF(NSString::stringWithUTF8String(folder.path(path))).UTF8String(),
            folder.path(expected));
}

} // namespace
} // namespace kelvo
