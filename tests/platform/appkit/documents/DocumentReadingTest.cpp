#include "platform/appkit/documents/DocumentReading.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/encodings/CFStringEncodings.h"
#include "platform/ledger/RequestNotes.h"
#include "support/AttributedText.h"
#include "support/Listener.h"
#include "support/OfficeDocuments.h"
#include "support/TemporaryFolder.h"

#include <kj/encoding.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <optional>

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
        EXPECT_EQ(
            tests::describe(text),
            "[after 1.5] one {one.svg 15x15:\uFFFC}\n[after 13.5] \u041F\u0440\u0438 {#0000ee;under;to " +
                url + "/f/l:link}\n{bold:two}\n");
    }
    EXPECT_FALSE(listener.wasAsked());
}

/// The package with what stands in the part in another way, and no other length of it.
std::string damaged(std::string package, const std::string& part, char letter) {
    package[package.find(part)] = letter;
    return package;
}

/// Of which all but the first sector of the text is missing.
std::string wordDocument(char flags) {
    std::string bytes(5 * 512, '\0');
    bytes.replace(0, 8, "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1");
    const auto put = [&bytes](std::size_t place, std::uint32_t value) {
        for (std::size_t index = 0; index < 4; ++index)
            bytes[place + index] = static_cast<char>(value >> (8 * index));
    };
    bytes[30] = 9;
    put(44, 1);
    put(48, 1);
    put(60, 0xFFFFFFFE);
    put(68, 0xFFFFFFFE);
    for (std::size_t index = 1; index < 109; ++index)
        put(76 + 4 * index, 0xFFFFFFFF);
    for (const std::uint32_t sector : {0, 1, 2, 3})
        put(512 + 4 * sector, 0xFFFFFFFE);
    const std::string name = "WordDocument";
    for (std::size_t place = 0; place < name.size(); ++place)
        bytes[1024 + 2 * place] = name[place];
    bytes[1024 + 64] = 26;
    put(1024 + 116, 2);
    put(1024 + 120, 513);
    put(1536, 0x00C1A5EC);
    bytes[1536 + 11] = flags;
    return bytes;
}

TEST_F(DocumentReading, WithoutADocumentThereIsAReason) {
    folder.write("folder/a.txt", "x");
    folder.write("package.rtfd/text.rtf", "{\\rtf1 x}");
    folder.write("odd.rtfd/TXT.rtf/a.txt", "x");
    folder.write("empty.rtfd/TXT.rtf", "x");
    const std::string odt = tests::openDocument("<text:p>x</text:p>");
    const char16_t* const folderReason = u"a folder is no document, unless it is an RTFD package";
    const char16_t* const unknown = u"it is binary data of an unknown kind, and no text document";
    const char16_t* const encrypted = u"the document is encrypted";
    const struct {
        std::string path;
        std::optional<Outcome> outcome;
        const char16_t* sentence = nullptr;
    } rows[] = {
        {folder.path("missing"), {}},
        {"", {}},
        {folder.path("folder"), Outcome::unsupported, folderReason},
        {folder.path("package.rtfd"), Outcome::unsupported, folderReason},
        {folder.path("odd.rtfd"), Outcome::unsupported, folderReason},
        {folder.path("empty.rtfd"), Outcome::broken, u"the package has no TXT.rtf with rich text in it"},
        {"/dev/null", Outcome::unsupported, u"it is neither a file nor a folder"},
        {folder.write("a.txt", "text\0text"s), Outcome::unsupported, unknown},
        {folder.write("a.rtf", tests::smallPNG()), Outcome::unsupported, u"an image is no text document"},
        {folder.write("a.odt", tests::openDocument("<text:p>x</text:p>", tests::Encryption::claimed)),
         Outcome::locked, encrypted},
        {folder.write("a.doc", wordDocument(1)), Outcome::locked, encrypted},
        {folder.write("b.doc", wordDocument(0)), Outcome::broken, u"the text of the document is cut off"},
        {folder.write("cut.odt", odt.substr(0, odt.size() - 1)), Outcome::broken,
         u"the file is damaged or cut off: the list of what is in it is missing"},
        {folder.write("c.odt", tests::openDocument("</text:p>")), Outcome::broken,
         u"the part content.xml of the document is not well-formed XML: mismatched tag in line 1"},
        {folder.write("d.fodt", tests::flatOpenDocument("<text:p>")), Outcome::broken,
         u"the document is not well-formed XML: mismatched tag in line 2"},
        {folder.write("a.docx", tests::zipPackage({{"[Content_Types].xml", ""}, {"word/document.xml", "<"}})),
         Outcome::broken,
         u"the part word/document.xml of the document is not well-formed XML: unclosed token in line 1"},
        {folder.write("b.docx", tests::zipPackage({{"xl/workbook.xml", ""}})), Outcome::unsupported,
         u"an archive or a compressed file is no text document"},
        {folder.write("a.rtfd", "rtfd\0\0\0\0\3"s), Outcome::broken, u"it is no RTFD, or a damaged one"},
        {folder.write("a.webarchive", "bplist00\xD0\x08"), Outcome::unsupported, unknown},
        {folder.write("b.webarchive", "bplist00 WebMainResource"), Outcome::broken,
         u"the property list is damaged: the binary property list is cut short"},
        {folder.write("c.webarchive", "<plist><dict><key>WebSubresources</key><array/></dict></plist>"),
         Outcome::nothing, u"the web archive has no page of its own"},
    };
    for (const auto& row : rows) {
        const RequestNotes notes;
        read(row.path);
        EXPECT_TRUE(text.isNil()) << row.path;
        EXPECT_TRUE(attributes.isNil()) << row.path;
        EXPECT_EQ(notes.outcome(), row.outcome) << row.path;
        EXPECT_EQ(notes.sentence(), NSString(row.sentence))
            << row.path << ": " << notes.sentence().UTF8String();
    }
}

TEST_F(DocumentReading, OfDamagedDocumentsThereIsWhatIsLeft) {
    const std::string odt = tests::openDocument("<text:p>words</text:p>");
    const struct {
        std::string contents;
        const char16_t* loss;
    } rows[] = {
        {odt, nullptr},
        {damaged(odt, "words", 'W'),
         u"the part content.xml of the document is damaged; what was left of it was read"},
        {"{\\rtf1 words}", nullptr},
        {"{\\rtf1 words", u"the rich text has no end; the last of it may be missing"},
        {"MIME-Version: 1.0\nContent-Type: multipart/related\n\nwords",
         u"the message has no page in it; its source was read as plain text"},
    };
    for (const auto& row : rows) {
        const RequestNotes notes;
        write("document", row.contents);
        EXPECT_FALSE(text.isNil()) << row.contents;
        EXPECT_EQ(notes.sentenceOfResult(), NSString(row.loss))
            << row.contents << notes.sentenceOfResult().UTF8String();
    }
}

} // namespace
} // namespace kelvo
