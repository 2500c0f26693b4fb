#include "url/NSURLKelvoExtensions.h"
#include "support/TemporaryFolder.h"
#include "url/URLUtilities.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

std::string shown(const NSString& string) {
    return string.isNil() ? "nil" : string.UTF8String();
}

std::string shown(const NSURL& url) {
    return shown(url.absoluteString());
}

TEST(NSURLKelvoExtensionsTest, PathExtensionsAndLastComponents) {
    const std::tuple<const char16_t*, std::string, std::string> rows[] = {
        {u"http://h/a/b.html?x=1.2#f.y", "html", "b.html"},
        {u"http://h", "", ""},
        {u"http://h.com/", "", "/"},
        {u"file:///tmp/x.tar.gz", "gz", "x.tar.gz"},
        {u"file:///tmp/x.r%74f", "rtf", "x.rtf"},
        {u"http://h/x.r%74f", "r%74f", "x.rtf"},
        {u"http://h/a.b/.html", "", ".html"},
        {u"FILE:///a.b/c", "", "c"},
        {u"mailto:a.b", "", "nil"},
    };
    for (const auto& [address, extension, component] : rows) {
        const NSURL url = NSURL::URLWithString(address);
        EXPECT_EQ(shown(pathExtension(url)), extension) << shown(url);
        EXPECT_EQ(shown(lastPathComponent(url)), component) << shown(url);
    }
    EXPECT_EQ(shown(pathExtension(NSURL())), "");
}

TEST(NSURLKelvoExtensionsTest, BasesForRendering) {
    const tests::TemporaryFolder folder;
    folder.write("a b.html", "");
    const std::string files = "file://" + folder.path();
    const std::string rows[][3] = {
        {files + "/a%20b.html", files + "/a%20b.html", files + "/a%20b.html#new"},
        {files, files, files + "#new"},
        {files + "/none", "nil", "nil"},
        {"FEED://h/x#old", "http://h/x#old", "http://h/x#new"},
        {"feed:HTTP://h/x", "HTTP://h/x", "HTTP://h/x#new"},
        {"feed:https://h/x", "http:https://h/x", "http:https://h/x#new"},
        {"HTTPS://h/#a#b", "nil", "nil"},
        {"HTTPS://h/", "HTTPS://h/", "HTTPS://h/#new"},
        {"ftp://h/", "nil", "nil"},
        {"about:blank", "nil", "nil"},
        {"data:,http:", "nil", "nil"},
        {"h/x", "nil", "nil"},
    };
    for (const auto& [address, base, anchored] : rows) {
        const NSURL url = NSURL::URLWithString(NSString::stringWithUTF8String(address));
        EXPECT_EQ(shown(baseURLForWebKit(url)), base) << address;
        EXPECT_EQ(shown(baseURLForWebKitUsingAnchor(url, u"new")), anchored) << address;
    }
    const NSURL url = NSURL::URLWithString(u"http://h/#old");
    EXPECT_TRUE(baseURLForWebKit(url).isIdenticalTo(url));
    EXPECT_TRUE(URLWithAnchor(url, NSString()).isIdenticalTo(url));
    EXPECT_TRUE(URLWithAnchor(url, u"").isIdenticalTo(url) && URLWithAnchor(url, u"a b").isNil());
    EXPECT_TRUE(URLWithAnchor(NSURL(), u"new").isNil());
    EXPECT_EQ(shown(URLWithAnchor(NSURL::URLWithString_relativeToURL(u"b", url), u"%20")), "http://h/b#%20");
}

TEST(NSURLKelvoExtensionsTest, Formats) {
    using NSURLKelvoExtensions::URLWithFormat;
    EXPECT_EQ(shown(URLWithFormat(u"http://%@:%d/%s", u"h", 80, "x")), "http://h:80/x");
    EXPECT_TRUE(URLWithFormat(NSString(), 1).isNil() && URLWithFormat(u"").isNil());
    EXPECT_TRUE(URLWithFormat(u"http://h/%@", u"a b").isNil());
}

TEST(URLUtilitiesTest, MarkupTypes) {
    for (const char16_t* type :
         {u"text/", u"TEXT/plain", u"application/xhtml+xml", u"application/XML", u"application/rss+xml",
          u"application/rdf", u"application/rss", u"application/RSD", u"Application/SGML",
          u"application/vnd.HTMl", u"application/rdf+xml", u"application/rsd+xml"})
        EXPECT_TRUE(isMarkupMIMEType(type)) << shown(NSString(type));
    for (const char16_t* type : {u"", u"text", u" text/html", u"application/", u"application/RSS",
                                 u"application/RDF", u"application/pdf", u"image/svg+xml", u"html"})
        EXPECT_FALSE(isMarkupMIMEType(type)) << shown(NSString(type));
    EXPECT_FALSE(isMarkupMIMEType(NSString()));
}

} // namespace
} // namespace kelvo
