#include "files/ResourceFork.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/Value.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <sys/xattr.h>

namespace kelvo {
namespace {

constexpr std::uint32_t TEXT = 0x54455854, STR = 0x53545220;

/// Bytes from digits, among which spaces do not count; "*240" repeats the byte before so often in all.
std::string bytes(const std::string& digits) {
    std::string result;
    for (std::size_t at = 0; at < digits.size();) {
        if (digits[at] == ' ') {
            ++at;
        } else if (digits[at] == '*') {
            std::size_t length = 0;
            result.append(std::stoul(digits.substr(at + 1), &length) - 1, result.back());
            at += 1 + length;
        } else {
            result += static_cast<char>(std::stoi(digits.substr(at, 2), nullptr, 16));
            at += 2;
        }
    }
    return result;
}

/// TEXT 128, purgeable, named "greeting": "hello"; STR 1: a Pascal string "hi".
const std::string example =
    bytes("00000100 00000110 00000010 0000004F AA*112 BB*128"
          " 00000005 68656C6C6F   00000003 026869"
          "00000100 00000110 00000010 0000004F  00000000 0000 0080 001C 0046"
          "0001  54455854 0000 0012   53545220 0000 001E"
          "0080 0000 20 000000 00000000   0001 FFFF 00 000009 00000000   08 6772656574696E67");
const std::string header = bytes("00051607 00020000 00*16");
/// Finder information and a fork, as they mostly come.
const std::string beside =
    header + bytes("0002 00000009 00000032 00000020 00000002 00000052 0000015F 50444620 00*28") + example;

NSString named(const std::string& path) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(path);
}

std::string shown(const NSData& data) {
    return data.isNil() ? "nil" : std::string(data.characters());
}

class ResourceForkTest : public testing::Test {
protected:
    tests::TemporaryFolder folder;
    const NSString path = named(folder.write("name", "contents"));

