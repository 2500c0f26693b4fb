#include "service/PDFText.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "protocol/ResultKeys.h"
#include "support/PDFDocuments.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace kelvo {
namespace {

using tests::pdfDocument;
using tests::PDFParts;
using tests::pdfText;

/// "Key=value", in order; and what the importer was asked for.
std::string resultOf(const std::string& document, bool attributed, const NSString& file, bool wantsSize,
                     const NSString& importerText = nullptr) {
    std::string asked;
    const auto textContent = [&](const NSString& path) {
        asked += " asked " + path.UTF8String();
        return importerText;
    };
    std::string facts;
    try {
        const NSDictionary result = _attributed_stringWithPDF_file_size(
            attributed, NSData::dataWithBytes(document), file, wantsSize, textContent);
        facts = result.isNil() ? "(nil)" : "";
        for (const auto& [key, object] : result)
            facts += (facts.empty() ? "" : " ") + key.string().UTF8String() + "=" +
                     (object.isAttributedText() ? "rich " : "") + object.description().UTF8String();
    } catch (const NSException& exception) {
        facts = exception.name().UTF8String();
    }
    for (char& unit : facts)
        unit = unit == '\n' ? '|' : unit;
    return facts + asked;
}

std::string documentBy(const std::string& producer) {
    PDFParts parts;
    parts.pages = {pdfText("page"), ""};
    parts.information = "/Producer(" + producer + ")";
    return pdfDocument(parts);
}

TEST(PDFTextTest, WhereTheTextComesFrom) {
    const std::string document = documentBy("P");
    EXPECT_EQ(resultOf(document, false, nullptr, false, u"unasked"), "String=page| PageCount=2 Producer=P");
    EXPECT_EQ(resultOf(document, false, u"/f.pdf", false, u"e\u0301"),
              "String=\u00E9 PageCount=2 Producer=P asked /f.pdf");
    EXPECT_EQ(resultOf(document, false, u"/f.pdf", false, u""),
              "String= PageCount=2 Producer=P asked /f.pdf");
    EXPECT_EQ(resultOf(document, false, u"/f.pdf", false),
              "String=page| PageCount=2 Producer=P asked /f.pdf");
    EXPECT_EQ(resultOf(document, true, u"/f.pdf", false, u"unasked"),
              "String=rich page PageCount=2 Producer=P");
    EXPECT_EQ(resultOf(documentBy("gpl GHOSTscript 9"), false, u"/f.pdf", false, u"unasked"),
              "String=page| PageCount=2 Producer=gpl GHOSTscript 9");
}

TEST(PDFTextTest, WhatHasNoTextToStoreThrows) {
    const std::string withoutPages = pdfDocument(std::vector<std::string>());
    EXPECT_EQ(resultOf(withoutPages, false, nullptr, false), "NSInvalidArgumentException");
    EXPECT_EQ(resultOf(pdfDocument({""}), true, nullptr, false), "NSInvalidArgumentException");
    EXPECT_EQ(resultOf(pdfDocument({""}), false, nullptr, false), "String= PageCount=1");
    EXPECT_EQ(resultOf("no PDF", false, nullptr, true), "(nil)");
}

TEST(PDFTextTest, SizeIsThatOfTheFirstPage) {
    EXPECT_EQ(resultOf(pdfDocument({pdfText("x")}), false, nullptr, true),
              "String=x| PageCount=1 Size={612, 792} PixelSize={612, 792} Alpha=0");
    PDFParts parts;
    parts.pages = {pdfText("x")};
    parts.mediaBox = "[-10 0 90.5 200]";
    parts.pageEntries = "/Rotate 90";
    EXPECT_EQ(resultOf(pdfDocument(parts), false, nullptr, true),
              "String= PageCount=1 Size={100.5, 200} PixelSize={100.5, 200} Alpha=0");
    EXPECT_EQ(resultOf(pdfDocument(std::vector<std::string>()), false, u"/f.pdf", true, u"text"),
              "String=text PageCount=0 asked /f.pdf");
}

TEST(PDFTextTest, LockedDocumentsTellWhatIsNotEncrypted) {
    PDFParts parts;
    parts.pages = {pdfText("x"), pdfText("y")};
    parts.information = "/Title(\1\2\3)";
    parts.trailerEntries = tests::pdfEncryption();
    for (const bool attributed : {false, true}) {
        EXPECT_EQ(resultOf(pdfDocument(parts), attributed, u"/f.pdf", true, u"unasked"),
                  "Locked=1 PageCount=2 Size={612, 792} PixelSize={612, 792} Alpha=0");
    }
}

TEST(PDFTextTest, WhatGhostscriptProduced) {
    struct Row {
        Value producer;
        bool isProduced;
    };
    const Row rows[] = {
        {u"ghostscript", true}, {u"GPL GhostScript 10.00.0", true},
        {u"hostscript", false}, {u"Ghost script", false},
        {u"", false},           {NSNumber::numberWithInt(1), false},
    };
    EXPECT_FALSE(isProducedByGhostscript(nullptr));
    for (const Row& row : rows) {
        NSMutableDictionary attributes = NSMutableDictionary::dictionary();
        attributes.setObject_forKey(row.producer, u"Producer");
        EXPECT_EQ(isProducedByGhostscript(attributes), row.isProduced)
            << row.producer.description().UTF8String();
    }
}

} // namespace
} // namespace kelvo
