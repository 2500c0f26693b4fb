#include "platform/pdfkit/PDFDocument.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/pdfkit/PDFEngine.h"
#include "support/AttributedText.h"
#include "support/PDFDocuments.h"

#include <gtest/gtest.h>
#include <qpdf/qpdf-c.h>

#include <csignal>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include <sys/wait.h>

namespace kelvo {
namespace {

using tests::pdfDocument;
using tests::PDFParts;
using tests::pdfText;

// Long enough for the start of an engine on a loaded machine.
constexpr double ample = 120;

PDFDocument open(const std::string& bytes) {
    return PDFDocument::initWithData(NSData::dataWithBytes(bytes));
}

/// "(nil)" without text, or what was thrown.
std::string textOfPage(const PDFDocument& document, std::size_t page, double seconds = ample) {
    try {
        const NSString text = document.pageAtIndex(page).stringUsingTimeout(seconds);
        return text.isNil() ? "(nil)" : text.UTF8String();
    } catch (const NSException& exception) {
        return exception.name().UTF8String();
    }
}

std::string textOfPages(const PDFDocument& document) {
    std::string text;
    for (std::size_t page = 0; page < document.pageCount(); ++page)
        text += textOfPage(document, page) + "|";
    return text;
}

std::string encrypted(const std::string& bytes, const char* userPassword, qpdf_object_stream_e objects) {
    qpdf_data document = qpdf_init();
    EXPECT_EQ(qpdf_read_memory(document, "test", bytes.data(), bytes.size(), nullptr), QPDF_SUCCESS);
    EXPECT_EQ(qpdf_init_write_memory(document), QPDF_SUCCESS);
    qpdf_set_object_stream_mode(document, objects);
    qpdf_set_r6_encryption_parameters2(document, userPassword, "owner", QPDF_FALSE, QPDF_FALSE, QPDF_FALSE,
                                       QPDF_FALSE, QPDF_FALSE, QPDF_FALSE, qpdf_r3p_none, QPDF_TRUE);
    EXPECT_EQ(qpdf_write(document), QPDF_SUCCESS);
    const std::string result(reinterpret_cast<const char*>(qpdf_get_buffer(document)),
                             qpdf_get_buffer_length(document));
    qpdf_cleanup(&document);
    return result;
}

std::string describe(const NSRect& rect) {
    std::ostringstream out;
    out << rect.origin.x << ',' << rect.origin.y << ' ' << rect.size.width << 'x' << rect.size.height;
    return out.str();
}

bool engineMapsSealedMemory() {
    std::ifstream maps("/proc/" + std::to_string(PDFEngine::sharedEngine().processIdentifier()) + "/maps");
    const std::string all{std::istreambuf_iterator<char>(maps), {}};
    EXPECT_FALSE(all.empty());
    return all.find("/memfd:plumwick") != std::string::npos;
}

TEST(PDFDocumentTest, PagesAreReadInOrder) {
    const PDFDocument document = open(pdfDocument(
        {pdfText("below", "F 12", 600) + pdfText("above", "F 12", 700), "", pdfText("Gr\\374\\337e")}));
    ASSERT_FALSE(document.isNil());
    EXPECT_FALSE(document.isLocked());
    EXPECT_EQ(textOfPages(document), "above\n\nbelow|(nil)|Gr\u00FC\u00DFe|");
    EXPECT_THROW(document.pageAtIndex(3), NSException);
}

TEST(PDFDocumentTest, WhatADocumentSaysOfItself) {
    struct Row {
        const char* name;
        const char* information;
        const char* attributes;
    };
    const Row rows[] = {
        {"nothing", "", "(null)"},
        {"empty strings", "/Title()/Keywords( , )", "(null)"},
        {"strings", "/Title<FEFF04100042>/Author(A\\000)/Subject(S)/Creator(C)/Producer(P)",
         "Title=\u0410B Author=A Subject=S Creator=C Producer=P"},
        {"dates", "/CreationDate(D:20200102030405+01'00')/ModDate(D:1999)",
         "CreationDate=2020-01-02 02:04:05 +0000 ModDate=1999-01-01 00:00:00 +0000"},
        {"broken date", "/CreationDate(yesterday)/Title(T)", "Title=T"},
        {"keywords by commas", "/Keywords(one, two words ,,three)", "Keywords=[one][two words][three]"},
        {"keywords by semicolons", "/Keywords(Doe, Jane; two)", "Keywords=[Doe, Jane][two]"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        PDFParts parts;
        parts.pages = {""};
        parts.information = row.information;
        const NSDictionary attributes = open(pdfDocument(parts)).documentAttributes();
        std::string facts = attributes.isNil() ? "(null)" : "";
        for (const auto& [key, object] : attributes) {
            facts += (facts.empty() ? "" : " ") + key.string().UTF8String() + "=";
            for (const Value& element : object.array())
                facts += "[" + element.string().UTF8String() + "]";
            facts += object.isArray() ? "" : object.description().UTF8String();
        }
        EXPECT_EQ(facts, row.attributes);
    }
}

TEST(PDFDocumentTest, BoxesOfPages) {
    PDFParts parts;
    parts.pages = {pdfText("x")};
    parts.mediaBox = "[10 -20 110.5 280]";
    parts.pageEntries = "/CropBox[20 0 100 100]/Rotate 90";
    const PDFPage page = open(pdfDocument(parts)).pageAtIndex(0);
    EXPECT_EQ(describe(page.boundsForBox(kPDFDisplayBoxMediaBox)), "10,-20 100.5x300");
    EXPECT_EQ(describe(page.boundsForBox(kPDFDisplayBoxCropBox)), "20,0 80x100");
}

TEST(PDFDocumentTest, WhatIsNoPDFIsNil) {
    EXPECT_TRUE(PDFDocument::initWithData(nullptr).isNil());
    const std::string whole = pdfDocument({pdfText("x")});
    for (const std::string& bytes :
         {std::string(), std::string("%PDF-1.7"), std::string(100'000, 'x'), whole.substr(0, 200)}) {
        RequestNotes notes;
        EXPECT_TRUE(open(bytes).isNil()) << bytes.size();
        EXPECT_EQ(notes.outcome(), Outcome::broken);
    }
    EXPECT_TRUE(PDFDocument().documentAttributes().isNil());
    EXPECT_TRUE(PDFDocument().selectionForEntireDocument().attributedString().isNil());
}

TEST(PDFDocumentTest, OnlyWhatNeedsAKeyIsLocked) {
    PDFParts parts;
    parts.pages = {pdfText("one"), pdfText("two")};
    parts.information = "/Title(secret)";
    const std::string bytes = pdfDocument(parts);
    struct Row {
        const char* name;
        const char* userPassword;
        qpdf_object_stream_e objects;
        const char* facts;
    };
    const Row rows[] = {
        {"owner's key alone", "", qpdf_o_disable, "open 2 one|two| 0,0 612x792"},
        {"key to read it", "user", qpdf_o_disable, "locked 2 (nil)|(nil)| 0,0 612x792"},
        {"page count encrypted", "user", qpdf_o_generate, "locked 0 "},
    };
    for (const Row& row : rows) {
        const PDFDocument document = open(encrypted(bytes, row.userPassword, row.objects));
        ASSERT_FALSE(document.isNil()) << row.name;
        std::string facts = (document.isLocked() ? "locked " : "open ") +
                            std::to_string(document.pageCount()) + " " + textOfPages(document);
        if (document.pageCount() > 0)
            facts += " " + describe(document.pageAtIndex(0).boundsForBox(kPDFDisplayBoxMediaBox));
        EXPECT_EQ(facts, row.facts) << row.name;
        EXPECT_EQ(document.documentAttributes().isNil(), document.isLocked()) << row.name;
        EXPECT_EQ(document.selectionForEntireDocument().attributedString().isNil(), document.isLocked())
            << row.name;
    }
}

TEST(PDFDocumentTest, APageThatEndsTheEngineCostsNoOther) {
    const PDFDocument document = open(tests::pdfDocumentWithDeadlyPage());
    EXPECT_EQ(textOfPages(document), "one|two|EngineCrashedException|four|five|");

    RequestNotes notes;
    EXPECT_EQ(document.selectionForEntireDocument().attributedString().string().UTF8String(),
              "one\ftwo\ffour\ffive");
    EXPECT_EQ(notes.outcome(), Outcome::crashed);
    EXPECT_EQ(notes.sentenceOfResult().UTF8String(), "the text of page 3 is missing");
}

TEST(PDFDocumentTest, DocumentsAreOpenedAnewWhereTheEngineHasThemNoMore) {
    const PDFDocument first = open(pdfDocument({pdfText("a0"), pdfText("a1"), pdfText("a2")}));
    const PDFDocument second = open(pdfDocument({pdfText("b0"), pdfText("b1")}));
    EXPECT_EQ(textOfPage(first, 0), "a0");
    EXPECT_EQ(textOfPage(second, 1), "b1");
    EXPECT_EQ(textOfPage(first, 1), "a1");

    PDFEngine& engine = PDFEngine::sharedEngine();
    const pid_t stopped = engine.processIdentifier();
    ASSERT_EQ(::kill(stopped, SIGSTOP), 0);
    EXPECT_EQ(textOfPage(first, 2, 0.1), "EngineTimeoutException");
    EXPECT_EQ(textOfPage(first, 2), "a2");
    ASSERT_NE(engine.processIdentifier(), stopped);

    // Ended while nobody asked.
    const auto ended = static_cast<id_t>(engine.processIdentifier());
    ASSERT_EQ(::kill(engine.processIdentifier(), SIGKILL), 0);
    siginfo_t end;
    ASSERT_EQ(::waitid(P_PID, ended, &end, WEXITED | WNOWAIT), 0);
    EXPECT_EQ(textOfPage(first, 0), "a0");
}

TEST(PDFDocumentTest, TheEngineLetsGoOfADocumentAtItsEnd) {
    const std::string large = pdfDocument({pdfText("x"), "% " + std::string(200'000, '-')});
    {
        const PDFPage page = open(large).pageAtIndex(0);
        EXPECT_EQ(page.string(), u"x");
        EXPECT_TRUE(engineMapsSealedMemory());
    }
    EXPECT_FALSE(engineMapsSealedMemory());
}

TEST(PDFSelectionTest, TextKeepsItsFontsAndColours) {
    const PDFDocument document = open(pdfDocument({
        pdfText("Plain and") + "1 0 0 rg " + pdfText("code", "M 10", 680),
        "",
        pdfText("Strong", "T 24"),
    }));
    EXPECT_EQ(tests::describe(document.selectionForEntireDocument().attributedString()),
              "{Helvetica:Plain and}\n{Courier;10;#ff0000:code\f}{Times New Roman;24;bold;italic:Strong}");
    RequestNotes notes;
    EXPECT_TRUE(document.selectionForEntireDocument().attributedStringUsingTimeout(0).isNil());
    EXPECT_EQ(notes.sentenceOfResult().UTF8String(), "there was no time for the text from page 1 on");
}

// One front of the library has no text of such pages, or only some.
TEST(PDFSelectionTest, TextFromTheRightKeepsItsFonts) {
    struct Row {
        const char* name;
        std::string contents;
        const char* pageEntries;
        const char* text;
    };
    const std::string both = pdfText("ABC DEF", "H 12") + pdfText("latin", "M 12", 660);
    const char* const bothRead = "{Arial:\u202B\u05D5\u05D4\u05D3 \u05D2\u05D1\u05D0\u202C}\n"
                                 "{Arial:\u202B\u202A}{Courier:latin\u202C\u202C}";
    const Row rows[] = {
        {"most of it", both, "", bothRead},
        {"turned", both, "/Rotate 180", bothRead},
        {"two lines of it",
         pdfText("A line of Latin letters, and then", "F 12") + pdfText("ABC", "H 12", 686) +
             pdfText("DEF", "H 12", 672) + pdfText("more letters of another font", "M 12", 658),
         "",
         "{Helvetica:A line of Latin letters, and "
         "then}\n{Helvetica:\u202B}{Arial:\u05D2\u05D1\u05D0\u202C}\n{Arial:\u202B\u05D5\u05D4\u05D3\u202C}\n"
         "{Courier:more letters of another font}"},
    };
    for (const Row& row : rows) {
        PDFParts parts;
        parts.pages = {row.contents};
        parts.pageEntries = row.pageEntries;
        EXPECT_EQ(tests::describe(open(pdfDocument(parts)).selectionForEntireDocument().attributedString()),
                  row.text)
            << row.name;
    }
}

} // namespace
} // namespace kelvo
