#include "markup/WebArchiveSearchableText.h"
#include "markup/WebKitAdditions.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

/// A document and its frames, from which a file in each form is made.
struct Page {
    std::string name, type, charset, html;
    std::vector<Page> frames;
};

Value propertyList(const Page& page) {
    const auto string = [](const std::string& text) { return NSString::stringWithUTF8String(text); };
    NSMutableDictionary document = NSMutableDictionary::dictionary();
    document.setObject_forKey(NSData::dataWithBytes(page.html), u"WebResourceData");
    document.setObject_forKey(string(page.type), u"WebResourceMIMEType");
    document.setObject_forKey(string("http://h/" + page.name), u"WebResourceURL");
    if (!page.charset.empty())
        document.setObject_forKey(string(page.charset), u"WebResourceTextEncodingName");
    std::vector<Value> frames;
    for (const Page& frame : page.frames)
        frames.push_back(propertyList(frame));
    NSMutableDictionary archive = NSMutableDictionary::dictionary();
    archive.setObject_forKey(document, u"WebMainResource");
    archive.setObject_forKey(NSArray::arrayWithValues(frames), u"WebSubframeArchives");
    return archive;
}

NSData propertyList(const Page& page, NSPropertyListFormat format) {
    return NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(propertyList(page),
                                                                                     format, nullptr);
}

std::string quotedPrintable(const std::string& text) {
    constexpr const char* digits = "0123456789ABCDEF";
    std::string result;
    for (const char unit : text) {
        const auto byte = static_cast<unsigned char>(unit);
        result += {'=', digits[byte >> 4], digits[byte & 15]};
        if (result.size() % 75 == 0)
            result += "=\r\n";
    }
    return result;
}

std::string parts(const Page& page) {
    std::string text = "--=_b\r\nContent-Type: " + page.type +
                       (page.charset.empty() ? "" : "; charset=" + page.charset) +
                       "\r\nContent-Transfer-Encoding: quoted-printable\r\nContent-Location: http://h/" +
                       page.name + "\r\n\r\n" + quotedPrintable(page.html) + "\r\n";
    for (const Page& frame : page.frames)
        text += parts(frame);
    return text;
}

NSData MIMEHTML(const Page& page) {
    return NSData::dataWithBytes("From: <Saved>\r\nMIME-Version: 1.0\r\nContent-Type: multipart/related;\r\n"
                                 "\tboundary=\"=_b\"\r\n\r\n" +
                                 parts(page) + "--=_b--\r\n");
}

const Page framed{
    "page",
    "text/html",
    "utf-8",
    "<title>Harbour</title><frameset><frame src=left><frame "
    "src=right><noframes>m\xC3\xB4le</noframes></frameset>",
    {{"left",
      "text/html",
      "windows-1251",
      "<body>\xEF\xEE\xF0\xF2<iframe src=inner>",
      {{"inner", "application/xhtml+xml", "", "<meta charset=koi8-r><p>\xD0\xC9\xD2\xD3</p>", {}}}},
     {"right", "text/plain", "no-such", "<pre>a\n\n\xE9</pre>", {}}}};
const std::string framedText =
    "\n\nHarbour\n\n\u043F\u043E\u0440\u0442\n\n\n\n\u043F\u0438\u0440\u0441\n\n\n\n\n\na\n\n\u00E9";

TEST(WebArchiveSearchableTextTest, EveryFormOfAPageGivesTheSameText) {
    const tests::TemporaryFolder folder;
    for (const NSData& data : {propertyList(framed, NSPropertyListBinaryFormat_v1_0),
                               propertyList(framed, NSPropertyListXMLFormat_v1_0), MIMEHTML(framed)}) {
        const std::string file = folder.write("page", data.characters());
        NSURL url;
        NSString source;
        const NSString path = NSString::stringWithUTF8String(file);
        EXPECT_EQ(SearchableText::searchableTextOfFile_baseURL_source(path, &url, &source).UTF8String(),
                  framedText);
        EXPECT_EQ(source.UTF8String(), framed.html);
        EXPECT_EQ(url.absoluteString(), u"http://h/page");
        EXPECT_EQ(SearchableText::searchableTextOfFile(path).UTF8String(), framedText);
        url = nullptr;
        EXPECT_EQ(WebKitAdditions::documentSourceOfFile_baseURL(path, &url), source);
        EXPECT_EQ(url.absoluteString(), u"http://h/page");
        EXPECT_EQ(WebKitAdditions::documentSourceOfFile(path), source);
        NSMutableString text = NSMutableString::stringWithCharacters(u"before");
        appendSearchableTextTo(WebArchive::initWithData(data), text);
        EXPECT_EQ(text.UTF8String(), "before" + framedText);
    }
}

