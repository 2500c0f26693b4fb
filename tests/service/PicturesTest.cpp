#include "service/Pictures.h"

#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "protocol/ResultKeys.h"
#include "support/OfficeDocuments.h"
#include "support/PDFDocuments.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

/// The keys and those of their values that are short, without the picture's bytes.
std::string summary(const NSDictionary& result) {
    if (result.isNil())
        return "nil";
    std::string text;
    for (const auto& [key, value] : result) {
        text += key.string().UTF8String();
        if (value.isString())
            text += "=" + value.string().UTF8String();
        else if (const NSNumber* const number = value.numberIfAny())
            text += "=" + std::to_string(number->intValue());
        text += " ";
    }
    return text;
}

tests::PDFParts smallPages() {
    tests::PDFParts parts;
    parts.pages = {tests::pdfText("one", "F 12", 10), tests::pdfText("two", "F 12", 10)};
    parts.mediaBox = "[0 0 200 100]";
    parts.information = "/Title(T)";
    return parts;
}

TEST(PicturesTest, WhatIsSaidOfFiles) {
    const std::string pdf = tests::pdfDocument(smallPages());
    tests::PDFParts locked = smallPages();
    locked.trailerEntries = tests::pdfEncryption();
    tests::PDFParts byGhostscript = smallPages();
    byGhostscript.information = "/Producer(GPL Ghostscript)";
    const std::string eps = "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 0 0 512 30\n%%EndComments\n"
                            "/Helvetica findfont 12 scalefont setfont 5 5 moveto (in EPS) show showpage\n";
    const std::string drawn = "Size={200, 100} PixelSize={200, 100} Alpha=1 Thumbnail ";
    const std::string drawnEPS = "Size={512, 30} PixelSize={512, 30} Alpha=1 Thumbnail ";
    const struct {
        const char* name;
        const char* file;
        std::string contents;
        bool wantsText, mayUseImporters;
        std::string expected;
    } rows[] = {
        {"bitmap", "a.png", tests::smallPNG(), false, true, "Properties Thumbnail "},
        {"bitmap with text wanted", "a.png", tests::smallPNG(), true, true,
         "Size={1, 1} PixelSize={1, 1} Alpha=0 Thumbnail "},
        {"PDF", "a.pdf", pdf, false, true, drawn},
        {"PDF by an importer", "a.pdf", pdf, true, true, drawn + "String=imported PageCount=2 Title=T "},
        {"PDF by its pages", "a.pdf", pdf, true, false, drawn + "String=one\ntwo\n PageCount=2 Title=T "},
        {"PDF of Ghostscript's", "a.pdf", tests::pdfDocument(byGhostscript), true, true,
         drawn + "String=one\ntwo\n PageCount=2 Producer=GPL Ghostscript "},
        {"PDF of another name", "a.txt", pdf, false, true, drawn},
        {"locked", "a.pdf", tests::pdfDocument(locked), false, true, "nil"},
        {"locked with text wanted", "a.pdf", tests::pdfDocument(locked), true, true,
         "Locked=1 PageCount=2 Size={200, 100} PixelSize={200, 100} Alpha=0 "},
        {"locked of another name", "a.txt", tests::pdfDocument(locked), true, true, "nil"},
        {"EPS", "a.eps", eps, false, true, drawnEPS},
        {"EPS that breaks off", "a.eps", eps + "nonsense", false, true, drawnEPS},
        {"EPS that draws nothing", "a.eps", eps.substr(0, eps.find("/Helvetica")) + "nonsense", true, true,
         "nil"},
        {"text", "a.txt", "text", true, true, "nil"},
        {"no PDF", "a.pdf", "text", true, true, "nil"},
    };
    const tests::TemporaryFolder folder;
    for (const auto& row : rows) {
        const NSString path = NSString::stringWithUTF8String(folder.write(row.file, row.contents));
        EXPECT_EQ(summary(imageWithContentsOfFile(path, row.wantsText, row.mayUseImporters,
                                                  [](const NSString&) { return NSString(u"imported"); })),
                  row.expected)
            << row.name;
    }
    // The text of what has become a PDF is that of its pages.
    const NSDictionary converted =
        imageWithContentsOfFile(NSString::stringWithUTF8String(folder.write("a.eps", eps)), true, true,
                                [](const NSString&) { return NSString(u"imported"); });
    EXPECT_EQ(converted.objectForKey(ResultStringKey).string(), u"in EPS\n");

    const auto asPDF = [&](const char* file, const std::string& contents) {
        return PDFImageRepOfFile(NSString::stringWithUTF8String(folder.write(file, contents)));
    };
    EXPECT_EQ(asPDF("a.pdf", pdf), NSData::dataWithBytes(pdf));
    EXPECT_TRUE(asPDF("a.eps", eps).characters().starts_with("%PDF-"));
    EXPECT_EQ(asPDF("b.pdfd/b.pdf", pdf), NSData::dataWithBytes(pdf));
    EXPECT_EQ(PDFImageRepOfFile(NSString::stringWithUTF8String(folder.path("b.pdfd"))),
              NSData::dataWithBytes(pdf));
    for (const std::string& none :
         {tests::smallPNG(), tests::pdfDocument(locked), std::string("%!PS\nnonsense"), std::string()})
        EXPECT_TRUE(asPDF("a.pdf", none).isNil());
}

TEST(PicturesTest, WhyThereIsNone) {
    const tests::TemporaryFolder folder;
    tests::PDFParts locked = smallPages();
    locked.trailerEntries = tests::pdfEncryption();
    {
        RequestNotes notes;
        const std::string file = folder.write("locked.pdf", tests::pdfDocument(locked));
        EXPECT_TRUE(PDFImageRepOfFile(NSString::stringWithUTF8String(file)).isNil());
        EXPECT_EQ(notes.outcome(), Outcome::locked);
    }
    tests::PDFParts deadly = smallPages();
    deadly.pages = {"/Deadly cs 0.5 sc 0 0 9 9 re f"};
    const NSString path = NSString::stringWithUTF8String(folder.write("a.pdf", tests::pdfDocument(deadly)));
    RequestNotes notes;
    EXPECT_TRUE(imageWithContentsOfFile(path, false, true, nullptr).isNil());
    EXPECT_EQ(notes.outcome(), Outcome::crashed);
}

} // namespace
} // namespace kelvo
