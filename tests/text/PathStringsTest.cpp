#include "text/NSStringKelvoPathExtensions.h"

#include "platform/foundation/NSPathUtilities.h"
#include "platform/foundation/Value.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using tests::ScopedVariable;

TEST(PathStringsTest, standardDirectories) {
    const NSString home = NSHomeDirectory();
    EXPECT_EQ(homeDirectory(), home);
    EXPECT_EQ(pathInHomeDirectory(u"a/b"), stringByAppendingPathComponent(home, u"a/b"));
    EXPECT_EQ(pathInLibraryDirectory(u"/x"), stringByAppendingPathComponent(home, u"Library/x"));
    EXPECT_EQ(pathInApplicationSupportDirectory(u"x"), pathInLibraryDirectory(u"Application Support/x"));
    EXPECT_EQ(pathInCachesDirectory(u"x"), pathInLibraryDirectory(u"Caches/x"));
    EXPECT_EQ(pathInPreferencesDirectory(nullptr), pathInLibraryDirectory(u"Preferences"));
    EXPECT_EQ(desktopDirectory(), pathInHomeDirectory(u"Desktop"));
    const ScopedVariable moved("HOME", "/elsewhere"), temporary("TMPDIR", "/elsewhere/tmp");
    EXPECT_TRUE(homeDirectory() == u"/elsewhere");
    EXPECT_EQ(libraryDirectory(), stringByAppendingPathComponent(home, u"Library"));
    EXPECT_TRUE(libraryDirectory().isIdenticalTo(libraryDirectory()));
    EXPECT_TRUE(temporaryDirectory() == u"/tmp");
}

TEST(PathStringsTest, temporaryPaths) {
    const ScopedVariable home("HOME", "/home/jo"), temporary("TMPDIR", "/private/tmp");
    EXPECT_FALSE(isTemporaryPath(NSString()));
    for (const char16_t* path :
         {u"/tmp", u"/tmpfoo", u"/var/tmp/x", u"/private/tmp/x", u"/home/jo/Library/Mail/a.mimeattach/b"})
        EXPECT_TRUE(isTemporaryPath(path)) << NSString(path).UTF8String();
    for (const char16_t* path : {u"", u"/var/tmp", u"/private/tmpx", u"/home/jon/Library/Mail/a.mimeattach/b",
                                 u"/home/jo/Library/Mail/a/b", u"tmp/x"})
        EXPECT_FALSE(isTemporaryPath(path)) << NSString(path).UTF8String();
}

TEST(PathStringsTest, standardized) {
    const char16_t* const rows[][3] = {
        {u"/a/./b/../c", u"/|a|c", u"/a/c"},
        {u"/../a", u"a", u"/a"},
        {u"/..", u"", u"/"},
        {u"../a", u"a", u"../a"},
        {u"a/../../../b", u"b", u"../../b"},
        {u"a//b/", u"a|b", u"a/b"},
        {u"/", u"/", u"/"},
        {u"a/../", u"/", u"."},
        {u"a/..", u"", u"."},
        {u"./a", u"a", u"a"},
        {u"", u"", u""},
    };
    for (const auto& [path, expected, standardized] : rows) {
        SCOPED_TRACE(NSString(path).UTF8String());
        NSString components = u"";
        for (const Value& component : standardizedPathComponents(path))
            components = components.stringByAppendingString(components.isEmpty() ? u"" : u"|")
                             .stringByAppendingString(component.string());
        EXPECT_TRUE(components == expected) << components.UTF8String();
        EXPECT_TRUE(standardizedPath(path) == standardized);
    }
    EXPECT_TRUE(standardizedPathComponents(nullptr).isNil() && standardizedPath(nullptr).isNil());
    const NSString path = u"/a/b";
    EXPECT_TRUE(standardizedPath(path).isIdenticalTo(path));
}

using PathOfTwo = NSString (*)(const NSString&, const NSString&);
using PathOfOne = NSString (*)(const NSString&);

