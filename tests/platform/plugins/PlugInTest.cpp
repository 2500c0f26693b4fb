#include "platform/plugins/CFPlugIn.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(PlugIn, TellsItsFactoriesInOrder) {
    const CFUUID type{
        {0x8B, 8, 0xC4, 0xBF, 0x41, 0x5B, 0x11, 0xD8, 0xB3, 0xF9, 0, 3, 0x93, 0x67, 0x26, 0xFC}};
    const std::string typeName = "\"8B08c4bf-415B-11D8-B3F9-0003936726fc\"";
    const CFUUID a{{0xAA}};
    const CFUUID b{{0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xB}};
    const std::string aName = "\"AA000000-0000-0000-0000-000000000000\"";
    const std::string bName = "\"00000000-0000-0000-0000-00000000000b\"";
    const std::pair<std::string, std::optional<std::vector<CFUUID>>> rows[] = {
        {typeName + " = (" + bName + ", (), " + aName + ", " + bName + ");", {{b, a}}},
        {typeName + " = (\"A-A00000-0000-0000-0000-000000000000\", \"AA0000000000-0000-0000-000000000000\", "
                    "\"AA000000-0000-0000-0000-00000000000G\", \"AA000000-0000-0000-0000-0000000000000\");",
         std::vector<CFUUID>()},
        {"x = (" + bName + "); " + typeName + " = ();", std::vector<CFUUID>()},
        {typeName + " = " + aName + ";", std::nullopt},
        {aName + " = (" + aName + ");", std::nullopt},
        {"not a list", std::nullopt},
    };
    const tests::TemporaryFolder folder;
    const NSURL url = NSURL::fileURLWithPath(NSString::stringWithUTF8String(folder.path("X.mdimporter")));
    EXPECT_TRUE(CFPlugInCreate(url).isNil() && CFPlugInCreate(nullptr).isNil());
    EXPECT_TRUE(CFPlugInCreate(NSURL::URLWithString(u"http://x/")).isNil());
    for (const auto& [types, factories] : rows) {
        folder.write("X.mdimporter/Contents/Info.plist", "{CFPlugInTypes = {" + types + "};}");
        EXPECT_EQ(CFPlugInFindFactoriesForPlugInTypeInPlugIn(type, CFPlugInCreate(url)), factories) << types;
    }
    folder.write("X.mdimporter/Contents/Info.plist",
                 "{CFPlugInFactories = {" + aName + " = MakeIt; " + bName + " = (MakeIt);};}");
    EXPECT_EQ(nameOfFactoryFunction(a, CFPlugInCreate(url)), u"MakeIt");
    EXPECT_TRUE(nameOfFactoryFunction(b, CFPlugInCreate(url)).isNil());
    EXPECT_TRUE(nameOfFactoryFunction(type, CFPlugInCreate(url)).isNil());
}

} // namespace
} // namespace kelvo
