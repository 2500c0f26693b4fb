#include "platform/foundation/files/NSBundle.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

NSString string(std::string_view bytes) {
    return NSString::stringByRepairingUTF8String(bytes);
}

std::string information(std::string_view executable) {
    return "{ CFBundleExecutable = \"" + std::string(executable) + "\"; k = v; }";
}

TEST(Bundle, IsAnyFolderAndNothingElse) {
    const tests::TemporaryFolder folder;
    folder.write("file", "x");
    EXPECT_TRUE(NSBundle::bundleWithPath(nullptr).isNil());
    EXPECT_TRUE(NSBundle::bundleWithPath(string(folder.path("missing"))).isNil());
    EXPECT_TRUE(NSBundle::bundleWithPath(string(folder.path("file"))).isNil());
    EXPECT_TRUE(NSBundle().infoDictionary().isNil() && NSBundle().executablePath().isNil());

    const NSBundle bundle = NSBundle::bundleWithPath(string(folder.path() + "//"));
    EXPECT_EQ(bundle.bundlePath(), string(folder.path()));
    EXPECT_TRUE(bundle.infoDictionary().isNil() && bundle.objectForInfoDictionaryKey(u"k").isNil());
    EXPECT_EQ(NSBundle::bundleWithPath(u"/").bundlePath(), u"/");
}

TEST(Bundle, FindsItsInformation) {
    const tests::TemporaryFolder folder;
    const auto value = [&] {
        return NSBundle::bundleWithPath(string(folder.path())).objectForInfoDictionaryKey(u"k");
    };
    folder.write("Info.plist", "{k = root;}");
    EXPECT_EQ(value(), Value(u"root"));
    folder.write("Resources/Info.plist", "{k = resources;}");
    EXPECT_EQ(value(), Value(u"resources"));
    folder.write("Contents/Info.plist", "{k = contents;}");
    EXPECT_EQ(value(), Value(u"contents"));
    folder.write("Contents/Info.plist", "(no, dictionary)");
    EXPECT_EQ(value(), Value());
    folder.write("Contents/Info.plist", "{k = large; /*" + std::string(16u << 20, ' ') + "*/}");
    EXPECT_EQ(value(), Value());
}

TEST(Bundle, FindsItsExecutable) {
    const tests::TemporaryFolder folder;
    const auto executable = [&](std::string_view name) {
        folder.write("Contents/Info.plist", information(name));
        return NSBundle::bundleWithPath(string(folder.path())).executablePath();
    };
    folder.write("Contents/outside", "x");
    folder.write("Contents/MacOS/sub/x", "x");
    EXPECT_TRUE(executable("tool").isNil() && executable("").isNil() && executable("..").isNil());
    EXPECT_TRUE(executable("sub").isNil() && executable("../outside").isNil());
    // Each is preferred to the one before it.
    for (const char* place : {"libtool.so", "tool", "Contents/MacOS/tool", "Contents/Linux/libtool.so",
                              "Contents/Linux/tool.so", "Contents/Linux/tool"}) {
        const std::string path = folder.write(place, "x");
        EXPECT_EQ(executable("tool"), string(path)) << place;
    }
}

} // namespace
} // namespace kelvo
