#include "platform/foundation/PlatformRoot.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/Value.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(PlatformRoot, HoldsThePlatformsFoldersAndNothingElse) {
    const std::tuple<const char16_t*, bool, bool> rows[] = {
        {u"/System/Library", true, true},    {u"/System/Library/Spotlight/\u00E4\xDCFF", true, true},
        {u"/System/LibraryX", false, false}, {u"/home/System/Library/x", false, false},
        {u"System/Library/x", false, false}, {u"/Library/Spotlight", false, true},
        {u"/Applications", false, true},     {u"/Developer/Applications", false, true},
        {u"/usr/bin/mdimport", false, true},
    };
    for (const auto& [path, ofTheSystem, ofAll] : rows) {
        const std::string own = *NSFileManager::defaultManager().fileSystemRepresentationWithPath(path);
        setPlatformRoot("/opt/r");
        EXPECT_EQ(placeOfPath(path), (ofTheSystem ? "/opt/r" : "") + own);
        setPlatformRoot("/opt/r", PlatformPlaces::all);
        EXPECT_EQ(placeOfPath(path), (ofAll ? "/opt/r" : "") + own);
        setPlatformRoot("", PlatformPlaces::all);
        EXPECT_EQ(placeOfPath(path), own);
    }
    EXPECT_EQ(placeOfPath(nullptr), std::nullopt);
    EXPECT_EQ(placeOfPath(u"/System/Library/\xD800"), std::nullopt);
}

TEST(PlatformRoot, IsBelowTheDiskOperationsAndNotInStrings) {
    const tests::TemporaryFolder root;
    root.write("System/Library/a/f", "x");
    setPlatformRoot(root.path());
    const NSFileManager& files = NSFileManager::defaultManager();
    bool isFolder = false;
    EXPECT_TRUE(files.fileExistsAtPath_isDirectory(u"/System/Library/a", &isFolder) && isFolder);
    EXPECT_EQ(files.directoryContentsAtPath(u"/System/Library/a"), NSArray::arrayWithObjects({u"f"}));
    EXPECT_TRUE(files.removeFileAtPath(u"/System/Library/a/f"));
    EXPECT_EQ(files.directoryContentsAtPath(u"/System/Library/a"), NSArray::array());
    EXPECT_EQ(NSURL::fileURLWithPath(u"/System/Library/a").path(), u"/System/Library/a");
    setPlatformRoot("");
    EXPECT_FALSE(files.fileExistsAtPath(u"/System/Library/a"));
}

} // namespace
} // namespace kelvo
