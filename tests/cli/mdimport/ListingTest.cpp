#include "mdimport/ImporterBundles.h"
#include "mdimport/ImporterTool.h"
#include "platform/foundation/PlatformRoot.h"
#include "platform/foundation/Value.h"
#include "support/ScopedVariable.h"
#include "support/ServiceSession.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <filesystem>

namespace kelvo {
namespace {

/// The program, installed as /usr/bin/mdimport of a machine in a folder.
class Listing : public testing::Test {
protected:
    Listing() {
        setPlatformRoot(root.path(), PlatformPlaces::all);
        root.write("usr/bin/x", "");
        std::filesystem::copy_file(tests::builtProgram("mdimport"), root.path("usr/bin/mdimport"));
    }
    ~Listing() override { setPlatformRoot(""); }

    void add(const std::string& importer, const std::string& information = "") const {
        root.write(importer + ".mdimporter/Contents/Info.plist", information);
    }
    /// What the host makes of the listing, below the test's folder, a path a line.
    std::string listed() const {
        const NSArray importers =
            importersInListing(NSString::stringWithUTF8String(listingOfImporterTool().characters()));
        std::string lines = importers.isNil() ? "none" : "";
        for (const Value& path : importers) {
            std::string text = *placeOfPath(path.string());
            if (text.starts_with(root.path()))
                text.erase(0, root.path().size());
            lines += text + "\n";
        }
        return lines;
    }

    tests::TemporaryFolder root;
    tests::ScopedVariable homeFolder{"HOME", root.path("home").c_str()};
};

TEST_F(Listing, IsWhatTheHostFindsByItself) {
    EXPECT_EQ(listed(), "none");
    const char* const own[] = {"usr/libexec/plumwick/System/Library/Spotlight/A",
                               "usr/libexec/plumwick/System/Library/Spotlight/B"};
    for (const char* importer : own)
        add(importer);
    EXPECT_EQ(listed(), "none") << "the service is not there";
    std::filesystem::permissions(root.write("usr/libexec/plumwick/PlumwickHelper", ""),
                                 std::filesystem::perms::owner_all);
    EXPECT_EQ(listed(), "/System/Library/Spotlight/A.mdimporter\n/System/Library/Spotlight/B.mdimporter\n");

    const std::string home = "home/Library/Spotlight/";
    std::string expected;
    // In the order of their bytes.
    for (const std::string name :
         {"\n(\n", "\x1B\t", "(a), \"b\"", "\\U00e9", "a b", "caf\xC3\xA9 \xF0\x9F\x8E\xB5", "caf\xE9"}) {
        add(home + name);
        expected += "/" + home + name + ".mdimporter\n";
    }
    std::string paths = listed();
    EXPECT_EQ(paths.substr(0, paths.find("/System")), expected);
    add(home + "Dynamic", "{CFPlugInDynamicRegistration = YES;}");
    EXPECT_EQ(listed(), paths);
}

TEST_F(Listing, IsAllThatItDoes) {
    const std::string program = root.path("usr/bin/mdimport");
    for (const char* arguments : {"", "-l", "-L -L", "song.mp3"}) {
        const std::string errors = root.path("errors");
        const int status = std::system((program + " " + arguments + " 2>" + errors).c_str());
        EXPECT_EQ(WEXITSTATUS(status), 2) << arguments;
        EXPECT_EQ(root.read("errors").find("Usage: mdimport -L\n"), 0u) << arguments;
    }
    EXPECT_EQ(WEXITSTATUS(std::system((program + " -L 2>/dev/full").c_str())), 1);
    EXPECT_EQ(listingOfImporterTool().characters(), "Paths: id(" + std::to_string(getuid()) + ") (\n)\n");
}

} // namespace
} // namespace kelvo
