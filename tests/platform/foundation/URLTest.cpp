#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSURL.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>

#include <sys/stat.h>

namespace kelvo {
namespace {

// Nil is "(nil)", so that a row can tell it from the empty string.
std::string text(const NSString& string) {
    return string.isNil() ? "(nil)" : string.UTF8String();
}

NSString string(std::string_view bytes) {
    return NSString::stringByRepairingUTF8String(bytes);
}

NSURL url(std::string_view bytes) {
    return NSURL::URLWithString(string(bytes));
}

TEST(URL, StrictFormFollowsTheGrammar) {
    std::string row;
    std::istringstream accepted(
        "http://a HTTP://A/ a: a:b a+-.1:b a:? a:# //h ///p ?q #f a/b:c ./a:b %41 "
        "http://u:p:q@h:80/p?q?/#f?/ http://@:/ http://h: http://%41%e4/ http://1.2.3.4.5/ http://999.1.1.1/ "
        "http://[::]/ http://[::1]:8080 http://[1:2:3:4:5:6:7:8] http://[1:2:3:4:5:6:1.2.3.4] http://[1::8] "
        "http://[::ffff:255.0.10.1] http://[1:2:3:4:5:6:7::] http://[::2:3:4:5:6:7:8] http://[v1F.a:b] "
        "http://[V0.~] mailto:a@b.c data:,a;b urn:a:b:c file:///a%FFb x:/.//y a:b@c/d//");
    while (accepted >> row)
        EXPECT_FALSE(url(row).isNil()) << row;
    std::istringstream refused(
        "http://\xC3\xA4/ a:\" a:< a:\\ a:^ a:` a:{ a:| a:% a:%4 a:%4g a:%g4 a:#b#c :a 1:b 1a:b/c a_b:c "
        "a%41:b http://a@b@c/ http://h:8o/ http://h:-1 http://h:80:80/ a:[ a:] a:?[ http://u[@h/ http://[ "
        "http://] http://[] http://[::1 http://::1] http://[::1]a http://a[::1] http://[1] "
        "http://[1:2:3:4:5:6:7] http://[1:2:3:4:5:6:7:8:9] http://[1::2::3] http://[:::] http://[12345::] "
        "http://[g::] http://[:1:2:3:4:5:6:7:8] http://[1:2:3:4:5:6:7:8::] http://[1:2:3:4:5:6:7:1.2.3.4] "
        "http://[1.2.3.4::] http://[::256.1.1.1] http://[::1.2.3] http://[::01.2.3.4] http://[::1.2.3.4.5] "
        "http://[::1%25eth0] http://[v.a] http://[v1.] http://[v1a] http://[vg.a] http://[v1.%41]");
    while (refused >> row)
        EXPECT_TRUE(url(row).isNil()) << row;
    for (const char* blank : {"", " ", "http://a b", "http://a/\n"})
        EXPECT_TRUE(url(blank).isNil()) << blank;
    EXPECT_TRUE(NSURL::URLWithString(nullptr).isNil());
    EXPECT_TRUE(NSURL::URLWithString(NSString(std::u16string_view(u"a:\0b", 4))).isNil());
}

/// What a URL says of itself, part after part: scheme, specifier, user, password, host, port, path as it is,
/// path, query, fragment, last component and its extension.
std::string partsOf(const NSURL& it) {
    std::string parts = text(it.scheme());
    for (const NSString& part : {it.resourceSpecifier(), it.user(), it.password(), it.host()})
        parts += " " + text(part);
    parts += " " + std::to_string(it.port());
    for (const NSString& part :
         {it.rawPath(), it.path(), it.query(), it.fragment(), it.lastPathComponent(), it.pathExtension()})
        parts += " " + text(part);
    return parts;
}

TEST(URL, Components) {
    const std::pair<const char*, const char*> rows[] = {
        {"http://u%40:p:q@Ex%41mple.com:080/a%20b/c.tar.gz?x=1.2#f/g.h",
         "http //u%40:p:q@Ex%41mple.com:080/a%20b/c.tar.gz?x=1.2#f/g.h u%40 p:q ExAmple.com 80 "
         "/a%20b/c.tar.gz /a b/c.tar.gz x=1.2 f/g.h c.tar.gz gz"},
        {"http://h", "http //h (nil) (nil) h -1   (nil) (nil)  (nil)"},
        {"HTTPS://@h:/?#", "HTTPS //@h:/?#  (nil) h -1 / /   / (nil)"},
        {"http://:@[::1]:65536//", "http //:@[::1]:65536//   ::1 -1 // / (nil) (nil) / (nil)"},
        {"x://h:65535/.profile",
         "x //h:65535/.profile (nil) (nil) h 65535 /.profile /.profile (nil) (nil) .profile (nil)"},
        {"mailto:a@b.c?s", "mailto a@b.c?s (nil) (nil) (nil) -1 (nil) (nil) s (nil) (nil) (nil)"},
        {"x:", "x  (nil) (nil) (nil) -1 (nil) (nil) (nil) (nil) (nil) (nil)"},
        {"x:/a/b%2Ejpg//", "x /a/b%2Ejpg// (nil) (nil) (nil) -1 /a/b%2Ejpg// /a/b.jpg (nil) (nil) b.jpg jpg"},
        {"a/b.", "(nil) (nil) (nil) (nil) (nil) -1 a/b. a/b. (nil) (nil) b. (nil)"},
        {"http://h/%FF%C3%A4",
         "http //h/%FF%C3%A4 (nil) (nil) h -1 /%FF%C3%A4 /\uFFFD\u00E4 (nil) (nil) \uFFFD\u00E4 (nil)"},
    };
    for (const auto& [source, parts] : rows) {
        EXPECT_EQ(partsOf(url(source)), parts);
        EXPECT_EQ(text(url(source).absoluteString()), source);
    }
    const NSURL nil;
    EXPECT_EQ(partsOf(nil), "(nil) (nil) (nil) (nil) (nil) -1 (nil) (nil) (nil) (nil) (nil) (nil)");
    EXPECT_TRUE(nil.absoluteString().isNil() && nil.absoluteURL().isNil() && nil.baseURL().isNil());
    EXPECT_FALSE(nil.isFileURL());
}

TEST(URL, ResolvesReferences) {
    std::vector<std::array<std::string, 3>> rows = {
        {"http://a/b/c/d;p?q", "", "http://a/b/c/d;p?q"},
        {"http://a", "g", "http://a/g"},
        {"http://a?q#f", "", "http://a?q"},
        {"http://a/b?q", "?", "http://a/b?"},
        {"http://a/b", "x:/c/../d", "x:/d"},
        {"http://a//b//c", "../../d", "http://a//d"},
        {"mailto:a", "b", "mailto:b"},
        {"file:///a/b", "//h/c", "file://h/c"},
        // What the bare algorithm would turn into an authority, or into a scheme.
        {"x:/a", "/..//b", "x:/.//b"},
        {"x:/a/b", "..//c", "x:/.//c"},
        {"a", "./b:c", "./b:c"},
        {"a/b", "c", "a/c"},
    };
    // The examples of RFC 3986, 5.4.1 and 5.4.2.
    std::istringstream examples(
        "g:h g:h g http://a/b/c/g ./g http://a/b/c/g g/ http://a/b/c/g/ /g http://a/g //g http://g ?y "
        "http://a/b/c/d;p?y g?y http://a/b/c/g?y #s http://a/b/c/d;p?q#s g#s http://a/b/c/g#s g?y#s "
        "http://a/b/c/g?y#s ;x http://a/b/c/;x g;x http://a/b/c/g;x g;x?y#s http://a/b/c/g;x?y#s . "
        "http://a/b/c/ ./ http://a/b/c/ .. http://a/b/ x:.. x: ../ http://a/b/ ../g http://a/b/g ../.. "
        "http://a/ ../../ http://a/ ../../g http://a/g ../../../g http://a/g ../../../../g http://a/g /./g "
        "http://a/g /../g http://a/g g. http://a/b/c/g. .g http://a/b/c/.g g.. http://a/b/c/g.. ..g "
        "http://a/b/c/..g ./../g http://a/b/g ./g/. http://a/b/c/g/ g/./h http://a/b/c/g/h g/../h "
        "http://a/b/c/h g;x=1/./y http://a/b/c/g;x=1/y g;x=1/../y http://a/b/c/y g?y/./x "
        "http://a/b/c/g?y/./x g?y/../x http://a/b/c/g?y/../x g#s/./x http://a/b/c/g#s/./x g#s/../x "
        "http://a/b/c/g#s/../x http:g http:g");
    for (std::string reference, absolute; examples >> reference >> absolute;)
        rows.push_back({"http://a/b/c/d;p?q", reference, absolute});
    for (const auto& [from, reference, absolute] : rows) {
        SCOPED_TRACE(from + " + " + reference);
        const NSURL base = url(from);
        const NSURL it = NSURL::URLWithString_relativeToURL(string(reference), base);
        EXPECT_EQ(text(it.absoluteString()), absolute);
        EXPECT_EQ(text(it.relativeString()), reference);
        EXPECT_EQ(it.baseURL(), base);
        EXPECT_EQ(it.absoluteURL(), url(absolute));
        EXPECT_TRUE(it.absoluteURL().baseURL().isNil());
    }
    const NSURL chained = NSURL::URLWithString_relativeToURL(
        u"../e", NSURL::URLWithString_relativeToURL(u"c/d", url("http://a/b/")));
    EXPECT_EQ(text(chained.absoluteString()), "http://a/b/e");
    EXPECT_EQ(text(chained.baseURL().relativeString()), "http://a/b/c/d");
    EXPECT_TRUE(NSURL::URLWithString_relativeToURL(nullptr, url("http://a/")).isNil());
    EXPECT_TRUE(NSURL::URLWithString_relativeToURL(u"a b", url("http://a/")).isNil());
    EXPECT_TRUE(NSURL::URLWithString_relativeToURL(u"", nullptr).isNil());
    EXPECT_FALSE(url("http://a/b") == NSURL::URLWithString_relativeToURL(u"b", url("http://a/")));
}

TEST(URL, TolerantFormEscapesWhatDoesNotBelong) {
    const char* const rows[][2] = {
        {" \t\xC2\xA0http://h/a b\xE3\x80\x80\n", "http://h/a%20b"},
        {"ht\ntp:\r//h/\ta", "http://h/a"},
        {"http://h/\xC3\xA4\xF0\x9F\x98\x80", "http://h/%C3%A4%F0%9F%98%80"},
        {"http://h/100%", "http://h/100%25"},
        {"http://h/%4g%41%", "http://h/%254g%41%25"},
        {"http://h/[a]|b\\c?[x]{y}#z#[", "http://h/%5Ba%5D%7Cb%5Cc?%5Bx%5D%7By%7D#z%23%5B"},
        {"http://a@b:c:d@h:80/", "http://a%40b:c:d@h:80/"},
        {"http://u[:p]@[::1]/", "http://u%5B:p%5D@[::1]/"},
        {"http://b\u00FCcher.de/", "http://b%C3%BCcher.de/"},
        {"12:30/a:b", "12%3A30/a:b"},
        {"ht tp://h/", "ht%20tp%3A//h/"},
        {"\\\\host\\share", "%5C%5Chost%5Cshare"},
        {"http://h:8o/", "(nil)"},
        {"http://[zz]/", "(nil)"},
        {"http://[::1/", "(nil)"},
        {" \t\r\n", "(nil)"},
        {"", "(nil)"},
    };
    for (const auto& [given, made] : rows)
        EXPECT_EQ(text(NSURL::URLWithTolerantString(string(given)).absoluteString()), made) << given;
    EXPECT_EQ(text(NSURL::URLWithTolerantString(u"x:\xD800y\xDC00").absoluteString()),
              "x:%EF%BF%BDy%EF%BF%BD");
    EXPECT_TRUE(NSURL::URLWithTolerantString(nullptr).isNil());
}

TEST(URL, FileURLsKeepEveryByteOfAName) {
    const tests::TemporaryFolder folder;
    std::string name;
    for (int byte = 1; byte < 256; ++byte) {
        if (byte != '/')
            name += static_cast<char>(byte);
    }
    const NSFileManager& files = NSFileManager::defaultManager();
    const NSString path = files.stringWithFileSystemRepresentation(folder.write(name, "x"));
    const NSURL file = NSURL::fileURLWithPath(path);
    ASSERT_TRUE(file.isFileURL());
    EXPECT_EQ(file.path(), path);
    EXPECT_EQ(text(file.host()), "");
    EXPECT_TRUE(files.fileExistsAtPath(NSURL::URLWithString(file.absoluteString()).path()));
    EXPECT_EQ(files.fileSystemRepresentationWithPath(file.lastPathComponent()), name);

    ASSERT_EQ(::mkdir(folder.path("d.rtfd").c_str(), 0777), 0);
    const NSURL directory = NSURL::fileURLWithPath(string(folder.path("d.rtfd")));
    EXPECT_EQ(text(directory.absoluteString()), "file://" + folder.path("d.rtfd/"));
    EXPECT_EQ(text(directory.path()), folder.path("d.rtfd"));
    EXPECT_EQ(text(directory.lastPathComponent()), "d.rtfd");
    EXPECT_EQ(text(directory.pathExtension()), "rtfd");
    EXPECT_EQ(NSURL::fileURLWithPath(string(folder.path("d.rtfd/"))), directory);

    EXPECT_EQ(text(NSURL::fileURLWithPath(u"/").absoluteString()), "file:///");
    EXPECT_EQ(text(NSURL::fileURLWithPath(u"//x:y?#").absoluteString()), "file:////x:y%3F%23");
    const NSString inWorkingFolder = NSURL::fileURLWithPath(u"no such file").path();
    EXPECT_EQ(text(inWorkingFolder), text(files.currentDirectoryPath()) + "/no such file");
    EXPECT_TRUE(NSURL::fileURLWithPath(nullptr).isNil() && NSURL::fileURLWithPath(u"").isNil());
    EXPECT_TRUE(NSURL::fileURLWithPath(NSString(std::u16string_view(u"/a\0b", 4))).isNil());
    EXPECT_TRUE(url("FILE:x").isFileURL());
    EXPECT_FALSE(url("files:///x").isFileURL());
    EXPECT_EQ(text(url("file:///..%2F%2e./x/").path()), "/../../x");
}

TEST(URL, LongInputsTakeLinearTime) {
    // A step quadratic in these lengths would take minutes.
    constexpr std::size_t length = 200'000;
    const auto repeated = [](std::string_view part) {
        std::string all;
        while (all.size() < length)
            all += part;
        return all;
    };
    const NSURL base = url("http://a" + repeated("/b"));
    EXPECT_EQ(text(NSURL::URLWithString_relativeToURL(string(repeated("../")), base).rawPath()).substr(0, 1),
              "/");
    for (const char* part :
         {"../", "./", "%", "a/../", "//", "@", ":", "[", "1:", "#", "?", "\xC3\xA4", "a/b/../../", "%41"}) {
        const NSString given = string("x://h/" + repeated(part));
        EXPECT_FALSE(NSURL::URLWithTolerantString(given).isNil()) << part;
        NSURL::URLWithString_relativeToURL(string(repeated(part)), base);
        NSURL::URLWithString(string("http://" + repeated(part)));
        NSURL::URLWithTolerantString(string(repeated(part)));
    }
}

} // namespace
} // namespace kelvo
