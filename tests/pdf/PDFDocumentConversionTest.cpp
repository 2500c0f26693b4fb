#include "pdf/PDFDocumentConversion.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/RequestNotes.h"
#include "support/PDFDocuments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {
namespace {

using tests::pdfDocument;
using tests::pdfText;

PDFDocument open(const std::string& bytes) {
    return PDFDocument::initWithData(NSData::dataWithBytes(bytes));
}

TEST(PageWalkTest, StopsWhenTheTimeAndThatOfTheLastPageMakeUpTheBudget) {
    struct Row {
        const char* name;
        double budget;
        std::vector<double> secondsOfPages;
        const char* text;
    };
    const Row rows[] = {
        {"7 seconds and a page of 3", 10, {4, 3, 1}, "0\n1\n"},
        {"7 seconds and a page of 2.9", 10, {4.1, 2.9, 0, 0}, "0\n1\n2\n3\n"},
        {"half the budget on one page", 10, {5, 0}, "0\n"},
        {"the last page takes all", 10, {1, 100}, "0\n1\n"},
        {"no budget", 0, {100, 100}, "0\n1\n"},
        {"less than none", -1, {100, 100}, "0\n1\n"},
        {"no pages", 10, {}, "(nil)"},
    };
    for (const Row& row : rows) {
        RequestNotes notes;
        double now = 1000;
        PageWalk walk;
        walk.pageCount = row.secondsOfPages.size();
        walk.budget = row.budget;
        walk.clock = [&] { return now; };
        walk.textOfPage = [&](std::size_t page, double) {
            now += row.secondsOfPages[page];
            return NSString::stringWithUTF8String(std::to_string(page));
        };
        const NSString text = walk.text();
        EXPECT_EQ(text.isNil() ? "(nil)" : text.UTF8String(), row.text) << row.name;
        const bool isWhole = text.isNil() || 2 * walk.pageCount == text.length();
        EXPECT_EQ(notes.sentenceOfResult().isNil(), isWhole) << row.name;
    }
}

TEST(PageWalkTest, PagesAreRepairedAndFailEachForItself) {
    double now = 0;
    std::vector<double> left;
    PageWalk walk;
    walk.pageCount = 5;
    walk.budget = 60;
    walk.clock = [&] { return now; };
    walk.textOfPage = [&](std::size_t page, double secondsLeft) -> NSString {
        left.push_back(secondsLeft);
        now += 2;
        switch (page) {
        case 0:
            return u"e\u0301\U0001F600";
        case 1:
            throw NSException(NSGenericException, u"A page that fails.");
        case 2:
            return nullptr;
        case 3:
            return u"";
        default:
            return u"last";
        }
    };
    EXPECT_EQ(walk.text().UTF8String(), "\u00E9  \nlast\n");
    EXPECT_EQ(left, (std::vector<double>{60, 58, 56, 54, 52}));
}

TEST(PageWalkTest, GivesEveryPageThatItWalks) {
    double now = 0;
    PageWalk walk;
    walk.pageCount = 5;
    walk.budget = 10;
    walk.clock = [&now] { return now; };
    walk.textOfPage = [&now](std::size_t page, double) -> NSString {
        now += 2.5;
        if (page == 1)
            throw NSException(NSGenericException, u"A page that fails.");
        return page == 2 ? NSString() : u"e\u0301";
    };
    std::string pages;
    walk.walk([&pages](std::size_t page, const NSString& text) {
        pages += std::to_string(page) + (text.isNil() ? "(nil)" : text.UTF8String()) + ";";
    });
    EXPECT_EQ(pages, "0\u00E9;1(nil);2;");
}

TEST(PDFDocumentConversionTest, TextOfDocuments) {
    struct Row {
        const char* name;
        std::string document;
        const char* text;
    };
    const Row rows[] = {
        {"second page without text", pdfDocument({pdfText("first"), ""}), "first\n"},
        {"no text at all", pdfDocument({"", ""}), ""},
        {"no pages", pdfDocument(std::vector<std::string>()), "(nil)"},
        {"a page that ends the engine", tests::pdfDocumentWithDeadlyPage(), "one\ntwo\nfour\nfive\n"},
    };
    for (const Row& row : rows) {
        RequestNotes notes;
        const PDFDocument document = open(row.document);
        ASSERT_FALSE(document.isNil()) << row.name;
        for (const NSString& text :
             {fixedAndNormalizedStringUsingTimeout(document, 60), fixedAndNormalizedString(document)})
            EXPECT_EQ(text.isNil() ? "(nil)" : text.UTF8String(), row.text) << row.name;
        const bool isWhole = row.name != rows[3].name;
        EXPECT_EQ(notes.sentenceOfResult(), isWhole ? NSString() : u"the text of page 3 of 5 is missing");
    }
}

} // namespace
} // namespace kelvo
