#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/files/Leftovers.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

namespace kelvo {
namespace {

using namespace std::string_literals;
namespace fs = std::filesystem;
using tests::TemporaryFolder;
using Wrapper = std::shared_ptr<NSFileWrapper>;

NSString pathOf(const std::string& path) {
    return NSString::stringWithUTF8String(path);
}

Wrapper file(const std::string& contents, const NSString& name = nullptr) {
    const Wrapper wrapper = NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytes(contents));
    wrapper->setPreferredFilename(name);
    return wrapper;
}

Wrapper folder(const std::vector<Wrapper>& children, const NSString& name = nullptr) {
    const Wrapper wrapper = NSFileWrapper::initDirectory();
    wrapper->setPreferredFilename(name);
    for (const Wrapper& child : children)
        wrapper->addFileWrapper(child);
    return wrapper;
}

bool write(const Wrapper& wrapper, const std::string& path, bool atomically = false) {
    return wrapper->writeToFile_atomically_updateFilenames(pathOf(path), atomically, false);
}

std::set<std::string> treeOf(const std::string& path) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(path))
        names.insert(fs::relative(entry.path(), path).string());
    return names;
}

std::string number(std::uint32_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<char>(value >> shift));
    return bytes;
}

struct SerializedEntry {
    std::string name;
    std::string bytes;
};

std::string serializedFile(const std::string& contents) {
    return number(1) + number(static_cast<std::uint32_t>(contents.size())) + contents;
}

std::string serializedFolder(const std::vector<SerializedEntry>& entries) {
    std::string bytes = number(3) + number(static_cast<std::uint32_t>(entries.size()));
    for (const auto& entry : entries)
        bytes += number(static_cast<std::uint32_t>(entry.name.size())) + entry.name;
    for (const auto& entry : entries)
        bytes += number(static_cast<std::uint32_t>(entry.bytes.size()));
    for (const auto& entry : entries)
        bytes += entry.bytes;
    return bytes;
}

std::string serialized(const std::vector<SerializedEntry>& entries) {
    return "rtfd"s + number(0) + serializedFolder(entries);
}

Wrapper parse(const std::string& bytes) {
    return NSFileWrapper::initWithSerializedRepresentation(NSData::dataWithBytes(bytes));
}

/// A package with a file whose name only the form itself has looked at.
Wrapper wrapperNaming(const std::string& name) {
    return parse(serialized({{"TXT.rtf", serializedFile("{}")}, {name, serializedFile("x")}}));
}

const std::string sample = "rtfd\0\0\0\0\3\0\0\0\3\0\0\0"
                           "\5\0\0\0a.png\7\0\0\0TXT.rtf\1\0\0\0."
                           "\x10\0\0\0\x2B\0\0\0\x48\0\0\0"
                           "\1\0\0\0\x08\0\0\0\x89PNG\r\n\x1A\n"
                           "\1\0\0\0\x23\0\0\0{\\rtf1\\ansi{{\\NeXTGraphic a.png}\xAC}}"
                           "\1\0\0\0\x40\0\0\0\2\0\0\0\5\0\0\0a.png\7\0\0\0TXT.rtf\x10\0\0\0\x10\0\0\0"
                           "\0\0\0\x65\xB6\1\0\0\0\0\0\0\0\0\0\0\0\0\0\x65\xB6\1\0\0\0\0\0\0\0\0\0\0"s;

