#include "platform/appkit/documents/DocumentReading.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/encodings/CFStringEncodings.h"
#include "support/AttributedText.h"
#include "support/Listener.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"

#include <kj/encoding.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>

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
    const std::string serialized(package->serializedRepresentation().characters());
    const std::tuple<std::string, const char*, const char*> rows[] = {
        {folder.write("a.doc", rtf), "NSRTF", "public.rtf"},
        {folder.path("package.rtfd"), "NSRTFD", "com.apple.rtfd"},
        {folder.path("package.rtfd/"), "NSRTFD", "com.apple.rtfd"},
        {folder.write("a.txt", serialized), "NSRTFD", "com.apple.rtfd"},
    };
    for (const auto& [path, type, UTI] : rows) {
        read(path);
        EXPECT_EQ(string(), "plain bold") << path;
        EXPECT_EQ(attribute(NSDocumentTypeDocumentAttribute), type) << path;
        EXPECT_EQ(attribute(NSUTIDocumentAttribute), UTI) << path;
        EXPECT_EQ(attribute(NSTitleDocumentAttribute), "A Title") << path;
        EXPECT_EQ(text.runs().size(), 2U) << path;
    }
}

TEST_F(DocumentReading, WordProcessorDocuments) {
    const std::string word = "Gr\u00FC\u00DFe", paragraph = "<text:p>" + word + "</text:p>";
    const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
        {"a.odt", tests::openDocument(paragraph), "NSOpenDocument", "org.oasis-open.opendocument.text"},
        {"b.xml", tests::flatOpenDocument(paragraph), "NSOpenDocument", "org.oasis-open.opendocument.text"},
        {"c.txt", tests::openOfficeText(word), "NSOpenDocument", "org.openoffice.text"},
        {"d.doc", tests::wordML("Gr&#xFC;&#xDF;e"), "NSWordML", "com.microsoft.word.wordml"},
    };
    for (const auto& [name, contents, type, UTI] : rows) {
        write(name, contents);
        EXPECT_TRUE(contains(word)) << name << ": " << string();
        EXPECT_EQ(attribute(NSDocumentTypeDocumentAttribute), type) << name;
        EXPECT_EQ(attribute(NSUTIDocumentAttribute), UTI) << name;
        EXPECT_EQ(attribute(NSConvertedDocumentAttribute), "1") << name;
        EXPECT_TRUE(attributes.objectForKey(NSCocoaVersionDocumentAttribute).isNil()) << name;
        const auto files = std::filesystem::directory_iterator(folder.path());
        EXPECT_EQ(std::distance(files, {}), 1) << "something beside " << name;
        std::filesystem::remove(folder.path(name));
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
    EXPECT_EQ(attributes.objectForKey(NSKeywordsDocumentAttribute),
              Value(NSArray::arrayWithObjects({u"one", u"two"})));
}

const std::string picture =
    R"(<svg xmlns="http://www.w3.org/2000/svg" width="20" height="20"><rect width="20" height="20"/></svg>)";

TEST_F(DocumentReading, PagesHaveTheirFilesButNoNetwork) {
    const tests::Listener listener;
    folder.write("pictures/one.svg", picture);
    write("page.txt",
          "<!DOCTYPE html><title>Tides</title><p>Low <img src='pictures/one.svg'> and high <img src='" +
              listener.url() + "/two.svg'> water<script src='" + listener.url() + "/s.js'></script>");
    EXPECT_TRUE(contains("Low")) << string();
    EXPECT_TRUE(contains("water")) << string();
    EXPECT_EQ(attachments(), 1U);
    EXPECT_EQ(attribute(NSDocumentTypeDocumentAttribute), "NSHTML");
    EXPECT_FALSE(listener.wasAsked());
}

/// One resource of a web archive.
std::string resource(const std::string& url, const std::string& type, const std::string& data,
                     const std::string& charset = "") {
    return "<dict><key>WebResourceURL</key><string>" + url +
           "</string><key>WebResourceMIMEType</key><string>" + type +
           "</string><key>WebResourceTextEncodingName</key><string>" + charset +
           "</string><key>WebResourceData</key><data>" +
           std::string(kj::encodeBase64(kj::StringPtr(data.c_str()).asBytes()).cStr()) + "</data></dict>";
}

/// A MIME message of these parts, each its header, type and contents.
std::string messageOf(const std::vector<std::array<std::string, 3>>& parts) {
    std::string message = "MIME-Version: 1.0\r\nContent-Type: multipart/related; boundary=B\r\n";
    for (const auto& [header, type, data] : parts)
        message += "\r\n--B\r\nContent-Type: " + type + "\r\n" + header + "\r\n\r\n" + data;
    return message + "\r\n--B--\r\n";
}

