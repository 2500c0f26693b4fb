#include "platform/postscript/PostScriptPDF.h"

#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/pdfkit/PDFDocument.h"
#include "platform/postscript/PostScriptEngine.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <limits>
#include <string>

namespace kelvo {
namespace {

/// Red in the left half of the box.
constexpr const char* redHalf = "1 0 0 setrgbcolor 100 200 20 20 rectfill\n";

std::string encapsulated(const std::string& program) {
    return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: 100 200 140 220\n%%EndComments\n" + program;
}

// Long enough for the start of an engine on a loaded machine.
constexpr double ample = 120;

NSData pdfOf(const std::string& bytes, NSSize size = {40, 20}, double seconds = ample) {
    return PDFDataOfPostScript(NSData::dataWithBytes(bytes), size, seconds);
}

/// "40x20 r w", the page's size and the pixels of its two halves: red, green, white; "(nil)".
std::string picture(const NSData& pdf) {
    if (pdf.isNil())
        return "(nil)";
    const PDFDocument document = PDFDocument::initWithData(pdf);
    if (document.pageCount() != 1)
        return std::to_string(document.pageCount()) + " pages";
    const PDFPage page = document.pageAtIndex(0);
    const NSRect box = page.boundsForBox(kPDFDisplayBoxMediaBox);
    char text[64];
    std::snprintf(text, sizeof text, "%gx%g", box.size.width, box.size.height);
    std::string all = text;
    const CGImage image = page.imageOfSize(2, 1, PDFPageGround::white);
    const auto bytes = image.data().bytes();
    for (std::size_t at = 0; at < bytes.size(); at += CGImage::bytesPerPixel) {
        std::snprintf(text, sizeof text, "%02x%02x%02x", bytes[at], bytes[at + 1], bytes[at + 2]);
        const std::string color = text;
        all += color == "ff0000"   ? " red"
               : color == "00ff00" ? " green"
               : color == "ffffff" ? " white"
                                   : " " + color;
    }
    return all;
}

TEST(PostScriptPDFTest, TheFirstPageFillsTheSize) {
    const std::string binary = "\xC5\xD0\xD3\xC6" + std::string("\x1E\0\0\0", 4);
    const std::string program = encapsulated(redHalf) + "showpage\n";
    std::string length(4, '\0');
    length[0] = static_cast<char>(program.size() & 0xFF);
    length[1] = static_cast<char>(program.size() >> 8);
    std::string carriageReturns = program;
    std::replace(carriageReturns.begin(), carriageReturns.end(), '\n', '\r');
    const std::string plain = "%!PS\n1 0 0 setrgbcolor 0 0 306 792 rectfill showpage\n";
    struct Row {
        const char* name;
        std::string bytes;
        NSSize size;
        const char* picture;
    };
    const Row rows[] = {
        {"its own size", program, {40, 20}, "40x20 red white"},
        {"another size", program, {400, 50}, "400x50 red white"},
        {"CRs", carriageReturns, {40, 20}, "40x20 red white"},
        {"with previews",
         binary + length + std::string(18, '\0') + program + "II*",
         {40, 20},
         "40x20 red white"},
        {"without showpage", encapsulated(redHalf), {40, 20}, "40x20 red white"},
        {"two pages",
         program + "0 1 0 setrgbcolor 100 200 40 20 rectfill showpage",
         {40, 20},
         "40x20 red white"},
        {"pages without end", encapsulated("{ ") + redHalf + "showpage } loop", {40, 20}, "40x20 red white"},
        {"an error on a later page", program + "nosuchthing", {40, 20}, "40x20 red white"},
        {"says much",
         encapsulated("9999 { (%stderr) (w) file (no end of lines) writestring } repeat\n") + redHalf +
             "showpage",
         {40, 20},
         "40x20 red white"},
        {"asks for paper",
         encapsulated("<</PageSize [500 500]>> setpagedevice a4\n") + redHalf,
         {40, 20},
         "40x20 red white"},
        {"no box", plain, {612, 792}, "612x792 red white"},
        {"no box, scaled", plain, {61.2F, 79.2F}, "61.2x79.2 red white"},
        {"no box, paper of its own",
         "%!PS\n<</PageSize [300 100]>> setpagedevice 1 0 0 setrgbcolor 0 0 150 100 rectfill showpage",
         {300, 100},
         "300x100 red white"},
        {"no box, other paper in the midst of the page",
         "%!PS\n<</PageSize [400 400]>> setpagedevice 1 0 0 setrgbcolor 0 0 60 400 rectfill showpage",
         {300, 200},
         "300x200 red white"},
        {"no box, paper with a name",
         "%!PS\na4 1 0 0 setrgbcolor 0 0 297.5 842 rectfill showpage",
         {59.5F, 84.2F},
         "59.5x84.2 red white"},
        {"CMYK",
         encapsulated("0 1 1 0 setcmykcolor 100 200 20 20 rectfill showpage"),
         {40, 20},
         "40x20 ed1c24 white"},
        {"fonts of the system",
         encapsulated("/Helvetica findfont 20 scalefont setfont 1 0 0 setrgbcolor 100 200 20 20 rectfill"),
         {40, 20},
         "40x20 red white"},
    };
    for (const Row& row : rows) {
        RequestNotes notes;
        EXPECT_EQ(picture(pdfOf(row.bytes, row.size)), row.picture) << row.name;
        EXPECT_FALSE(notes.outcome()) << row.name << ": " << notes.sentence().UTF8String();
    }
}

TEST(PostScriptPDFTest, ProgramsThatFailSayWhy) {
    struct Row {
        const char* name;
        std::string program;
        Outcome outcome;
        const char* sentence;
    };
    const Row rows[] = {
        {"undefined", "nosuchthing showpage", Outcome::broken, "its program fails (undefined)"},
        {"syntax", ") showpage", Outcome::broken, "its program fails (syntaxerror)"},
        {"never closed", std::string(200'000, '{'), Outcome::broken, "its program fails (syntaxerror)"},
        {"calls itself", "/f { f f } def f", Outcome::broken, "its program fails (execstackoverflow)"},
        {"leaves", "quit", Outcome::nothing, "its program draws no page"},
        {"for ever", "{ { {} loop } stopped } loop", Outcome::timedOut,
         "reading it took more time than it may"},
#ifndef KELVO_SANITIZED
        // Sanitizers take too many addresses for themselves for a limit.
        {"without bounds", "/f { 3000000 1 8 [3000000 0 0 1 0 0] { f (x) } false 3 colorimage } def f",
         Outcome::outOfMemory, "reading it took more memory than it may"},
#endif
    };
    for (const Row& row : rows) {
        RequestNotes notes;
        const double seconds = row.outcome == Outcome::timedOut ? 2 : ample;
        EXPECT_TRUE(pdfOf(encapsulated(row.program), {40, 20}, seconds).isNil()) << row.name;
        EXPECT_EQ(notes.outcome(), row.outcome) << row.name;
        EXPECT_EQ(notes.sentence().UTF8String(), row.sentence) << row.name;
    }
    RequestNotes notes;
    EXPECT_TRUE(pdfOf("no program").isNil());
    EXPECT_EQ(notes.outcome(), Outcome::broken);
    const std::string head = encapsulated("");
    RequestNotes notesOfLong;
    EXPECT_TRUE(pdfOf(head + std::string(longestPostScript + 1 - head.size(), '\n')).isNil());
    EXPECT_EQ(notesOfLong.outcome(), Outcome::outOfMemory);
    for (const NSSize size : {NSSize{0, 10}, NSSize{10, -1},
                              NSSize{10, std::numeric_limits<float>::quiet_NaN()}, NSSize{1e9F, 10}})
        EXPECT_TRUE(pdfOf(encapsulated(redHalf), size).isNil());
}

TEST(PostScriptPDFTest, NoFileIsReadOrWritten) {
    const tests::TemporaryFolder folder;
    const std::string secret = folder.path("secret");
    const std::string made = folder.path("made");
    std::ofstream(secret) << "%!PS\n";
    struct Row {
        const char* name;
        std::string program;
        std::string wanted;
    };
    const Row rows[] = {
        {"read", "(" + secret + ") (r) file", secret},
        {"read by another name", "systemdict /file get /f exch def (" + secret + ") (r) f", secret},
        {"run", "(" + secret + ") run", secret},
        {"run of a library", "(" + secret + ") runlibfile", secret},
        {"written", "(" + made + ") (w) file (x) writestring", made},
        {"removed", "(" + secret + ") deletefile", secret},
        {"renamed", "(" + secret + ") (" + made + ") renamefile", secret},
        {"output of a program", "(%pipe%echo) (r) file", "%pipe%echo"},
        {"input of a program", "(%pipe%cat >" + made + ") (w) file closefile", "%pipe%cat >" + made},
        {"pages elsewhere", "<</OutputFile (" + made + ")>> systemdict /setpagedevice get exec", made},
        {"with leave of its own", "<</PermitFileReading [(*)]>> setuserparams (" + secret + ") (r) file",
         secret},
        {"with handlers of its own", "errordict /invalidfileaccess {} put (" + secret + ") (r) file foo",
         secret},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string sentence = "its program wanted a file that it may not have: " + row.wanted;
        {
            RequestNotes notes;
            EXPECT_TRUE(pdfOf(encapsulated(row.program)).isNil());
            EXPECT_EQ(notes.outcome(), Outcome::refused);
            EXPECT_EQ(notes.sentence().UTF8String(), sentence);
        }
        // A program that takes the refusal is answered, and does not hide it.
        RequestNotes notes;
        EXPECT_EQ(picture(pdfOf(encapsulated("{ " + row.program + " } stopped clear\n" + redHalf))),
                  "40x20 red white");
        EXPECT_EQ(notes.sentenceOfResult().UTF8String(), sentence);
        EXPECT_TRUE(std::filesystem::exists(secret));
        EXPECT_FALSE(std::filesystem::exists(made));
    }
}

TEST(PostScriptPDFTest, WhatAProgramLeavesBehindIsGone) {
    // From the second word on it works on the interpreter's own state, which it is not to restore.
    const std::string leaving =
        encapsulated("true () startjob pop\n"
                     "[ userdict statusdict globaldict ] { /left true put } forall\n");
    const std::string looking =
        encapsulated("[ userdict statusdict globaldict ] { /left known { nosuchthing } if } forall\n");
    EXPECT_EQ(picture(pdfOf(leaving + redHalf)), "40x20 red white");
    EXPECT_EQ(picture(pdfOf(looking + redHalf)), "40x20 red white");
    // The same within one program is noticed.
    EXPECT_TRUE(pdfOf(leaving + looking + redHalf).isNil());
}

} // namespace
} // namespace kelvo
