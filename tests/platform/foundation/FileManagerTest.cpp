#include "platform/foundation/NSData.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/Value.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {
namespace {

const NSFileManager& files = NSFileManager::defaultManager();

NSString path(const std::string& bytes) {
    return files.stringWithFileSystemRepresentation(bytes);
}

TEST(FileSystemRepresentation, EveryNameSurvives) {
    // Short strings of the bytes on which UTF-8 turns: leads, trails, overlong forms, surrogates, ASCII.
    const std::string_view alphabet = "a\x80\xBF\xC0\xC3\xE0\xA0\xED\xEF\xF0\x90\xF4\xF8\xFF";
    std::minstd_rand random(1);
    for (int round = 0; round < 200'000; ++round) {
        std::string bytes;
        for (auto length = random() % 7; length > 0; --length)
            bytes += alphabet[random() % alphabet.size()];
        ASSERT_EQ(files.fileSystemRepresentationWithPath(path(bytes)), bytes);
    }
    EXPECT_EQ(path("\xC3\xA4\xF0\x9F\x98\x80"), u"\u00E4\xD83D\xDE00");
    EXPECT_EQ(path("\xED\xA0\x80"), u"\xDCED\xDCA0\xDC80");
    EXPECT_EQ(path("\xF0\x9F\x98z"), u"\xDCF0\xDC9F\xDC98z");
}

TEST(FileSystemRepresentation, EachFileHasOneString) {
    const auto isAbsent = [](const NSString& string) {
        return !files.fileSystemRepresentationWithPath(string).has_value();
    };
    EXPECT_TRUE(isAbsent(nullptr) && isAbsent(NSString(std::u16string_view(u"a\0", 2))));
    EXPECT_TRUE(isAbsent(u"a\xD800") && isAbsent(u"\xDC7F") && isAbsent(u"\xDD00"));
    EXPECT_TRUE(isAbsent(u"\xDCC3\xDCA4")); // these bytes are U+00E4
    EXPECT_EQ(files.fileSystemRepresentationWithPath(u"\xD83D\xDC80"), "\xF0\x9F\x92\x80");
    EXPECT_EQ(files.fileSystemRepresentationWithPath(u""), "");
}

TEST(FileManager, ListsAndTests) {
    const tests::TemporaryFolder folder;
    folder.write("b", "");
    folder.write(".hidden", "");
    folder.write("\xFF", "");
    folder.write("A.d/x", "");
    ASSERT_EQ(::symlink("nowhere", folder.path("dangling").c_str()), 0);
    // Of files "._X" those that hold metadata of an X are not listed.
    const std::string metadata = std::string("\0\5\x16\7\0\2\0\0", 8) + std::string(18, '\0');
    for (const char* name : {"._b", "._.hidden", "._A.d", "._\xFF", "._none", "._"})
        folder.write(name, metadata);
    folder.write("._dangling", metadata.substr(0, 25));
    EXPECT_EQ(files.directoryContentsAtPath(path(folder.path())),
              NSArray::arrayWithObjects(
                  {u"._", u"._dangling", u"._none", u".hidden", u"A.d", u"b", u"dangling", u"\xDCFF"}));
    EXPECT_EQ(files.pathContentOfSymbolicLinkAtPath(path(folder.path("dangling"))), u"nowhere");
    EXPECT_TRUE(files.pathContentOfSymbolicLinkAtPath(path(folder.path("b"))).isNil());
    EXPECT_TRUE(files.directoryContentsAtPath(path(folder.path("b"))).isNil());
    EXPECT_TRUE(files.directoryContentsAtPath(nullptr).isNil());

    bool isDirectory = true;
    EXPECT_TRUE(files.fileExistsAtPath_isDirectory(path(folder.path("\xFF")), &isDirectory));
    EXPECT_FALSE(isDirectory);
    EXPECT_TRUE(files.fileExistsAtPath_isDirectory(path(folder.path("A.d/")), &isDirectory) && isDirectory);
    EXPECT_FALSE(files.fileExistsAtPath_isDirectory(path(folder.path("dangling")), &isDirectory));
    EXPECT_FALSE(isDirectory || files.fileExistsAtPath(path(folder.path("b/"))));
}

TEST(FileManager, MakesAndRemoves) {
    const tests::TemporaryFolder folder;
    const auto permitting = [](int mode) {
        return NSMutableDictionary::dictionaryWithObjectsAndKeys(
            {{NSNumber::numberWithInt(mode), NSFilePosixPermissions}});
    };
    const std::tuple<const char*, NSDictionary, mode_t> rows[] = {
        {"new", permitting(0700), 0700},
        {"beyond the umask", permitting(03777), 03777},
        {"by the umask", nullptr, 0750},
    };
    const mode_t mask = ::umask(027);
    for (const auto& [name, attributes, mode] : rows) {
        EXPECT_TRUE(files.createDirectoryAtPath_attributes(path(folder.path(name)), attributes));
        struct stat status = {};
        ASSERT_EQ(::stat(folder.path(name).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, mode) << name;
    }
    ::umask(mask);
    EXPECT_FALSE(files.createDirectoryAtPath_attributes(path(folder.path("new")), nullptr));
    EXPECT_FALSE(files.createDirectoryAtPath_attributes(path(folder.path("no/new")), nullptr));

    folder.write("kept/file", "x");
    folder.write("new/a/b/c", "x");
    ASSERT_EQ(::symlink(folder.path("kept").c_str(), folder.path("new/a/link").c_str()), 0);
    ASSERT_EQ(::symlink(folder.path("kept").c_str(), folder.path("link").c_str()), 0);
    EXPECT_TRUE(files.removeFileAtPath(path(folder.path("link/"))));
    EXPECT_TRUE(files.removeFileAtPath(path(folder.path("new"))));
    EXPECT_FALSE(files.removeFileAtPath(path(folder.path("new"))));
    EXPECT_FALSE(files.removeFileAtPath(path(folder.path("kept/."))));
    EXPECT_FALSE(files.removeFileAtPath(path(folder.path("kept/.."))));
    EXPECT_EQ(folder.read("kept/file"), "x");
}

TEST(DataFiles, ReadsWholeRegularFilesOnly) {
    const tests::TemporaryFolder folder;
    for (const std::size_t size : {0U, 1U, 4096U, 70'000U}) {
        std::string contents(size, '\0');
        for (std::size_t i = 0; i < size; ++i)
            contents[i] = static_cast<char>(i * 7);
        EXPECT_EQ(NSData::dataWithContentsOfFile(path(folder.write("f", contents))).characters(), contents);
    }
    // Its size is given as 0, and it is longer than the first buffer.
    EXPECT_GT(NSData::dataWithContentsOfFile(u"/proc/self/maps").length(), 1000U);
    ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
    const std::string huge = folder.write("huge", "");
    ASSERT_EQ(::truncate(huge.c_str(), 0x7FFFFFFFL), 0);
    for (const std::string& name : {folder.path("pipe"), folder.path(), folder.path("none"), huge,
                                    std::string("/dev/zero"), std::string()})
        EXPECT_TRUE(NSData::dataWithContentsOfFile(path(name)).isNil()) << name;
    EXPECT_TRUE(NSData::dataWithContentsOfFile(nullptr).isNil());
}

TEST(DataFiles, WritesInPlaceOrAtomically) {
    const tests::TemporaryFolder folder;
    const NSData data = NSData::dataWithBytes("new");
    const std::string longName(255, 'n');
    const mode_t mask = ::umask(002);
    for (const bool atomically : {false, true}) {
        SCOPED_TRACE(atomically);
        folder.write("f", "much longer than before");
        ASSERT_EQ(::chmod(folder.path("f").c_str(), 0626), 0);
        EXPECT_TRUE(data.writeToFile_atomically(path(folder.path("f")), atomically));
        EXPECT_EQ(folder.read("f"), "new");
        struct stat status = {};
        ASSERT_EQ(::stat(folder.path("f").c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0626U) << "also beyond the umask";
        ::unlink(folder.path(longName).c_str());
        EXPECT_TRUE(NSData::data().writeToFile_atomically(path(folder.path(longName)), atomically));
        ASSERT_EQ(::stat(folder.path(longName).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777, 0664U);

        ASSERT_EQ(::mkfifo(folder.path("pipe").c_str(), 0600), 0);
        for (const char* name : {"pipe", "", "none/f", "."})
            EXPECT_FALSE(data.writeToFile_atomically(path(folder.path(name)), atomically)) << name;
        EXPECT_FALSE(NSData().writeToFile_atomically(path(folder.path("nil")), atomically));
        EXPECT_FALSE(data.writeToFile_atomically(u"/dev/full", atomically));
        ASSERT_EQ(::unlink(folder.path("pipe").c_str()), 0);
    }
    ::umask(mask);
    // Nothing else was left behind.
    EXPECT_EQ(files.directoryContentsAtPath(path(folder.path())),
              NSArray::arrayWithObjects({u"f", path(longName)}));
}

TEST(Geometry, SizesReadBackExactly) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    const std::tuple<NSSize, const char16_t*> rows[] = {
        {{612, 792}, u"{612, 792}"},
        {{0.1F, -0.5F}, u"{0.1, -0.5}"},
        {{100000, 1e7F}, u"{100000, 10000000}"},
        {{595.276F, 0.00001F}, u"{595.276, 0.00001}"},
        {{16777216, 0}, u"{16777216, 0}"},
        {{infinity, -infinity}, u"{inf, -inf}"},
        {{-std::numeric_limits<float>::quiet_NaN(), 1}, u"{nan, 1}"},
    };
    for (const auto& [size, text] : rows)
        EXPECT_EQ(NSStringFromSize(size), text) << NSStringFromSize(size).UTF8String();
    std::minstd_rand random(1);
    for (const float value : {std::numeric_limits<float>::max(), std::numeric_limits<float>::min(),
                              std::numeric_limits<float>::denorm_min(), static_cast<float>(random()) / 3,
                              1 / static_cast<float>(random())}) {
        const std::string text = NSStringFromSize({-value, value}).UTF8String();
        EXPECT_EQ(std::strtof(text.c_str() + 1, nullptr), -value) << text;
        EXPECT_EQ(std::strtof(text.c_str() + text.find(' '), nullptr), value) << text;
        EXPECT_EQ(text.find('e'), std::string::npos) << text;
    }
}

} // namespace
} // namespace kelvo