TEST(FileWrapperSerializationTest, ReadsAndWritesThePlatformsLayout) {
    ASSERT_EQ(sample.size(), 184u);
    const Wrapper wrapper = parse(sample);
    ASSERT_TRUE(wrapper && wrapper->isDirectory());
    EXPECT_EQ(wrapper->fileWrapperForName(u"a.png")->regularFileContents().characters(), "\x89PNG\r\n\x1A\n");
    EXPECT_EQ(wrapper->fileWrapperForName(u"TXT.rtf")->regularFileContents().length(), 35u);
    EXPECT_EQ(wrapper->fileWrappers().size(), 2u);
    // Written again, only the dates differ.
    std::string again(wrapper->serializedRepresentation().characters());
    ASSERT_EQ(again.size(), sample.size());
    for (const std::size_t date : {152, 168})
        again.replace(date, 4, "\0\0\0\x65", 4);
    EXPECT_EQ(again, sample);

    EXPECT_EQ(folder({}, u"Test1")->serializedRepresentation().characters(),
              "rtfd\0\0\0\0\3\0\0\0\2\0\0\0\x13\0\0\0__@PreferredName@__\x17\0\0\0__@UTF8PreferredName@__"
              "\x0D\0\0\0\x0D\0\0\0\1\0\0\0\5\0\0\0Test1\1\0\0\0\5\0\0\0Test1"s);
    const std::string padded = number(1) + number(0x80000000) + number(2) + number(3) + "\0\0\0ab"s;
    EXPECT_EQ(
        parse(serialized({{"x", padded}}))->fileWrapperForName(u"x")->regularFileContents().characters(),
        "ab");
}

TEST(FileWrapperSerializationTest, ReadsBackWhatItWrites) {
    const std::pair<const char*, Wrapper> rows[] = {
        {"empty folder", folder({})},
        {"named", folder({}, u"Čeština 😀")},
        {"sole file", file("contents", u"a.txt")},
        {"sole empty file", file("")},
        {"nested", folder({file("1", u"a"), folder({file("2", u"a"), folder({}, u"b")}, u"inner")}, u"out")},
        {"names that are not UTF-8", folder({file("1", u"caf\xDCE9"), file("2", u"caf\u00E9")})},
    };
    for (const auto& [name, wrapper] : rows) {
        const Wrapper again =
            NSFileWrapper::initWithSerializedRepresentation(wrapper->serializedRepresentation());
        ASSERT_TRUE(again) << name;
        EXPECT_TRUE(*again == *wrapper) << name;
    }
    const Wrapper other =
        folder({file("1", u"a"), folder({file("3", u"a"), folder({}, u"b")}, u"inner")}, u"out");
    EXPECT_FALSE(*other == *rows[4].second);
}

TEST(FileWrapperSerializationTest, RefusesWhatDoesNotFit) {
    for (std::size_t length = 0; length < sample.size(); ++length)
        EXPECT_FALSE(parse(sample.substr(0, length))) << length;
    const std::string head = "rtfd"s + number(0) + number(3);
    std::string deep = number(0);
    while (deep.size() < 16 * 3000)
        deep = number(1) + number(1) + "d" + number(static_cast<std::uint32_t>(deep.size() + 4)) + number(3) +
               deep;
    const std::pair<const char*, std::string> rows[] = {
        {"other signature", "RTFD" + sample.substr(4)},
        {"top is a file", "rtfd"s + number(0) + serializedFile("x")},
        {"count of all ones", head + number(0xFFFFFFFF) + std::string(64, '\0')},
        {"name of all ones", head + number(1) + number(0xFFFFFFFF) + std::string(64, '\0')},
        {"file longer than its entry", serialized({{"a", number(1) + number(5) + "abc"}, {"b", "dddddddd"}})},
        {"long padding", serialized({{"a", number(1) + number(0x80000000) + number(1) + number(99) + "a"}})},
        {"entry without type", serialized({{"a", "abc"}})},
        {"too deep", head + deep},
    };
    for (const auto& [name, bytes] : rows)
        EXPECT_FALSE(parse(bytes)) << name;
}

TEST(FileWrapperSerializationTest, LeavesOutWhatCouldNotBeAFile) {
    const Wrapper wrapper = parse(serialized({{"", serializedFile("x")},
                                              {"..", serializedFile("x")},
                                              {"../up", serializedFile("x")},
                                              {"/etc/passwd", serializedFile("x")},
                                              {"a\0b"s, serializedFile("x")},
                                              {"link", number(7) + number(0)},
                                              {"twice", serializedFile("first")},
                                              {"twice", serializedFile("second")}}));
    ASSERT_EQ(wrapper->fileWrappers().size(), 1u);
    EXPECT_EQ(wrapper->fileWrapperForName(u"twice")->regularFileContents().characters(), "first");
}

