#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include <unistd.h>

namespace kelvo {
namespace {

std::string text(const NSString& string) {
    return string.isNil() ? "(nil)" : string.UTF8String();
}

NSString string(std::string_view bytes) {
    return NSString::stringWithUTF8String(bytes);
}

TEST(PathUtilities, TakesPathsApart) {
    const char* const rows[][6] = {
        {"/tmp/scratch.tiff", "/|tmp|scratch.tiff|", "scratch.tiff", "tiff", "/tmp", "/tmp/scratch"},
        {"/tmp/lock/", "/|tmp|lock|/|", "lock", "", "/tmp", "/tmp/lock"},
        {"/tmp", "/|tmp|", "tmp", "", "/", "/tmp"},
        {"/", "/|", "/", "", "/", "/"},
        {"//", "/|", "/", "", "/", "/"},
        {"", "", "", "", "", ""},
        {"scratch..tiff", "scratch..tiff|", "scratch..tiff", "tiff", "", "scratch."},
        {"a//b.app//", "a|b.app|/|", "b.app", "app", "a", "a//b"},
        {"//a", "/|a|", "a", "", "/", "//a"},
        {".profile", ".profile|", ".profile", "", "", ".profile"},
        {"/x.d/.b.c", "/|x.d|.b.c|", ".b.c", "c", "/x.d", "/x.d/.b"},
        {"/x.d/b", "/|x.d|b|", "b", "", "/x.d", "/x.d/b"},
        {"a.", "a.|", "a.", "", "", "a."},
    };
    for (const auto& [given, expected, last, extension, withoutLast, withoutExtension] : rows) {
        SCOPED_TRACE(given);
        const NSString path = string(given);
        std::string components;
        for (const Value& component : pathComponents(path))
            components += component.string().UTF8String() + '|';
        EXPECT_EQ(components, expected);
        EXPECT_EQ(text(lastPathComponent(path)), last);
        EXPECT_EQ(text(pathExtension(path)), extension);
        EXPECT_EQ(text(stringByDeletingLastPathComponent(path)), withoutLast);
        EXPECT_EQ(text(stringByDeletingPathExtension(path)), withoutExtension);
    }
    const NSString plain = u"plain";
    EXPECT_TRUE(lastPathComponent(plain).isIdenticalTo(plain));
    EXPECT_TRUE(stringByDeletingPathExtension(plain).isIdenticalTo(plain));
    EXPECT_TRUE(pathComponents(nullptr).isNil() && lastPathComponent(nullptr).isNil() &&
                pathExtension(nullptr).isNil() && stringByDeletingLastPathComponent(nullptr).isNil());
}

TEST(PathUtilities, PutsPathsTogether) {
    const char* const rows[][4] = {
        {"/tmp", "x", "/tmp/x", "/tmp.x"},
        {"/tmp/", "x", "/tmp/x", "/tmp.x"},
        {"/", "x", "/x", "/"},
        {"", "x", "x", ""},
        {"", "/x/", "/x", ""},
        {"/tmp", "//x//", "/tmp/x", "/tmp"},
        {"/tmp/", "", "/tmp", "/tmp/"},
        {"/", "/", "/", "/"},
        {"a.", "b/c", "a./b/c", "a."},
        {"a.b", "c.d", "a.b/c.d", "a.b.c.d"},
    };
    for (const auto& [given, tail, withComponent, withExtension] : rows) {
        EXPECT_EQ(text(stringByAppendingPathComponent(string(given), string(tail))), withComponent) << given;
        EXPECT_EQ(text(stringByAppendingPathExtension(string(given), string(tail))), withExtension) << given;
    }
    EXPECT_EQ(text(stringByAppendingPathComponent(u"/a", nullptr)), "/a");
    EXPECT_TRUE(stringByAppendingPathComponent(nullptr, u"a").isNil());
}

TEST(PathUtilities, HomeAndTilde) {
    const tests::ScopedVariable home("HOME", "/home/me//");
    const tests::ScopedVariable temporary("TMPDIR", "/scratch");
    EXPECT_EQ(text(NSHomeDirectory()), "/home/me");
    EXPECT_EQ(text(NSTemporaryDirectory()), "/scratch/");
    EXPECT_EQ(text(stringByExpandingTildeInPath(u"~")), "/home/me");
    EXPECT_EQ(text(stringByExpandingTildeInPath(u"~/a/")), "/home/me/a");
    EXPECT_EQ(text(stringByExpandingTildeInPath(u"~no such user/a")), "~no such user/a");
    EXPECT_EQ(text(stringByExpandingTildeInPath(u"a/~")), "a/~");
    EXPECT_EQ(text(stringByExpandingTildeInPath(u"~root")), text(NSHomeDirectoryForUser(u"root")));
    EXPECT_EQ(text(stringByAbbreviatingWithTildeInPath(u"/home/me")), "~");
    EXPECT_EQ(text(stringByAbbreviatingWithTildeInPath(u"/home/me/a")), "~/a");
    EXPECT_EQ(text(stringByAbbreviatingWithTildeInPath(u"/home/men")), "/home/men");
    EXPECT_TRUE(stringByAbbreviatingWithTildeInPath(nullptr).isNil());
    EXPECT_TRUE(isAbsolutePath(u"/a") && isAbsolutePath(u"~a"));
    EXPECT_FALSE(isAbsolutePath(u"a/") || isAbsolutePath(u"") || isAbsolutePath(nullptr));
    {
        const tests::ScopedVariable rootHome("HOME", "/");
        const tests::ScopedVariable relative("TMPDIR", "relative");
        EXPECT_EQ(text(stringByAbbreviatingWithTildeInPath(u"/a")), "/a");
        EXPECT_EQ(text(stringByExpandingTildeInPath(u"~/a")), "/a");
        EXPECT_EQ(text(NSTemporaryDirectory()), "/tmp/");
    }
    const tests::ScopedVariable none("HOME", nullptr);
    EXPECT_TRUE(NSHomeDirectory().characters().starts_with(u'/'));
}

TEST(PathUtilities, Standardizes) {
    const tests::TemporaryFolder folder;
    const std::string root = std::filesystem::canonical(folder.path()).string();
    folder.write("real/deep/file", "x");
    ASSERT_EQ(::symlink("real/deep", folder.path("link").c_str()), 0);
    const std::string rows[][3] = {
        {"/no such/./a//b/", "/no such/a/b", "/no such/a/b"},
        {"/no such/a/../../../b", "/b", "/b"},
        {"/..", "/", "/"},
        {"//", "/", "/"},
        {"a/./../b/", "a/../b", "a/../b"},
        {"./", ".", "."},
        {"", "", ""},
        // The link leads to real/deep, so its parent is real.
        {root + "/link/../x", root + "/real/x", root + "/real/x"},
        {root + "/link/./file", root + "/link/file", root + "/real/deep/file"},
    };
    for (const auto& [given, standardized, resolved] : rows) {
        EXPECT_EQ(text(stringByStandardizingPath(string(given))), standardized) << given;
        EXPECT_EQ(text(stringByResolvingSymlinksInPath(string(given))), resolved) << given;
    }
    const NSString standard = u"/a/b";
    EXPECT_TRUE(stringByStandardizingPath(standard).isIdenticalTo(standard));
}

} // namespace
} // namespace kelvo
