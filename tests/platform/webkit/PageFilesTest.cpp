#include "platform/webkit/PageFiles.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {
namespace {

using tests::TemporaryFolder;
using namespace std::string_literals;

class PageFilesTest : public testing::Test {
protected:
    TemporaryFolder folder;

    NSURL url(const std::string& name) const {
        return NSURL::URLWithString(NSString::stringWithUTF8String("file://" + folder.path(name)));
    }
    /// For a page in the folder "page".
    bool mayLoad(const std::string& name) const { return PageFiles(url("page/p.html")).mayLoad(url(name)); }
};

TEST_F(PageFilesTest, FilesAreWhatPagesConsistOf) {
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"a.PNG", "", true},
        {"a.css", "p{}", true},
        {"a.woff2", "", true},
        {"a.html", "", true},
        {"a.svg", "", true},
        {"passwords.txt", "GIF", false},
        {"data.json", "[1]", false},
        {"archive.zip", "PK", false},
        {"noname", "x=1", false},
        {"empty", "", false},
        {"gif", "GIF89a\1\0", true},
        {"photo.orig", "\xFF\xD8\xFF\xE0", true},
        {"webp", "RIFF\4\0\0\0WEBPVP8 "s, true},
        {"wave", "RIFF\4\0\0\0WAVEfmt "s, false},
        {"avif", "\0\0\0\034ftypavif"s, true},
        {"movie", "\0\0\0\034ftypisom"s, false},
        {"font", "\0\1\0\0\0\x10"s, true},
        {"true", "true && leak()", false},
        {"BM", "BM=1//", false},
        {"document", "\xEF\xBB\xBF \n<!DocType html>", true},
        {"drawing", "<svg xmlns=''/>", true},
        {"comment", "<!-- secret = 1", false},
        {"page/s.js", "s", true},
        {"page/below/s.mjs", "s", true},
        {"s.js", "s", false},
        {"pages/s.js", "s", false},
        {"gif.js", "GIF89a=1", false},
    };
    for (const auto& [name, contents, isLoaded] : rows) {
        folder.write("page/p.html", "");
        folder.write(name, contents);
        EXPECT_EQ(mayLoad(name), isLoaded) << name;
    }
}

TEST_F(PageFilesTest, OnlyRegularFilesAreLoaded) {
    folder.write("page/p.html", "");
    folder.write("other/s.js", "");
    folder.write("other/a b\xC3\xA4.png", "");
    ASSERT_EQ(mkfifo(folder.path("fifo.png").c_str(), 0600), 0);
    ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
    for (const auto& [from, to] :
         {std::pair<const char*, std::string>{"page/link.js", folder.path("other/s.js")},
          {"page/zero.png", "/dev/zero"},
          {"fifo-link.png", folder.path("fifo.png")},
          {"nothing.png", folder.path("none")},
          {"folder.png", folder.path("other")},
          {"good", folder.path("other/a b\xC3\xA4.png")},
          {"page/alias", folder.path("page")}})
        ASSERT_EQ(symlink(to.c_str(), folder.path(from).c_str()), 0);
    for (const char* refused :
         {"fifo.png", "fifo", "fifo-link.png", "page/zero.png", "nothing.png", "none.png", "folder.png",
          "other", "page/link.js", "a%00.png", "page/../other/s.js"})
        EXPECT_FALSE(mayLoad(refused)) << refused;
    for (const char* loaded : {"good", "other/a%20b%C3%A4.png", "other/a%20b%C3%A4.png?v=1#f"})
        EXPECT_TRUE(mayLoad(loaded)) << loaded;
}

TEST_F(PageFilesTest, ScriptsBelongToThePageTheyStandWith) {
    folder.write("page/s.js", "");
    ASSERT_EQ(symlink("page", folder.path("alias").c_str()), 0);
    const std::string path = folder.path();
    const std::string script = "file://" + path + "/page/s.js";
    const std::tuple<std::string, bool> rows[] = {
        {"file://" + path + "/page/p.html", true},
        {"file://localhost" + path + "/alias/p.html?q#f", true},
        {"file://" + path + "/page/", true},
        {"file://" + path + "/", true},
        {"file://" + path + "/page", true},
        {"file://" + path + "/pag/p.html", false},
        {"file://elsewhere" + path + "/page/p.html", false},
        {"file:///p.html", false},
        {"http://h" + path + "/page/p.html", false},
    };
    for (const auto& [page, isLoaded] : rows)
        EXPECT_EQ(PageFiles(NSURL::URLWithString(NSString::stringWithUTF8String(page)))
                      .mayLoad(NSURL::URLWithString(NSString::stringWithUTF8String(script))),
                  isLoaded)
            << page;
    EXPECT_FALSE(PageFiles(nullptr).mayLoad(url("page/s.js")));
    EXPECT_FALSE(PageFiles(nullptr).mayLoad(NSURL::URLWithString(
        NSString::stringWithUTF8String("file://elsewhere" + folder.write("a.png", "")))));
}

} // namespace
} // namespace kelvo