TEST(FileWrapperTest, ChildrenGetNamesOfTheirOwn) {
    const Wrapper wrapper = NSFileWrapper::initDirectory();
    const std::u16string endless(1000, u'é');
    const std::tuple<NSString, const char16_t*> rows[] = {
        {u"a.png", u"a.png"},  {u"A.PNG", u"A-2.PNG"},  {u"a.png", u"a-3.png"},   {nullptr, u"Unnamed"},
        {u"..", u"Unnamed-2"}, {u"x/y\xD800", u"x-y-"}, {u".hidden", u".hidden"}, {u".hidden", u".hidden-2"},
    };
    for (const auto& [wanted, given] : rows)
        EXPECT_EQ(wrapper->addFileWrapper(file("", wanted)).UTF8String(), NSString(given).UTF8String());
    for (int turn = 0; turn < 3; ++turn)
        EXPECT_TRUE(NSFileWrapper::isUsableFilename(
            wrapper->addFileWrapper(file("", NSString(std::u16string_view(endless))))));
    EXPECT_THROW(file("")->addFileWrapper(file("")), NSException);
    Wrapper tower = folder({});
    for (std::size_t level = 0; level < NSFileWrapper::maximumDepth; ++level)
        tower = folder({tower});
    EXPECT_TRUE(parse(std::string(tower->serializedRepresentation().characters())));
    EXPECT_THROW(folder({tower}), NSException);
}

class FileWrapperFilesTest : public testing::Test {
protected:
    TemporaryFolder disk;
    const Wrapper package =
        folder({file("text", u"TXT.rtf"), file(std::string(100000, 'p'), u"a.png")}, u"p.rtfd");
    const std::set<std::string> packageNames{"p.rtfd", "p.rtfd/TXT.rtf", "p.rtfd/a.png"};
};

TEST_F(FileWrapperFilesTest, ReadsBackWhatItWrites) {
    for (const bool atomically : {false, true}) {
        const Wrapper tree = folder({file("1", u"caf\xDCE9"), folder({file("2", u"b")}, u"inner")}, u"t");
        const Wrapper link = NSFileWrapper::initSymbolicLinkWithDestination(u"../outside");
        link->setPreferredFilename(u"link");
        tree->addFileWrapper(link);
        ASSERT_TRUE(write(tree, disk.path("t/"), atomically));
        const Wrapper again = NSFileWrapper::initWithPath(pathOf(disk.path("t/")));
        ASSERT_TRUE(again);
        EXPECT_TRUE(*again == *tree);
    }
    ASSERT_TRUE(write(file("sole", u"s"), disk.path("s")));
    EXPECT_TRUE(*NSFileWrapper::initWithPath(pathOf(disk.path("s"))) == *file("sole", u"s"));
    EXPECT_EQ(treeOf(disk.path()),
              (std::set<std::string>{"s", "t", "t/caf\xE9", "t/inner", "t/inner/b", "t/link"}));
    ASSERT_EQ(mkfifo(disk.path("t/pipe").c_str(), 0600), 0);
    EXPECT_FALSE(NSFileWrapper::initWithPath(pathOf(disk.path("t"))));
    EXPECT_FALSE(NSFileWrapper::initWithPath(pathOf(disk.path("missing"))));
}