TEST_F(DocumentReading, SavedPagesHaveWhatWasSavedWithThem) {
    const tests::Listener listener;
    const std::string local = folder.write("local.svg", picture);
    const std::string source = "<link rel=stylesheet href=s.css><p>Low <img src=one.svg> and <img src='" +
                               listener.url() + "/two.svg'> or <img src='" + listener.url() +
                               "/three.svg#x'> or <img src='file://" + local +
                               "'> water<p class=b>boldly<script src=s.js></script>";
    const std::string style = ".b { font-weight: bold }" + std::string(300000, ' ');
    const std::string script = "document.querySelector('.b').append('script')" + std::string(300000, ' ');
    const std::string archive =
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>WebMainResource</key>" +
        resource(listener.url() + "/a/", "text/html", source) + "<key>WebSubresources</key><array>" +
        resource(listener.url() + "/a/one.svg", "image/svg+xml", picture) +
        resource(listener.url() + "/three.svg", "image/svg+xml", picture) +
        resource(listener.url() + "/a/s.js", "text/javascript", script) +
        resource(listener.url() + "/a/s.css", "text/css", style) + "</array></dict></plist>";
    const std::string location = "Content-Location: " + listener.url();
    const std::string message = messageOf({{location + "/a/", "text/html", source},
                                           {location + "/a/one.svg", "image/svg+xml", picture},
                                           {location + "/three.svg", "image/svg+xml", picture},
                                           {location + "/a/s.js", "text/javascript", script},
                                           {location + "/a/s.css", "text/css", style}});
    for (const auto& [contents, UTI] :
         {std::pair(archive, "com.apple.webarchive"), std::pair(message, "com.microsoft.word.mhtml")}) {
        write("saved", contents);
        EXPECT_TRUE(contains("water")) << string();
        EXPECT_TRUE(contains("script")) << string();
        EXPECT_EQ(attachments(), 2U) << UTI;
        for (const auto& run : text.runs()) {
            if (run.attributes->attachment) {
                EXPECT_EQ(run.attributes->attachment->fileWrapper->regularFileContents(),
                          NSData::dataWithBytes(picture));
            }
        }
        ASSERT_FALSE(text.isNil());
        EXPECT_TRUE(text.runs().back().attributes->font.isBold) << UTI;
        EXPECT_EQ(attribute(NSDocumentTypeDocumentAttribute), "NSWebArchive");
        EXPECT_EQ(attribute(NSUTIDocumentAttribute), UTI);
    }
    EXPECT_FALSE(listener.wasAsked());
    write("text.webarchive", "<?xml version=\"1.0\"?><plist><dict><key>WebMainResource</key>" +
                                 resource("http://h/", "text/plain", "just <b>text") + "</dict></plist>");
    EXPECT_EQ(string(), "just <b>text");
}

TEST_F(DocumentReading, SavedPagesHaveTheTextOfTheirFrames) {
    const tests::Listener listener;
    const std::string url = listener.url();
    const auto pageWith = [&url](const std::string& second) {
        return "<frameset rows='*,*,*'><frame src=f/one.html><frame src='" + second + "'><frame src='" + url +
               "/missing.html'></frameset>";
    };
    const std::string one = "<p>one <img width=20 height=20 src=one.svg><iframe src=inner.html></iframe>";
    const std::string two = "<p style='font-weight:bold'>two" + std::string(300000, ' ');
    const std::string inner = "\xCF\xF0\xE8 <a href=l>link</a>";
    const auto frame = [](const std::string& main, const std::string& frames) {
        return "<dict><key>WebMainResource</key>" + main + "<key>WebSubframeArchives</key><array>" + frames +
               "</array></dict>";
    };
    const std::string archive =
        "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>WebMainResource</key>" +
        resource(url + "/", "text/html", pageWith("/two.html")) + "<key>WebSubresources</key><array>" +
        resource(url + "/f/one.svg", "image/svg+xml", picture) +
        "</array><key>WebSubframeArchives</key><array>" +
        frame(resource(url + "/f/one.html", "text/html", one),
              frame(resource(url + "/f/inner.html", "text/html", inner, "windows-1251"), "")) +
        frame(resource(url + "/two.html", "text/html", two), "") + "</array></dict></plist>";
    const std::string location = "Content-Location: " + url;
    const std::string message =
        messageOf({{location + "/", "text/html", pageWith("cid:2@x")},
                   {location + "/f/one.html", "text/html", one},
                   {location + "/f/inner.html", "text/html; charset=windows-1251", inner},
                   {location + "/f/one.svg", "image/svg+xml", picture},
                   {"Content-ID: <2@x>", "text/html", two}});
    for (const std::string& contents : {archive, message}) {
        write("saved", contents);
        EXPECT_EQ(tests::describe(text),
                  "[after 2] one {one.svg 20x20:\uFFFC}\n[after 14] \u041F\u0440\u0438 {#0000ee;under;to " +
                      url + "/f/l:link}\n{bold:two}\n");
    }
    EXPECT_FALSE(listener.wasAsked());
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
        folder.write("b.webarchive", "bplist00 WebMainResource"),
    };
    for (const std::string& path : paths) {
        read(path);
        EXPECT_TRUE(text.isNil()) << path;
        EXPECT_TRUE(attributes.isNil()) << path;
    }
}

} // namespace
} // namespace kelvo