    std::shared_ptr<ResourceFork> reading() const { return ResourceFork::resourceForkForReadingAtPath(path); }
    std::shared_ptr<ResourceFork> writing() const { return ResourceFork::resourceForkForWritingAtPath(path); }
};

TEST_F(ResourceForkTest, ReadsForksThatOthersHaveWritten) {
    EXPECT_EQ(reading(), nullptr);
    folder.write("._name", beside);
    std::filesystem::create_symlink(folder.path("name"), folder.path("other"));
    for (const NSString& each : {path, named(folder.path("other"))}) {
        const auto fork = ResourceFork::resourceForkForReadingAtPath(each);
        ASSERT_NE(fork, nullptr);
        EXPECT_EQ(shown(fork->dataForType_ID(TEXT, 128)), "hello");
        EXPECT_EQ(shown(fork->dataForType_ID(STR, 1)), "\2hi");
        EXPECT_FALSE(fork->addData_type_ID(NSData::data(), TEXT, 1) || fork->removeType_ID(TEXT, 128));
        EXPECT_TRUE(fork->removeType_ID(TEXT, 1)) << "it is not there";
    }
    folder.write("._name", header + bytes("0001 00000002 00000026 0000011E") + "This resource fork " +
                               "intentionally left blank" + std::string(243, ' '));
    EXPECT_EQ(reading(), nullptr);
    const auto file = folder.path("name");
    if (::setxattr(file.c_str(), "user.com.apple.ResourceFork", example.data(), example.size(), 0) == 0) {
        EXPECT_EQ(shown(reading()->dataForType_ID(TEXT, 128)), "hello");
        folder.write("._name", "mine");
        EXPECT_EQ(shown(reading()->dataForType_ID(TEXT, 128)), "hello");
    }
}

TEST_F(ResourceForkTest, WritesWhatOthersRead) {
    ASSERT_EQ(::chmod(folder.path("name").c_str(), 0640), 0);
    const auto fork = writing();
    ASSERT_NE(fork, nullptr);
    const std::string information = bytes("0002 00000009 00000032 00000020 00000002 00000052");
    EXPECT_EQ(folder.read("._name"), header + information +
                                         bytes("0000011E 00*32 00000100 00000100 00000000 0000001E 00*240") +
                                         bytes("00000100 00000100 00000000 0000001E 00*8 001C 001E FFFF"));
    EXPECT_TRUE(fork->addData_type_ID(NSData::dataWithBytes("later"), TEXT, 128));
    EXPECT_TRUE(fork->addString_type_ID(u"hi", STR, 1));
    EXPECT_TRUE(fork->addData_type_ID(NSData::data(), TEXT, -1));
    EXPECT_TRUE(fork->addData_type_ID(NSData::dataWithBytes("hello"), TEXT, 128));
    EXPECT_EQ(folder.read("._name"), header + information +
                                         bytes("00000166 00*32 00000100 00000114 00000014 00000052 00*240") +
                                         bytes("00000000 00000005 68656C6C6F 00000003 026869") +
                                         bytes("00000100 00000114 00000014 00000052 00*8 001C 0052"
                                               "0001  54455854 0001 0012   53545220 0000 002A"
                                               "FFFF FFFF 00 000000 00000000   0080 FFFF 00 000004 00000000"
                                               "0001 FFFF 00 00000D 00000000"));
    EXPECT_TRUE(fork->removeType_ID(STR, 1) && reading()->dataForType_ID(STR, 1).isNil());
    struct stat status = {};
    ASSERT_EQ(::stat(folder.path("._name").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777, 0640U);
}

TEST_F(ResourceForkTest, KeepsWhatElseIsThere) {
    folder.write("._name", beside);
    const auto fork = writing(), other = writing();
    EXPECT_TRUE(fork->addData_type_ID(NSData::dataWithBytes("x"), STR, 2));
    EXPECT_TRUE(other->removeType_ID(STR, 1)) << "changes what is there now";
    EXPECT_EQ(folder.read("._name"),
              beside.substr(0, 0x2E) + bytes("0000015D") +
                  bytes("50444620 00*28 00000100 0000010E 0000000E 0000004F AA*112 BB*128") +
                  bytes("00000005 68656C6C6F   00000001 78") +
                  bytes("00000100 0000010E 0000000E 0000004F  00000000 0000 0080 001C 0046"
                        "0001  54455854 0000 0012   53545220 0000 001E"
                        "0080 0000 20 000000 00000000   0002 FFFF 00 000009 00000000   08 6772656574696E67"));
}

TEST_F(ResourceForkTest, RefusesBrokenForks) {
    const struct {
        const char* name;
        std::size_t at;
        std::string patch;
    } rows[] = {
        {"data past the end", 8, bytes("0000005F FFFFFFFF")},
        {"data from past the end", 0, bytes("FFFFFFFF")},
        {"map past the end", 12, bytes("00000050")},
        {"map too short for its header", 12, bytes("0000001B")},
        {"list of types past the end", 0x110 + 24, bytes("004E")},
        {"types past the end", 0x110 + 28, bytes("FFFE")},
        {"references past the end", 0x110 + 34, bytes("0006")},
        {"references from past the end", 0x110 + 36, bytes("0030")},
        {"name past the end", 0x156, bytes("09")},
        {"name from past the end", 0x140, bytes("0009")},
        {"length past the data", 0x14F, bytes("00000D")},
        {"resource past the data", 0x10C, bytes("04")},
        {"a length that wraps round", 0x109, bytes("FFFFFFFF")},
    };
    for (const auto& [name, at, patch] : rows) {
        SCOPED_TRACE(name);
        std::string broken = beside;
        broken.replace(0x52 + at, patch.size(), patch);
        folder.write("._name", broken);
        EXPECT_EQ(reading(), nullptr);
        EXPECT_EQ(writing(), nullptr);
        EXPECT_EQ(folder.read("._name"), broken);
    }
}

TEST_F(ResourceForkTest, RefusesWhatItCannotKeep) {
    for (const std::string& other :
         {folder.path("none"), folder.path(), std::string(), folder.write(std::string(254, 'n'), "")})
        EXPECT_EQ(ResourceFork::resourceForkForWritingAtPath(named(other)), nullptr) << other;
    EXPECT_EQ(ResourceFork::resourceForkForWritingAtPath(nullptr), nullptr);
    folder.write("._name", "mine");
    EXPECT_EQ(writing(), nullptr);
    EXPECT_EQ(folder.read("._name"), "mine");

    folder.write("._name", "");
    const auto fork = writing();
    ASSERT_NE(fork, nullptr) << "nobody's yet";
    const struct {
        const char* name;
        NSString text;
        std::string stored;
    } rows[] = {
        {"longest", NSString(std::u16string(255, u'x')), '\xFF' + std::string(255, 'x')},
        {"too long", NSString(std::u16string(256, u'x')), "nil"},
        {"a byte a unit", u"\u00E4e\u0301\U0001F600\u20AC", "\6ae????"},
        {"empty", u"", std::string(1, '\0')},
        {"nil", nullptr, "nil"},
    };
    for (const auto& [name, text, stored] : rows) {
        EXPECT_TRUE(fork->removeType_ID(STR, 0));
        EXPECT_EQ(fork->addString_type_ID(text, STR, 0), stored != "nil") << name;
        EXPECT_EQ(shown(reading()->dataForType_ID(STR, 0)), stored) << name;
    }
    EXPECT_FALSE(fork->addData_type_ID(nullptr, TEXT, 1));
    EXPECT_TRUE(fork->addData_type_ID(NSData::dataWithBytes(std::string(0xFF'FFFC, 'x')), TEXT, 1));
    EXPECT_FALSE(fork->addData_type_ID(NSData::data(), TEXT, 2)) << "no place can be told past 16 MiB";
    ASSERT_EQ(::unlink(folder.path("name").c_str()), 0);
    EXPECT_FALSE(fork->addData_type_ID(NSData::data(), TEXT, 1));
}

} // namespace
} // namespace kelvo
