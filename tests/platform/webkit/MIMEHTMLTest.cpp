#include "platform/foundation/Value.h"
#include "platform/webkit/FrameReferences.h"
#include "platform/webkit/MIMEEngineMessages.h"
#include "platform/webkit/MIMEParts.h"
#include "platform/webkit/WebArchive.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelvo {
namespace {

WebArchive archive(const std::string& message) {
    return WebArchive::initWithData(NSData::dataWithBytes(message));
}

const std::string related = "MIME-Version: 1.0\r\nContent-Type: multipart/related; boundary=\"-b\"\r\n";

std::string part(const std::string& header, const std::string& contents) {
    return "---b\r\n" + header + "\r\n\r\n" + contents + "\r\n";
}

std::string message(const std::string& parts, const std::string& header = related) {
    return header + "\r\n" + parts + "---b--\r\n";
}

std::string repeated(const char* text, int count) {
    std::string result;
    while (count-- > 0)
        result += text;
    return result;
}

std::string address(const WebResource& resource) {
    return resource.URL().absoluteString().UTF8String();
}

std::string text(const WebResource& resource) {
    return std::string(resource.data().characters());
}

/// The documents of the archive and its frames, each before those within it, with the depth before each.
std::string outline(const WebArchive& page, int depth = 0) {
    std::string lines = std::to_string(depth) + " " + address(page.mainResource()) + "\n";
    for (const WebArchive& frame : page.subframeArchives())
        lines += outline(frame, depth + 1);
    return lines;
}

TEST(MIMEHTMLTest, ReadsThePageAndItsFiles) {
    const WebArchive page =
        archive("\xEF\xBB\xBF\r\n" +
                message(part("Content-Type: Text/HTML; charset=\"iso-8859-2\"\r\n"
                             "Content-Transfer-Encoding: quoted-printable\r\n"
                             "Content-Location: http://h/a\r\n\t/page.html",
                             "=A1<img src=3D\"i.png\"> and =\r\nso on") +
                            part("Content-Type: image/png\r\nContent-Transfer-Encoding: base64\r\n"
                                 "Content-ID: <i@h>\r\nContent-Location: i.png",
                                 "iVBO\r\nRw==") +
                            part("Content-Type: text/css\r\nContent-ID: <s@h>", "p {}") +
                            part("Content-Type: text/plain\r\nContent-Location: http://h/not a b", "x"),
                        related + "Content-Location: http://h/a/\r\n"));
    EXPECT_EQ(address(page.mainResource()), "http://h/a/page.html");
    EXPECT_EQ(page.mainResource().MIMEType(), u"text/html");
    EXPECT_EQ(page.mainResource().textEncodingName(), u"iso-8859-2");
    EXPECT_EQ(text(page.mainResource()), "\xA1<img src=\"i.png\"> and so on");
    std::string files;
    for (const WebResource& resource : page.subresources())
        files += address(resource) + " " + resource.MIMEType().UTF8String() + " " + text(resource) + "\n";
    EXPECT_EQ(files, "http://h/a/i.png image/png \x89PNG\n"
                     "cid:i@h image/png \x89PNG\n"
                     "cid:s@h text/css p {}\n"
                     "http://h/not%20a%20b text/plain x\n");
    EXPECT_TRUE(page.subframeArchives().empty());
}

TEST(MIMEHTMLTest, PutsFramesWhereTheyAreNamed) {
    const auto html = [](const std::string& place, const std::string& contents) {
        return part("Content-Type: text/html\r\nContent-Location: " + place, contents);
    };
    const WebArchive page = archive(
        message(html("http://h/unnamed", "") + html("http://h/inner", "<iframe src='main.html'>") +
                    html("http://h/main.html", "<FRAME name=x SRC=second?a&amp;b#c><frame src='cid:f@h'>"
                                               "<iframe src=second?a&b></iframe><frame src=none>") +
                    part("Content-Type: text/html\r\nContent-ID: <f@h>", "<iframe\nsrc=http://h/inner>") +
                    part("Content-Type: text/plain\r\nContent-Location: http://h/second?a&b", "words") +
                    part("Content-Type: text/html\r\nContent-ID: <m@h>", ""),
                "MIME-Version: 1.0\nContent-Type: multipart/related; boundary=-b; start=\"<m@h>\"\n"));
    EXPECT_EQ(outline(page), "0 cid:m@h\n1 http://h/unnamed\n1 http://h/inner\n2 http://h/main.html\n"
                             "3 http://h/second?a&b\n3 cid:f@h\n");
    EXPECT_TRUE(page.mainResource().frameName() == u"");
    const WebArchive nowhere =
        archive(message(html("a/b.html", "<frame src=c>") +
                        part("Content-Type: text/plain\r\nContent-Location: a/c", "words")));
    EXPECT_EQ(outline(nowhere), "0 \n1 \n") << "addresses that start nowhere lead from part to part only";
    const std::string deep = [&] {
        std::string parts;
        for (int index = 0; index < 10000; ++index)
            parts += html("http://h/" + std::to_string(index),
                          "<iframe src=/" + std::to_string(index + 1) + "></iframe>");
        return outline(archive(message(parts)));
    }();
    EXPECT_NE(deep.find("\n255 http://h/255\n1 http://h/256\n2 http://h/257\n"), std::string::npos);
    EXPECT_EQ(std::ranges::count(deep, '\n'), 10000);
}

TEST(MIMEHTMLTest, TellsPagesFromOtherMessages) {
    const std::string picture = part("Content-Type: image/png", "x");
    const std::string letter = part("Content-Type: text/plain", "x") + part("Content-Type: text/html", "x");
    const auto multipart = [](const std::string& kind) {
        return "MIME-Version: 1.0\nContent-Type: multipart/" + kind + "; boundary=-b\n";
    };
    const struct {
        const char* name;
        std::string message;
        const char* type;
    } rows[] = {
        {"picture as a page", message(picture), "image/png"},
        {"picture and a page", message(picture + letter), "text/html"},
        {"mixture with a page", message(letter, multipart("mixed")), "text/html"},
        {"mixture without", message(picture, multipart("mixed")), ""},
        {"nothing related", message(""), ""},
        {"parts within parts",
         message(part("Content-Type: multipart/alternative; boundary=c", "--c\n\nx\n--c\nContent-Type: "
                                                                         "text/html\n\nx\n--c--\n")),
         "text/html"},
        {"page alone", "MIME-Version: 1.0\nContent-Type: text/html\n\nx", "text/html"},
        {"page of a web server", "Content-Type: text/html\n\nx", ""},
        {"words", "MIME-Version: 1.0\nContent-Type: text/plain\n\nx", ""},
        {"no boundary", "MIME-Version: 1.0\nContent-Type: multipart/related\n\n--\n\nx", ""},
        {"no header", "Content-Type: text/html\nMIME-Version\n\nx", ""},
        {"too many parts", message(repeated("---b\n\n", 70000) + picture), ""},
        {"too many fields within a message",
         message(part("Content-Type: message/rfc822", repeated("a:b\n", 300000)) + letter), ""},
        {"too many fields within a digest",
         message("---b\n\n" + repeated("a:b\n", 300000) + letter, multipart("digest")), ""},
        {"too many parameters",
         "Content-Type: multipart/related; boundary=-b" + repeated(";", 300000) + "\n\n" + picture, ""},
    };
    for (const auto& row : rows) {
        const WebArchive page = archive(row.message);
        EXPECT_EQ(page.mainResource().MIMEType().UTF8String(), row.type) << row.name;
        EXPECT_EQ(page.isNil(), *row.type == '\0') << row.name;
    }
    std::string nested = "MIME-Version: 1.0\nContent-Type: multipart/related; boundary=0\n\n";
    for (int level = 0; level < 10000; ++level)
        nested += "--" + std::to_string(level) +
                  "\nContent-Type: multipart/related; boundary=" + std::to_string(level + 1) + "\n\n";
    EXPECT_TRUE(archive(nested + "--10000\nContent-Type: text/html\n\nx").isNil());
}

TEST(FrameReferencesTest, ReadsTagsAsTheyAreWritten) {
    const struct {
        const char* html;
        std::vector<NSString> references;
    } rows[] = {
        {"<frame src=a><frame SRC = 'b c'/><iframe\nx=\"src=no>\" src=\"d>e\">", {u"a", u"b c", u"d>e"}},
        {"<frames src=no><fram src=no>frame src=no<frame/src=yes>", {u"yes"}},
        {"<frame><frame src><frame src=><frame src=a src=b>", {u"", u"", u"a"}},
        {"<frame src='a&amp;&amp;amp;b&lt'", {u"a&&amp;b&lt"}},
        {"<frame src=\"never ends <frame src=x", {u"never ends <frame src=x"}},
        {"<frame =src=a src=\xFC", {u"\uFFFD"}},
        {"<<<<frame src=a><iframes src=no>", {u"a"}},
        {"<", {}},
        {"<frame", {}},
    };
    for (const auto& row : rows)
        EXPECT_EQ(frameReferencesInHTML(NSData::dataWithBytes(std::string_view(row.html)), 9), row.references)
            << row.html;
    EXPECT_EQ(frameReferencesInHTML(NSData::dataWithBytes("<frame src=a><frame src=b>"), 1).size(), 1u);
}

TEST(MIMEHTMLTest, WhatTheEngineCannotHaveMadeIsNoArchive) {
    const auto archiveOfPart = [](long long place, long long length) {
        return archiveFromMIMEParts(NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{NSData::dataWithBytes("0123456789"), mimeengine::contentsKey},
             {NSArray::arrayWithObjects({NSMutableDictionary::dictionaryWithObjectsAndKeys(
                  {{u"text/html", mimeengine::typeKey},
                   {NSNumber::numberWithLongLong(place), mimeengine::placeKey},
                   {NSNumber::numberWithLongLong(length), mimeengine::lengthKey}})}),
              mimeengine::partsKey}}));
    };
    EXPECT_EQ(text(archiveOfPart(3, 7).mainResource()), "3456789");
    EXPECT_FALSE(archiveOfPart(10, 0).isNil());
    const std::pair<long long, long long> wrong[] = {
        {3, 8}, {11, 0}, {-1, 1}, {1, -1}, {1, 0x7FFFFFFFFFFFFFFF}};
    for (const auto& [place, length] : wrong)
        EXPECT_TRUE(archiveOfPart(place, length).isNil()) << place << ' ' << length;
    EXPECT_TRUE(archiveFromMIMEParts(NSDictionary::dictionary()).isNil());
}

} // namespace
} // namespace kelvo
