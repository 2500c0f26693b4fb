#include "text/StringFiles.h"

#include "platform/foundation/NSFileManager.h"
#include "support/TemporaryFolder.h"
#include "text/StringEncodingSetting.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

namespace Strings = NSStringKelvoExtensions;
using namespace std::string_literals;

NSString named(const std::string& path) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(path);
}

TEST(StringFilesTest, charactersAndBytes) {
    EXPECT_TRUE(Strings::initWithCharacter(u'\0') == NSString(std::u16string_view(u"\0", 1)));
    EXPECT_TRUE(Strings::stringWithCString_length_encoding("\xC3\xA4x", 2, NSUTF8StringEncoding) ==
                u"\u00E4");
    EXPECT_TRUE(Strings::stringWithCString_length_encoding("\xC3\xA4x", 1, NSUTF8StringEncoding).isNil());
    EXPECT_TRUE(Strings::stringWithCString_length_encoding("", 0, NSASCIIStringEncoding) == u"");
    EXPECT_TRUE(Strings::stringWithCString_length_encoding(nullptr, 0, NSASCIIStringEncoding).isNil());
    EXPECT_TRUE(Strings::stringWithCString_length_encoding("x", 0x80000000, NSASCIIStringEncoding).isNil());
    EXPECT_TRUE(Strings::initWithCString_length_encoding("x", 1, kCFStringEncodingInvalidId).isNil());
    EXPECT_TRUE(Strings::stringWithData_encoding(nullptr, NSUTF8StringEncoding).isNil());
}

TEST(StringFilesTest, findsTheEncodingOfAFile) {
    const std::tuple<const char*, std::string, NSStringEncoding, NSStringEncoding, const char16_t*> rows[] = {
        {"mark of UTF-8", "\xEF\xBB\xBF\xC3\xA4", NSISOLatin1StringEncoding, NSUTF8StringEncoding, u"\u00E4"},
        {"mark over half a unit", "\xFF\xFEx", 0, NSWindowsCP1252StringEncoding, u"\u00FF\u00FEx"},
        {"as given", "\xE4", NSWindowsCP1251StringEncoding, NSWindowsCP1251StringEncoding, u"\u0434"},
        {"not as given", "\xC3\xA4", NSASCIIStringEncoding, NSUTF8StringEncoding, u"\u00E4"},
        {"not UTF-8", "\xE4\x80", NSUTF8StringEncoding, NSWindowsCP1252StringEncoding, u"\u00E4\u20AC"},
        {"bytes without a character", "\x81\x8D\x8F\x90\x9D", 0, NSWindowsCP1252StringEncoding,
         u"\u0081\u008D\u008F\u0090\u009D"},
        {"no such encoding", "x", kCFStringEncodingInvalidId, NSUTF8StringEncoding, u"x"},
        {"empty", "", NSUTF8StringEncoding, NSUTF8StringEncoding, u""},
    };
    const tests::TemporaryFolder folder;
    for (const auto& [name, bytes, given, expected, text] : rows) {
        SCOPED_TRACE(name);
        const NSString path = named(folder.write("text", bytes));
        NSStringEncoding used = 0;
        EXPECT_TRUE(Strings::stringWithContentsOfFile_encoding_usedEncoding(path, given, &used) == text);
        EXPECT_EQ(used, expected);
        EXPECT_EQ(Strings::initWithContentsOfFile_encoding(path, expected).isNil(), false);
    }
    NSStringEncoding used = 0;
    EXPECT_TRUE(
        Strings::initWithContentsOfFile_encoding_usedEncoding(named(folder.path("none")), 4, &used).isNil());
    EXPECT_EQ(used, kCFStringEncodingInvalidId);
    EXPECT_TRUE(Strings::stringWithContentsOfFile_encoding_usedEncoding(nullptr, 4, nullptr).isNil());
    EXPECT_TRUE(Strings::stringWithContentsOfFile_encoding(named(folder.write("x", "\xFF")), 4).isNil());
}

using Writer = bool (*)(const NSString&, const NSString&, bool, NSStringEncoding*);

TEST(StringFilesTest, choosesTheEncodingToWrite) {
    const Writer byDefault = writeToFileUsingDefaultEncoding_atomically_usedEncoding,
                 smallest = writeToFileUsingSmallestEncoding_atomically_usedEncoding,
                 fastest = writeToFileUsingFastestEncoding_atomically_usedEncoding;
    const std::tuple<const char*, Writer, const char16_t*, NSStringEncoding, std::size_t> rows[] = {
        {"default", byDefault, u"a\u00E4", NSISOLatin1StringEncoding, 2},
        {"default cannot", byDefault, u"a\u4E00", NSUTF8StringEncoding, 4},
        {"UTF-8 cannot either", byDefault, u"a\xD800", NSUnicodeStringEncoding, 6},
        {"empty", smallest, u"", NSASCIIStringEncoding, 0},
        {"ASCII", smallest, u"abc", NSASCIIStringEncoding, 3},
        {"Latin 1", smallest, u"\u00E4", NSISOLatin1StringEncoding, 1},
        {"Windows", smallest, u"\u20AC", NSWindowsCP1252StringEncoding, 1},
        {"Cyrillic", smallest, u"\u0434\u0430", NSWindowsCP1251StringEncoding, 2},
        {"Japanese", smallest, u"\u65E5\u672C\u8A9E", NSShiftJISStringEncoding, 6},
        {"mixed scripts", smallest, u"abcdefg\u0434\u0104", NSUTF8StringEncoding, 11},
        {"one pair", smallest, u"\U0001F600", NSUTF8StringEncoding, 4},
        {"unpaired", smallest, u"\xDC00", NSUnicodeStringEncoding, 4},
        {"fastest", fastest, u"ab", NSUnicodeStringEncoding, 6},
    };
    const tests::TemporaryFolder folder;
    const NSString path = named(folder.path("text"));
    Strings::setDefaultEncoding(NSISOLatin1StringEncoding);
    for (const auto& [name, writer, text, expected, sizeInBytes] : rows) {
        SCOPED_TRACE(name);
        NSStringEncoding used = 0;
        EXPECT_TRUE(writer(text, path, false, &used));
        EXPECT_EQ(used, expected);
        EXPECT_EQ(folder.read("text").size(), sizeInBytes);
        EXPECT_TRUE(Strings::stringWithContentsOfFile_encoding(path, used) == text);
    }
    Strings::setDefaultEncoding(NSUTF8StringEncoding);
    for (const Writer writer : {byDefault, smallest, fastest}) {
        NSStringEncoding used = 0;
        EXPECT_FALSE(writer(u"x", named(folder.path("none/text")), true, &used));
        EXPECT_EQ(used, kCFStringEncodingInvalidId);
        EXPECT_FALSE(writer(nullptr, path, true, nullptr) || writer(u"x", nullptr, true, nullptr));
    }
}

TEST(StringFilesTest, whatCannotBeEncodedLeavesTheFileAlone) {
    const tests::TemporaryFolder folder;
    const NSString path = named(folder.write("text", "old"));
    EXPECT_FALSE(writeToFile_atomically_encoding(u"\u00E4", path, true, NSASCIIStringEncoding));
    EXPECT_FALSE(writeToFile_atomically_encoding(u"x", path, false, kCFStringEncodingInvalidId));
    EXPECT_EQ(folder.read("text"), "old");
    EXPECT_TRUE(writeToFile_atomically_encoding(u"\u00E4", path, true, NSMacOSRomanStringEncoding));
    EXPECT_EQ(folder.read("text"), "\x8A");
}

} // namespace
} // namespace kelvo
