#include "files/KelvoFileManagerExtensions.h"

#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

const NSFileManager& files = NSFileManager::defaultManager();

class KelvoFileManagerExtensionsTest : public testing::Test {
protected:
    tests::TemporaryFolder folder;
    const NSString root = NSString::stringWithUTF8String(folder.path());

    void link(const std::string& target, const std::string& name) const {
        std::filesystem::create_symlink(target, folder.path(name));
    }
    /// The entries, each followed by a blank; "@" stands for the folder.
    std::string shown(const NSArray& listing) const {
        std::string result;
        for (const Value& value : listing) {
            result += value.string().UTF8String() + " ";
            if (const auto at = result.find(folder.path()); at != result.npos)
                result.replace(at, folder.path().size(), "@");
        }
        return listing.isNil() ? "nil" : result;
    }
};

TEST_F(KelvoFileManagerExtensionsTest, ListsWhatMatches) {
    for (const char* name : {"a.pdf", "B.PDF", "c.pdf.txt", ".pdf", "plain", "d.pdf/e.pdf"})
        folder.write(name, "");
    const auto byExtension = directoryContentsAtPath_matchingExtension_fullPath;
    const auto byWildcard = directoryContentsAtPath_matchingWildcard_fullPath;
    const std::tuple<decltype(byExtension), NSString, bool, std::string> rows[] = {
        {byExtension, u"PDF", false, "B.PDF a.pdf d.pdf "},
        {byExtension, u"txt", true, "@/c.pdf.txt "},
        {byExtension, u"", false, ".pdf plain "},
        {byExtension, nullptr, false, ""},
        {byWildcard, u"?.pdf", false, "B.PDF a.pdf d.pdf "},
        {byWildcard, u"pl*", true, "@/plain "},
        {byWildcard, u"*.pdf*", false, ".pdf B.PDF a.pdf c.pdf.txt d.pdf "},
        {byWildcard, nullptr, true, ""},
    };
    for (const auto& [list, what, fullPath, names] : rows)
        EXPECT_EQ(shown(list(files, root, what, fullPath)), names);
    EXPECT_EQ(shown(directoryContentsAtPath_matchingExtension(files, u"/none", u"x")), "");
    EXPECT_EQ(shown(directoryContentsAtPath_matchingWildcard(files, nullptr, u"*")), "");
}

TEST_F(KelvoFileManagerExtensionsTest, ListsKindsAndResolvesLinks) {
    for (const char* name : {"in/file", "in/sub/deep", "out"})
        folder.write(name, "");
    for (const auto& [target, name] :
         {std::pair("../out", "in/link"), std::pair("sub", "in/way"), std::pair("none", "in/dangling"),
          std::pair("self", "in/self"), std::pair("in", "other")})
        link(target, name);
    const NSString in = root.stringByAppendingString(u"/in"),
                   other = root.stringByAppendingString(u"/other/");
    const struct {
        const char* name;
        bool onlyFiles;
        NSString path;
        bool fullPath, resolveLinks;
        std::string listing;
    } rows[] = {
        {"names", false, in, false, false, "dangling file link self sub way "},
        {"full paths", false, other, true, false,
         "@/other/dangling @/other/file @/other/link @/other/self @/other/sub @/other/way "},
        {"resolved", false, in, false, true, "@/in/file @/out @/in/sub @/in/sub "},
        {"resolved folder", false, other, true, true, "@/in/file @/out @/in/sub @/in/sub "},
        {"files", true, in, false, false, "file link "},
        {"resolved files", true, in, false, true, "@/in/file @/out "},
        {"none", false, nullptr, true, true, ""},
        {"a file", true, root.stringByAppendingString(u"/out"), true, true, ""},
    };
    for (const auto& [name, onlyFiles, path, fullPath, resolveLinks, listing] : rows) {
        const auto list = onlyFiles ? directoryFilesAtPath_fullPath_resolveLinks
                                    : directoryContentsAtPath_fullPath_resolveLinks;
        EXPECT_EQ(shown(list(files, path, fullPath, resolveLinks)), listing) << name;
    }
    for (const char16_t* name : {u"/./in/dangling", u"/in//self", u"/./in/file", u"//none"}) {
        const NSString path = root.stringByAppendingString(name);
        EXPECT_TRUE(resolveLink(files, path).isIdenticalTo(path));
    }
    EXPECT_TRUE(resolveLink(files, nullptr).isNil());
}

TEST_F(KelvoFileManagerExtensionsTest, ListsDeeplyAndEnds) {
    for (const char* name : {"a/b/f", "a/c.d/g", "z"})
        folder.write(name, "");
    EXPECT_EQ(shown(deepDirectoryContentsAtPath_resolveLinks(files, root, false)),
              "@/a @/a/b @/a/b/f @/a/c.d @/a/c.d/g @/z ");
    EXPECT_EQ(shown(deepDirectoryFilesAtPath_resolveLinks(files, root, true)), "@/a/b/f @/a/c.d/g @/z ");
    link("..", "a/b/up");
    link("a/b", "w");
    EXPECT_EQ(shown(deepDirectoryContentsAtPath_resolveLinks(files, root, false)),
              "@/a @/a/b @/a/b/f @/a/b/up @/a/c.d @/a/c.d/g @/w @/w/f @/w/up @/w/up/b @/w/up/c.d "
              "@/w/up/c.d/g @/z ");
    const NSString way = root.stringByAppendingString(u"/w");
    EXPECT_EQ(shown(deepDirectoryFilesAtPath_resolveLinks(files, way, true)), "@/a/b/f @/a/c.d/g ");
    EXPECT_EQ(shown(deepDirectoryContentsAtPath_resolveLinks(files, u"/none", true)), "");

    // From each of these folders links lead to all others: there are more ways than anybody can list.
    const tests::TemporaryFolder maze;
    for (char from = 'a'; from < 'u'; ++from) {
        const std::string place = maze.path({&from, 1});
        std::filesystem::create_directory(place);
        for (char to = 'a'; to < 'u'; ++to)
            std::filesystem::create_symlink(std::string("../") + to, place + '/' + to);
    }
    const NSString start = NSString::stringWithUTF8String(maze.path());
    for (const bool resolveLinks : {false, true}) {
        const NSArray all = deepDirectoryContentsAtPath_resolveLinks(files, start, resolveLinks);
        EXPECT_GE(all.count(), 420U);
        EXPECT_LE(all.count(), 420U * 17);
    }
}

} // namespace
} // namespace kelvo