TEST_F(FileWrapperFilesTest, WritesIntoAFolderAndReplacesFilesAndLinks) {
    disk.write("p.rtfd/other", "other");
    disk.write("p.rtfd/TXT.rtf", "old");
    fs::permissions(disk.path("p.rtfd/TXT.rtf"), fs::perms(0600));
    disk.write("outside", "outside");
    fs::create_symlink("../outside", disk.path("p.rtfd/a.png"));
    ASSERT_TRUE(write(package, disk.path("p.rtfd")));
    EXPECT_EQ(disk.read("p.rtfd/TXT.rtf"), "text");
    EXPECT_EQ(fs::status(disk.path("p.rtfd/TXT.rtf")).permissions(), fs::perms(0600));
    EXPECT_EQ(disk.read("p.rtfd/a.png").size(), 100000u);
    EXPECT_EQ(disk.read("outside"), "outside");
    EXPECT_EQ(treeOf(disk.path()),
              (std::set<std::string>{"outside", "p.rtfd", "p.rtfd/TXT.rtf", "p.rtfd/a.png", "p.rtfd/other"}));
    ASSERT_TRUE(write(package, disk.path("p.rtfd"), true));
    fs::remove(disk.path("outside"));
    EXPECT_EQ(treeOf(disk.path()), packageNames) << "an atomically written folder is replaced whole";
    disk.write("elsewhere/kept", "");
    fs::remove_all(disk.path("p.rtfd"));
    fs::create_symlink("elsewhere", disk.path("p.rtfd"));
    ASSERT_TRUE(write(package, disk.path("p.rtfd") + '/'));
    EXPECT_TRUE(fs::is_symlink(disk.path("p.rtfd")));
    EXPECT_EQ(treeOf(disk.path("elsewhere")), (std::set<std::string>{"TXT.rtf", "a.png", "kept"}));
    for (const char* kind : {"file", "link"}) {
        fs::remove_all(disk.path("p.rtfd"));
        kind == "file"s ? static_cast<void>(disk.write("p.rtfd", "a file"))
                        : fs::create_symlink("elsewhere", disk.path("p.rtfd"));
        ASSERT_TRUE(write(package, disk.path("p.rtfd"), true)) << kind;
        EXPECT_TRUE(fs::symlink_status(disk.path("p.rtfd")).type() == fs::file_type::directory) << kind;
        EXPECT_EQ(treeOf(disk.path()).size(), 7u) << kind;
        EXPECT_EQ(disk.read("p.rtfd/TXT.rtf"), "text") << kind;
    }
}

TEST_F(FileWrapperFilesTest, TakesAwayWhatAKilledWriteLeft) {
    disk.write("outside/kept", "");
    const auto leave = [&] {
        disk.write("p.rtfd/TXT.rtf", "old");
        disk.write(".plumwick-abcdefghijkl/TXT.rtf", "half");
        disk.write("p.rtfd/.plumwick-abcdefghijkl", "half");
        fs::create_directory_symlink("../outside", disk.path("p.rtfd/.plumwick-mnopqrstuvwx"));
    };
    leave();
    for (const char* name :
         {".plumwick-", ".plumwick-abcdefghijk", ".plumwick-abcdefghijk.", ".tmp-abcdefghijkl"})
        disk.write(name, "of others");
    std::set<std::string> expected = treeOf(disk.path());
    for (const char* name : {".plumwick-abcdefghijkl", ".plumwick-abcdefghijkl/TXT.rtf",
                             "p.rtfd/.plumwick-abcdefghijkl", "p.rtfd/.plumwick-mnopqrstuvwx"})
        expected.erase(name);
    expected.insert("p.rtfd/a.png");
    ASSERT_TRUE(write(package, disk.path("p.rtfd")));
    EXPECT_EQ(treeOf(disk.path()), expected);

    // Another process that writes there now.
    fs::remove(disk.path("p.rtfd/a.png"));
    leave();
    expected = treeOf(disk.path());
    expected.insert("p.rtfd/a.png");
    {
        const FileDescriptor besides = openFolderInUse(AT_FDCWD, disk.path());
        const FileDescriptor within = openFolderInUse(AT_FDCWD, disk.path("p.rtfd"));
        ASSERT_TRUE(write(package, disk.path("p.rtfd")));
        EXPECT_EQ(treeOf(disk.path()), expected);
    }
    // Its own mark goes with the write.
    const FileDescriptor after(::open(disk.path().c_str(), O_RDONLY | O_DIRECTORY));
    EXPECT_TRUE(isFolderOutOfUse(after.get()));
}

TEST_F(FileWrapperFilesTest, WritesAtATimeDoNotTakeEachOthersWork) {
    std::vector<pid_t> processes;
    for (int count = 0; count < 4; ++count) {
        processes.push_back(fork());
        if (processes.back() != 0)
            continue;
        const std::string path = disk.path(std::to_string(count) + ".rtfd");
        for (int turn = 0; turn < 100; ++turn) {
            if (!write(package, path))
                _exit(1);
            fs::remove_all(path);
        }
        _exit(0);
    }
    for (const pid_t process : processes) {
        int status = -1;
        waitpid(process, &status, 0);
        EXPECT_EQ(status, 0);
    }
}