TEST(WebArchiveSearchableTextTest, WhatIsMissingIsNil) {
    const auto textOf = [](const Page& page, NSString& source) {
        const WebArchive archive =
            WebArchive::initWithData(propertyList(page, NSPropertyListBinaryFormat_v1_0));
        return searchableTextAndSource(archive, &source).UTF8String();
    };
    NSString source;
    EXPECT_EQ(textOf({"i", "image/png", "", "<p>x", {}}, source), "");
    EXPECT_TRUE(source.isNil());
    EXPECT_EQ(textOf({"i", "image/png", "", "<p>x", {{"f", "text/html", "", "x", {}}}}, source), "\n\nx");
    EXPECT_TRUE(source.isNil());
    EXPECT_EQ(textOf({"e", "text/html", "", "", {{"f", "text/html", "", "x", {}}}}, source), "\n\n\n\nx");
    EXPECT_EQ(source, u"");
    EXPECT_EQ(textOf({"e", "text/html", "", "<frameset><frame>", {}}, source), "\n\n");
    EXPECT_EQ(
        textOf({"e", "text/html", "", "<body><img src=a>", {{"f", "text/html", "", "a < b", {}}}}, source),
        "\n\n\n\na < b");
    EXPECT_EQ(source, u"<body><img src=a>");
    EXPECT_EQ(searchableText(WebArchive()), u"");
    EXPECT_TRUE(baseURL(WebArchive()).isNil());

    const tests::TemporaryFolder folder;
    for (const std::string& file : {folder.path("none"), folder.path(), folder.write("empty", ""),
                                    folder.write("words", "no archive"), std::string()}) {
        NSURL url = NSURL::URLWithString(u"x:");
        source = u"x";
        const NSString path = file.empty() ? NSString() : NSString::stringWithUTF8String(file);
        EXPECT_TRUE(SearchableText::searchableTextOfFile_baseURL_source(path, &url, &source).isNil()) << file;
        EXPECT_TRUE(url.isNil() && source.isNil()) << file;
    }
}

TEST(WebArchiveSearchableTextTest, LabelsAndMarksTellTheEncoding) {
    const std::string meta = "<meta charset=windows-1251>";
    const std::tuple<const char*, std::string, std::string, const char16_t*> rows[] = {
        {"mark over the page", "", "\xEF\xBB\xBF" + meta + "\xC3\xA9", u"<meta charset=windows-1251>\u00E9"},
        {"UTF-16", "", std::string("\xFF\xFE<\0p\0>\0\x30\x04", 10), u"<p>\u0430"},
        {"label against the mark", "latin1", "\xEF\xBB\xBF", u"\u00EF\u00BB\u00BF"},
        {"page without a mark", "", meta + "\xE0", u"<meta charset=windows-1251>\u0430"},
        {"Czech labels", "x-kam-cs", "<p>\xA9", u"<p>\u0159"},
        {"the other one", "koi8-cs2", "<p>\xC7", u"<p>ch"},
    };
    for (const auto& [name, charset, html, source] : rows) {
        const Page page{"p", "text/html", charset, html, {}};
        for (const NSData& data : {propertyList(page, NSPropertyListBinaryFormat_v1_0), MIMEHTML(page)})
            EXPECT_EQ(documentSource(WebArchive::initWithData(data)), source) << name;
    }
}

} // namespace
} // namespace kelvo