TEST(PathStringsTest, pathsFromPaths) {
    const PathOfTwo relative = relativePathToDirectory, replace = stringByReplacingPathExtensionWith,
                    append = stringByAppendingPathExtensionIfNecessary;
    const std::tuple<const char*, PathOfTwo, const char16_t*, const char16_t*, const char16_t*> rows[] = {
        {"below", relative, u"/a/b/c", u"/a", u"b/c"},
        {"beside", relative, u"/a/b/c", u"/a/d/", u"../b/c"},
        {"itself", relative, u"/a/./b", u"/a/b", u"."},
        {"above", relative, u"/a", u"/a/b/c", u"../.."},
        {"from the root", relative, u"/a", u"/", u"a"},
        {"both relative", relative, u"a/b", u"a/c", u"../b"},
        {"one relative", relative, u"a/b", u"/a", u"a/b"},
        {"to the root", relative, u"/a/..", u"/a/b", u"../.."},
        {"above the root", relative, u"/../a", u"/", u"a"},
        {"out of the same folder above", relative, u"../a", u"../b", u"../a"},
        {"further up", relative, u"../../a", u"../b", u"../../a"},
        {"from a folder without a name", relative, u"a/./b", u"..", u"a/./b"},
        {"from further up", relative, u"../a", u"../../b", u"../a"},
        {"nil directory", relative, u"/a/b", nullptr, u"/a/b"},
        {"nil", relative, nullptr, u"/a", nullptr},
        {"name prefix is no folder", relative, u"/ab", u"/a", u"../ab"},
        {"replaced", replace, u"/a/b.txt", u"html", u"/a/b.html"},
        {"added", replace, u"b", u"html", u"b.html"},
        {"taken away", replace, u"b.txt", nullptr, u"b"},
        {"hidden file", replace, u".b", u"txt", u".b.txt"},
        {"only the last", replace, u"a.tar.gz", u"bz2", u"a.tar.bz2"},
        {"with a slash", replace, u"b.txt", u"x/y", u"b.txt"},
        {"root", replace, u"/", u"x", u"/"},
        {"nil path", replace, nullptr, u"x", nullptr},
        {"there already", append, u"b.TXT", u"txt", u"b.TXT"},
        {"another one there", append, u"b.tar", u"gz", u"b.tar.gz"},
        {"nil extension", append, u"b", nullptr, u"b"},
        {"extension for nil", append, nullptr, u"x", nullptr},
    };
    for (const auto& [name, operation, path, argument, result] : rows)
        EXPECT_TRUE(operation(path, argument) == result) << name;
}

TEST(PathStringsTest, partsAndClassicPaths) {
    const std::tuple<const char*, PathOfOne, const char16_t*, const char16_t*> rows[] = {
        {"file", stringByDeletingFileComponent, u"/a/b", u"/a"},
        {"file below the root", stringByDeletingFileComponent, u"/b", u"/"},
        {"folder", stringByDeletingFileComponent, u"/a/b//", u"/a/b"},
        {"name alone", stringByDeletingFileComponent, u"b", u""},
        {"nil file", stringByDeletingFileComponent, nullptr, nullptr},
        {"root to classic", HFSPath, u"/", u"Root:"},
        {"absolute to classic", HFSPath, u"/a//b/./c/../d", u"Root:a:b:d"},
        {"volume to classic", HFSPath, u"/Volumes/Disk", u"Disk:"},
        {"file on a volume", HFSPath, u"/Volumes/Disk/a b", u"Disk:a b"},
        {"folder of volumes", HFSPath, u"/Volumes", u"Root:Volumes"},
        {"relative to classic", HFSPath, u"a/b", u":a:b"},
        {"up to classic", HFSPath, u"../../a", u":::a"},
        {"here to classic", HFSPath, u".", u":"},
        {"colon in a name", HFSPath, u"/a:b", u"Root:a/b"},
        {"empty", HFSPath, u"", u""},
        {"nil to classic", HFSPath, nullptr, nullptr},
        {"root", POSIXPath, u"Root:", u"/"},
        {"folder", POSIXPath, u"Root:a:b:", u"/a/b"},
        {"volume", POSIXPath, u"Disk:a", u"/Volumes/Disk/a"},
        {"relative", POSIXPath, u":a:b", u"a/b"},
        {"up", POSIXPath, u"::a", u"../a"},
        {"up inside", POSIXPath, u"Disk:a::b", u"/Volumes/Disk/b"},
        {"up above the volume", POSIXPath, u"Root:::b", u"/b"},
        {"here", POSIXPath, u":", u"."},
        {"slash in a name", POSIXPath, u"Root:a/b", u"/a:b"},
        {"such a path already", POSIXPath, u"/a:b", u"/a:b"},
        {"no colon", POSIXPath, u"a", u"a"},
        {"nil", POSIXPath, nullptr, nullptr},
    };
    for (const auto& [name, operation, path, expected] : rows) {
        const NSString result = operation(path);
        EXPECT_TRUE(result == expected) << name << ": " << result.UTF8String();
    }
}

TEST(PathStringsTest, orderByLastComponent) {
    EXPECT_LT(compareWithLastPathComponent(u"/z/a", u"/b"), 0);
    EXPECT_GT(compareWithLastPathComponent(u"/a", u"/A/"), 0);
    EXPECT_EQ(caseInsensitiveCompareWithLastPathComponent(u"x/a", u"y/A"), 0);
    EXPECT_NE(caseInsensitiveCompareWithLastPathComponent(u"a", u"\u00E4"), 0);
    EXPECT_EQ(nonUmlautedCaseInsensitiveCompareWithLastPathComponent(u"x/a", u"y/\u00C4"), 0);
    EXPECT_LT(nonUmlautedCaseInsensitiveCompareWithLastPathComponent(u"\u00E4", u"AB"), 0);
    EXPECT_LT(caseInsensitiveCompareWithLastPathComponent(nullptr, u"a"), 0);
    EXPECT_EQ(compareWithLastPathComponent(nullptr, u""), 0);
}

} // namespace
} // namespace kelvo