TEST_F(FileWrapperFilesTest, FailureLeavesEverythingAsItWas) {
    disk.write("p.rtfd/TXT.rtf", "old");
    disk.write("folder/TXT.rtf/inner", "");
    disk.write("sealed/p.rtfd/TXT.rtf", "old");
    ASSERT_EQ(mkfifo(disk.path("pipe").c_str(), 0600), 0);
    fs::create_directory(disk.path("links"));
    for (const auto& [name, target] :
         {std::pair("link", "../p.rtfd"), std::pair("file", "../p.rtfd/TXT.rtf"), std::pair("dangling", "x")})
        fs::create_symlink(target, disk.path("links/"s + name));
    const std::set<std::string> before = treeOf(disk.path());
    const std::string longName(256, 'n');
    struct rlimit unlimited = {};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &unlimited), 0);
    const auto limited = [&](const std::function<bool()>& work) {
        const auto old = signal(SIGXFSZ, SIG_IGN);
        const struct rlimit limit { 50000, unlimited.rlim_max };
        setrlimit(RLIMIT_FSIZE, &limit);
        const bool result = work();
        setrlimit(RLIMIT_FSIZE, &unlimited);
        signal(SIGXFSZ, old);
        return result;
    };
    // The rights that folders deny count for others than root.
    const auto unprivileged = [&](const std::function<bool()>& work) {
        fs::permissions(disk.path(), fs::perms(0755));
        fs::permissions(disk.path("sealed/p.rtfd"), fs::perms(0555));
        const uid_t user = geteuid();
        EXPECT_TRUE(user != 0 || seteuid(65534) == 0);
        const bool result = work();
        EXPECT_TRUE(user != 0 || seteuid(0) == 0);
        fs::permissions(disk.path("sealed/p.rtfd"), fs::perms(0755));
        return result;
    };
    const std::pair<const char*, std::function<bool()>> rows[] = {
        {"full disk", [&] { return limited([&] { return write(package, disk.path("new.rtfd")); }); }},
        {"full disk, a folder", [&] { return limited([&] { return write(package, disk.path("p.rtfd")); }); }},
        {"full disk, atomically",
         [&] { return limited([&] { return write(package, disk.path("p.rtfd"), true); }); }},
        {"no right to write",
         [&] { return unprivileged([&] { return write(package, disk.path("sealed/p.rtfd")); }); }},
        {"folder in the way of a file", [&] { return write(package, disk.path("folder")); }},
        {"folder in the way of a sole file", [&] { return write(file("x"), disk.path("folder")); }},
        {"pipe", [&] { return write(package, disk.path("pipe")); }},
        {"file in the way", [&] { return write(package, disk.path("p.rtfd/TXT.rtf")); }},
        {"file in the way of an inner folder",
         [&] { return write(folder({folder({}, u"TXT.rtf")}), disk.path("p.rtfd")); }},
        {"link to a folder in the way of an inner folder",
         [&] { return write(folder({folder({}, u"link")}), disk.path("links")); }},
        {"link to a file", [&] { return write(package, disk.path("links/file")); }},
        {"link to nothing", [&] { return write(package, disk.path("links/dangling")); }},
        {"no folder to write into", [&] { return write(package, disk.path("none/p.rtfd")); }},
        {"no name", [&] { return write(package, disk.path(".")); }},
        {"nil", [&] { return package->writeToFile_atomically_updateFilenames(nullptr, false, false); }},
        {"name too long", [&] { return write(wrapperNaming(longName), disk.path("new.rtfd")); }},
    };
    for (const auto& [name, work] : rows) {
        EXPECT_FALSE(work()) << name;
        EXPECT_EQ(treeOf(disk.path()), before) << name;
        EXPECT_EQ(disk.read("p.rtfd/TXT.rtf") + disk.read("sealed/p.rtfd/TXT.rtf"), "oldold") << name;
    }
}

} // namespace
} // namespace kelvo
