#include "platform/appkit/DocumentReading.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/CFStringEncodings.h"
#include "platform/foundation/Value.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace kelvo {
namespace {

using namespace std::string_literals;

class DocumentReading : public testing::Test {
protected:
    void read(const std::string& path) {
        attributes = NSDictionary::dictionary();
        text = NSAttributedStringKitAdditions::initWithPath_documentAttributes(
            NSString::stringWithUTF8String(path), &attributes);
    }
    void write(const std::string& name, const std::string& contents) { read(folder.write(name, contents)); }

    std::string string() const { return text.isNil() ? "nil" : text.string().UTF8String(); }
    bool contains(const std::string& part) const { return string().find(part) != std::string::npos; }
    std::string attribute(const char16_t* key) const {
        return attributes.objectForKey(key).description().UTF8String();
    }
    std::size_t attachments() const {
        return static_cast<std::size_t>(std::ranges::count_if(
            text.runs(), [](const auto& run) { return run.attributes->attachment != nullptr; }));
    }

    const tests::TemporaryFolder folder;
    NSAttributedString text;
    NSDictionary attributes;
};

TEST_F(DocumentReading, PlainText) {
    write("letter.odt", "Dear reader,\r\nna\xC3\xAFve.\n");
    EXPECT_EQ(string(), "Dear reader,\r\nna\xC3\xAFve.\n");
    EXPECT_EQ(attributes,
              NSMutableDictionary::dictionaryWithObjectsAndKeys(
                  {{NSPlainTextDocumentType, NSDocumentTypeDocumentAttribute},
                   {u"public.plain-text", NSUTIDocumentAttribute},
                   {NSNumber::numberWithInt(NSUTF8StringEncoding), NSCharacterEncodingDocumentAttribute}})
                  .copy());
    ASSERT_EQ(text.runs().size(), 1U);
    EXPECT_EQ(*text.runs()[0].attributes, NSTextAttributes());

    write("empty.docx", "");
    EXPECT_FALSE(text.isNil());
    EXPECT_EQ(text.length(), 0U);
}

TEST_F(DocumentReading, RichText) {
    const std::string rtf = R"({\rtf1\ansi{\info{\title A Title}}plain {\b bold}})";
    const auto package = NSFileWrapper::initDirectory();
    const auto contents = NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytes(rtf));
    contents->setPreferredFilename(u"TXT.rtf");
    package->addFileWrapper(contents);
    folder.write("package.rtfd/TXT.rtf", rtf);
    struct Row {
        std::string path;
        const char* type;
        const char* UTI;
    };
    for (const Row& row :
         {Row{folder.write("a.doc", rtf), "NSRTF", "public.rtf"},
          Row{folder.path("package.rtfd"), "NSRTFD", "com.apple.rtfd"},
          Row{folder.path("package.rtfd/"), "NSRTFD", "com.apple.rtfd"},
          Row{folder.write("a.txt", std::string(package->serializedRepresentation().characters())), "NSRTFD",
              "com.apple.rtfd"}}) {
        read(row.path);
        EXPECT_EQ(string(), "plain bold") << row.path;
        EXPECT_EQ(attribute(NSDocumentTypeDocumentAttribute), row.type) << row.path;
        EXPECT_EQ(attribute(NSUTIDocumentAttribute), row.UTI) << row.path;
        EXPECT_EQ(attribute(NSTitleDocumentAttribute), "A Title") << row.path;
        EXPECT_EQ(text.runs().size(), 2U) << row.path;
    }
}

TEST_F(DocumentReading, WordProcessorDocuments) {
    struct Row {
        const char* name;
        std::string contents;
        const char* type;
        const char* UTI;
    };
    const std::string paragraph = "<text:p>Gr\xC3\xBC\xC3\x9F"
                                  "e</text:p>";
    for (const Row& row :
         {Row{"a.odt", tests::openDocument(paragraph), "NSOpenDocument", "org.oasis-open.opendocument.text"},
          Row{"b.xml", tests::flatOpenDocument(paragraph), "NSOpenDocument",
              "org.oasis-open.opendocument.text"},
          Row{"c.txt",
              tests::openOfficeText("Gr\xC3\xBC\xC3\x9F"
                                    "e"),
              "NSOpenDocument", "org.openoffice.text"},
          Row{"d.doc", tests::wordML("Gr&#xFC;&#xDF;e"), "NSWordML", "com.microsoft.word.wordml"}}) {
        write(row.name, row.contents);
        EXPECT_TRUE(contains("Gr\xC3\xBC\xC3\x9F"
                             "e"))
            << row.name << ": " << string();
        EXPECT_EQ(attribute(NSDocumentTypeDocumentAttribute), row.type) << row.name;
        EXPECT_EQ(attribute(NSUTIDocumentAttribute), row.UTI) << row.name;
        EXPECT_EQ(attribute(NSConvertedDocumentAttribute), "1") << row.name;
        EXPECT_TRUE(attributes.objectForKey(NSCocoaVersionDocumentAttribute).isNil()) << row.name;
        const auto files = std::filesystem::directory_iterator(folder.path());
        EXPECT_EQ(std::distance(files, {}), 1) << "something beside " << row.name;
        std::filesystem::remove(folder.path(row.name));
    }
}

TEST_F(DocumentReading, WhatADocumentSaysOfItself) {
    write("without extension", tests::officeOpenXML("Boldly", "The Title"));
    EXPECT_TRUE(contains("Boldly"));
    ASSERT_FALSE(text.isNil());
    EXPECT_TRUE(text.runs()[0].attributes->font.isBold);
    EXPECT_EQ(attachments(), 1U);
    EXPECT_EQ(attribute(NSDocumentTypeDocumentAttribute), "NSOfficeOpenXML");
    EXPECT_EQ(attribute(NSTitleDocumentAttribute), "The Title");
    EXPECT_EQ(attribute(NSAuthorDocumentAttribute), "Ann Author");
    NSMutableArray keywords = NSMutableArray::array();
    keywords.addObject(u"one");
    keywords.addObject(u"two");
    EXPECT_EQ(attributes.objectForKey(NSKeywordsDocumentAttribute), Value(keywords));
}

TEST_F(DocumentReading, NoDocumentIsNil) {
    folder.write("folder/a.txt", "x");
    folder.write("package.rtfd/text.rtf", "{\\rtf1 x}");
    folder.write("odd.rtfd/TXT.rtf/a.txt", "x");
    const std::string paths[] = {
        folder.path("missing"),
        folder.path("folder"),
        folder.path("package.rtfd"),
        folder.path("odd.rtfd"),
        "/dev/null",
        "",
        folder.write("a.txt", "text\0text"s),
        folder.write("a.rtf", tests::smallPNG()),
        folder.write("a.odt", tests::openDocument("<text:p>x</text:p>", tests::Encryption::claimed)),
        folder.write("a.docx", tests::zipPackage({{"[Content_Types].xml", ""}, {"word/document.xml", "<"}})),
        folder.write("b.docx", tests::zipPackage({{"xl/workbook.xml", ""}})),
        folder.write("a.webarchive", "bplist00\xD0\x08"),
    };
    for (const std::string& path : paths) {
        read(path);
        EXPECT_TRUE(text.isNil()) << path;
        EXPECT_TRUE(attributes.isNil()) << path;
    }
}

} // namespace
} // namespace kelvo
