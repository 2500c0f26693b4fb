#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/pdfkit/PDFDocument.h"
#include "support/PDFDocuments.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

namespace kelvo {
namespace {

using tests::pdfDocument;
using tests::PDFParts;

// Long enough for the start of an engine on a loaded machine.
constexpr double ample = 120;

/// A page of 100 by 200 points with red at the bottom left, a quarter of it wide and half of it high.
PDFParts redCorner(const char* pageEntries = "") {
    PDFParts parts;
    parts.pages = {"1 0 0 rg 0 0 25 100 re f"};
    parts.mediaBox = "[0 0 100 200]";
    parts.pageEntries = pageEntries;
    return parts;
}

PDFPage pageOf(const PDFParts& parts) {
    return PDFDocument::initWithData(NSData::dataWithBytes(pdfDocument(parts))).pageAtIndex(0);
}

/// Rows from the top, each pixel by its letter: "." nothing, "w" white, "r" red, "g" green, otherwise in full.
std::string describe(const CGImage& image) {
    if (image.isNil())
        return "(nil)";
    std::string text;
    const auto bytes = image.data().bytes();
    for (std::size_t at = 0; at < bytes.size(); at += CGImage::bytesPerPixel) {
        if (at > 0 && at % image.bytesPerRow() == 0)
            text += '/';
        char pixel[16];
        std::snprintf(pixel, sizeof pixel, "%02x%02x%02x%02x", bytes[at], bytes[at + 1], bytes[at + 2],
                      bytes[at + 3]);
        const std::string_view known[] = {"00000000.", "ffffffffw", "ff0000ffr", "00ff00ffg"};
        std::string letter = '[' + std::string(pixel) + ']';
        for (const std::string_view entry : known) {
            if (entry.starts_with(pixel))
                letter = entry.back();
        }
        text += letter;
    }
    return text;
}

std::string describe(NSSize size) {
    return NSStringFromSize(size).UTF8String();
}

TEST(PDFPageImageTest, ThePageStandsAsItIsRead) {
    struct Row {
        const char* name;
        PDFParts parts;
        const char* size;
        std::size_t width;
        std::size_t height;
        PDFPageGround ground;
        const char* pixels;
    };
    const auto white = PDFPageGround::white;
    const auto transparent = PDFPageGround::transparent;
    const Row rows[] = {
        {"upright", redCorner(), "{100, 200}", 4, 4, white, "wwww/wwww/rwww/rwww"},
        {"two scales", redCorner(), "{100, 200}", 8, 2, white, "wwwwwwww/rrwwwwww"},
        {"turned right", redCorner("/Rotate 90"), "{200, 100}", 4, 4, white, "rrww/wwww/wwww/wwww"},
        {"upside down", redCorner("/Rotate 180"), "{100, 200}", 4, 4, white, "wwwr/wwwr/wwww/wwww"},
        {"turned left", redCorner("/Rotate -90"), "{200, 100}", 4, 4, white, "wwww/wwww/wwww/wwrr"},
        {"cropped", redCorner("/CropBox[0 50 50 150]"), "{50, 100}", 4, 2, white, "wwww/rrww"},
        {"cropped and turned", redCorner("/CropBox[0 50 50 150]/Rotate 90"), "{100, 50}", 2, 4, white,
         "rw/rw/ww/ww"},
        {"on nothing", redCorner(), "{100, 200}", 4, 2, transparent, "..../r..."},
        {"half transparent",
         redCorner("/Annots[<</Type/Annot/Subtype/Square/Rect[50 0 100 200]/IC[0 1 0]/CA 0.5/BS<</W 0>>>>]"),
         "{100, 200}", 2, 2, transparent, ".[00ff0080]/r[00ff0080]"},
        {"multiplied with nothing",
         redCorner("/Annots[<</Type/Annot/Subtype/Highlight/Rect[0 0 100 200]/C[1 1 0]"
                   "/QuadPoints[-200 200 300 200 -200 0 300 0]>>]"),
         "{100, 200}", 1, 1, transparent, "[ffff00ff]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const PDFPage page = pageOf(row.parts);
        EXPECT_EQ(describe(page.sizeAsRead()), row.size);
        const CGImage image = page.imageOfSizeUsingTimeout(row.width, row.height, row.ground, ample);
        EXPECT_EQ(describe(image), row.pixels);
        EXPECT_EQ(image.alphaInfo(),
                  row.ground == transparent ? kCGImageAlphaLast : kCGImageAlphaNoneSkipLast);
    }
}

TEST(PDFPageImageTest, AbsurdBoxesAreDrawnOrLeft) {
    struct Row {
        const char* mediaBox;
        const char* pixels;
    };
    const Row rows[] = {
        {"[100 200 0 0]", "ww/rw"},
        {"[0 0 0 0]", "ww/ww"},
        {"[0 0 100 0]", "(nil) broken"},
        {"[0 0 0.001 0.001]", "(nil) broken"},
        {"[0 0 1000000000 1000000000]", "(nil) broken"},
        {"[0 0 99999999999999999999999999999999999999999 200]", "(nil) broken"},
        {"[-1000000000000000000000 0 1000000000000000000000 100]", "(nil) broken"},
        {"[nan 0 100 200]", "ww/ww"},
        {"[0 0]", "ww/ww"},
    };
    for (const Row& row : rows) {
        PDFParts parts = redCorner();
        parts.mediaBox = row.mediaBox;
        RequestNotes notes;
        std::string pixels =
            describe(pageOf(parts).imageOfSizeUsingTimeout(2, 2, PDFPageGround::white, ample));
        if (notes.outcome())
            pixels += " " + wordOfOutcome(*notes.outcome()).UTF8String();
        EXPECT_EQ(pixels, row.pixels) << row.mediaBox;
    }
}

TEST(PDFPageImageTest, WhatIsNotDrawn) {
    const PDFPage page = pageOf(redCorner());
    EXPECT_TRUE(page.imageOfSize(0, 1, PDFPageGround::white).isNil());
    EXPECT_TRUE(page.imageOfSize(1, 0, PDFPageGround::white).isNil());
    for (const auto& [width, height] :
         {std::pair<std::size_t, std::size_t>{10'001, 10'000}, {~std::size_t{0}, ~std::size_t{0}}}) {
        RequestNotes notes;
        EXPECT_TRUE(page.imageOfSize(width, height, PDFPageGround::white).isNil());
        EXPECT_EQ(notes.outcome(), Outcome::outOfMemory);
    }
    PDFParts locked = redCorner();
    locked.trailerEntries = tests::pdfEncryption();
    const PDFPage closed = pageOf(locked);
    EXPECT_TRUE(closed.imageOfSizeUsingTimeout(2, 2, PDFPageGround::white, ample).isNil());
    EXPECT_EQ(describe(closed.sizeAsRead()), "{0, 0}");
}

TEST(PDFPageImageTest, APageThatEndsTheEngineCostsNoOther) {
    const PDFDocument document = PDFDocument::initWithData(
        NSData::dataWithBytes(pdfDocument({"0 1 0 rg 0 0 612 792 re f", "/Deadly cs 0 0 612 792 re f"})));
    EXPECT_THROW(document.pageAtIndex(1).imageOfSizeUsingTimeout(1, 1, PDFPageGround::white, ample),
                 NSException);
    EXPECT_EQ(
        describe(document.pageAtIndex(0).imageOfSizeUsingTimeout(1, 1, PDFPageGround::transparent, ample)),
        "g");
}

} // namespace
} // namespace kelvo
