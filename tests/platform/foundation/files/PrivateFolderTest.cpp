#include "platform/foundation/files/PrivateFolder.h"

#include "platform/foundation/files/Leftovers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <csignal>
#include <filesystem>

namespace kelvo {
namespace {

namespace fs = std::filesystem;

class PrivateFolderTest : public testing::Test {
protected:
    std::string leave(const std::string& name) {
        disk.write(name + "/inner/file", "x");
        return disk.path(name);
    }
    std::unique_ptr<PrivateFolder> make(const std::string& name = "kelvo") const {
        return std::make_unique<PrivateFolder>(name, std::vector{disk.path()});
    }

    const tests::TemporaryFolder disk;
};

TEST_F(PrivateFolderTest, StandsWhereItsNameIsNotTooLong) {
    const std::string longParent = disk.path(std::string(60, 'l'));
    fs::create_directory(longParent);
    const std::vector<std::string> parents{"",         "relative",         disk.path("missing"),
                                           longParent, disk.path() + "//", "/"};
    const std::size_t length = disk.path().size() + std::string("/kelvo-XXXXXX").size();
    PrivateFolder folder("kelvo", parents, length);
    EXPECT_EQ(folder.path().size(), length);
    EXPECT_EQ(fs::path(folder.path()).parent_path(), disk.path());
    struct stat facts;
    ASSERT_EQ(::stat(folder.path().c_str(), &facts), 0);
    EXPECT_EQ(facts.st_mode & 0777, 0700U);
    const std::string first = folder.path();
    folder.remove();
    EXPECT_FALSE(fs::exists(first));
    EXPECT_NE(folder.path(), "");

    PrivateFolder none("kelvo", {disk.path("missing"), longParent}, length);
    EXPECT_EQ(none.path(), "");
}

TEST_F(PrivateFolderTest, NewOneTakesAwayWhatKilledProcessesLeft) {
    const std::string left = leave("kelvo-abcXY9");
    const std::string elsewhere = leave("elsewhere");
    const auto own = make();
    const std::string inUse = own->path();
    EXPECT_FALSE(fs::exists(left));

    const FileDescriptor use = openFolderInUse(AT_FDCWD, leave("kelvo-helper"));
    ASSERT_TRUE(use);
    fs::create_directory_symlink(elsewhere, disk.path("kelvo-linked"));
    disk.write("kelvo-a_file", "x");
    disk.write("kelvo-afiles", "x");
    std::vector<std::string> kept{inUse,
                                  disk.path("kelvo-helper"),
                                  disk.path("kelvo-linked"),
                                  elsewhere + "/inner/file",
                                  disk.path("kelvo-afiles"),
                                  leave("kelvo-a_b_c_"),
                                  leave("kelvo-longer7"),
                                  leave("kelvo-web-abcdef"),
                                  leave("kelvo"),
                                  leave("xkelvo-abcdef")};
    if (::geteuid() == 0) {
        kept.push_back(leave("kelvo-others"));
        ASSERT_EQ(::chown(kept.back().c_str(), 65534, 65534), 0);
    }
    const auto another = make();
    EXPECT_NE(another->path(), "");
    for (const std::string& path : kept)
        EXPECT_TRUE(fs::exists(path)) << path;
}

TEST_F(PrivateFolderTest, GoesOnceItsProcessIsKilled) {
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t process = ::fork();
    if (process == 0) {
        const auto folder = make();
        static_cast<void>(::write(ready[1], folder->path().data() + disk.path().size() + 1, 12));
        ::pause();
        ::_exit(0);
    }
    std::string name(12, ' ');
    ASSERT_EQ(::read(ready[0], name.data(), name.size()), 12);
    static_cast<void>(make()->path());
    EXPECT_TRUE(fs::exists(disk.path(name)));
    ::kill(process, SIGKILL);
    ::waitpid(process, nullptr, 0);
    EXPECT_TRUE(fs::exists(disk.path(name)));
    static_cast<void>(make()->path());
    EXPECT_FALSE(fs::exists(disk.path(name)));
    for (const int end : ready)
        ::close(end);
}

TEST_F(PrivateFolderTest, ManyAtATimeDoNotTakeEachOthers) {
    std::vector<pid_t> processes;
    for (int count = 0; count < 4; ++count) {
        processes.push_back(::fork());
        if (processes.back() != 0)
            continue;
        for (int turn = 0; turn < 300; ++turn) {
            const auto folder = make();
            if (::mkdir((folder->path() + "/inner").c_str(), 0700) != 0)
                ::_exit(1);
            ::usleep(static_cast<useconds_t>(turn % 7) * 100);
            if (::access((folder->path() + "/inner").c_str(), F_OK) != 0)
                ::_exit(2);
        }
        ::_exit(0);
    }
    for (const pid_t process : processes) {
        int status = -1;
        ::waitpid(process, &status, 0);
        EXPECT_EQ(status, 0);
    }
    EXPECT_TRUE(fs::is_empty(disk.path()));
}

} // namespace
} // namespace kelvo
