#include "text/FileNames.h"

#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/files/NSHFSFileTypes.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <sys/xattr.h>

namespace kelvo {
namespace {

NSString named(const std::string& path) {
    return NSFileManager::defaultManager().stringWithFileSystemRepresentation(path);
}

TEST(FileNamesTest, extensions) {
    const NSArray list = NSArray::arrayWithObjects({u"JPEG", NSNull(), u"'PDF '"});
    EXPECT_TRUE(pathMatchingExtensions(u"/a/b.jpeg", list));
    EXPECT_FALSE(pathMatchingExtensions(u"/a/b.jpg", list) || pathMatchingExtensions(u"/a/b.jpeg", nullptr));
    EXPECT_FALSE(pathMatchingExtensions(nullptr, list));
    for (const char16_t* valid : {u"a", u"jpeg", u"123456789012345", u"\u00E4"})
        EXPECT_TRUE(isValidPathExtension(NSString(valid)));
    for (const char16_t* invalid : {u"", u"1234567890123456", u"tar.gz", u"a b"})
        EXPECT_FALSE(isValidPathExtension(NSString(invalid)));
    EXPECT_TRUE(validPathExtension(u"a/b.c") == u"c");
    EXPECT_TRUE(validPathExtension(u"a/b.c d") == u"");
    EXPECT_TRUE(validPathExtension(nullptr).isNil());
}

TEST(FileNamesTest, typeCodes) {
    const tests::TemporaryFolder folder;
    const NSArray list = NSArray::arrayWithObjects({u"txt", u"'PDF '"});
    const std::string plain = folder.write("plain", "x"), marked = folder.write("marked", "x");
    EXPECT_TRUE(NSHFSTypeOfFile(named(plain)) == u"");
    EXPECT_TRUE(NSHFSTypeOfFile(named(folder.path("missing"))).isNil());
    EXPECT_FALSE(pathMatchingExtensionsOrTypes(named(plain), list));

    using namespace std::string_literals;
    const std::string header = "\0\5\x16\7\0\2\0\0"s + std::string(16, '\0');
    const std::string entry = "\0\0\0\x09\0\0\0\x26\0\0\0\x20"s;
    folder.write("._marked", header + "\0\1"s + entry + "PDF CARO" + std::string(24, '\0'));
    EXPECT_TRUE(NSHFSTypeOfFile(named(marked)) == u"'PDF '");
    EXPECT_TRUE(pathMatchingExtensionsOrTypes(named(marked), list));
    EXPECT_FALSE(pathMatchingExtensionsOrTypes(named(marked), nullptr));
    const std::string broken[] = {header, header + "\0\1"s + entry + "PDF", header + "\xFF\xFF"s,
                                  header + "\0\1\0\0\0\x09\xFF\xFF\xFF\xFF\0\0\0\x20"s};
    for (const std::string& bytes : broken) {
        folder.write("._marked", bytes);
        EXPECT_TRUE(NSHFSTypeOfFile(named(marked)) == u"");
    }
    const std::string metadata = header + "\0\1"s + entry + "W8BNMSWD" + std::string(24, '\0');
    if (::setxattr(plain.c_str(), "user.org.netatalk.Metadata", metadata.data(), metadata.size(), 0) == 0) {
        EXPECT_TRUE(NSHFSTypeOfFile(named(plain)) == u"'W8BN'");
    }
    const std::string info = "TEXTttxt" + std::string(24, '\0');
    if (::setxattr(marked.c_str(), "user.com.apple.FinderInfo", info.data(), info.size(), 0) == 0) {
        EXPECT_TRUE(NSHFSTypeOfFile(named(marked)) == u"'TEXT'");
    }
}

TEST(FileNamesTest, namesFromText) {
    const char16_t* const rows[][3] = {
        {u"..a/b:c~", u"a/b:c", u"a-b-c"},
        {u"~./:", u"", u""},
        {u"e\u0301.txt", u"e\u0301.txt", u"\u00E9.txt"},
        {u".a.", u"a", u"a"},
        {u"", u"", u""},
        {nullptr, nullptr, nullptr},
    };
    for (const auto& [given, trimmed, made] : rows) {
        EXPECT_TRUE(stringByTrimmingInvalidFilenameCharacters(given) == trimmed);
        EXPECT_TRUE(stringByCreatingFilename(given) == made);
        NSMutableString name{NSString(given)};
        createFilename(name);
        EXPECT_TRUE(name == made);
    }
    const NSString plain = u"plain.txt";
    EXPECT_TRUE(stringByCreatingFilename(plain).isIdenticalTo(plain));
}

TEST(FileNamesTest, namesThatFitOnDisk) {
    const std::u16string ascii(300, u'a'), umlauts(200, u'\u00E4');
    std::u16string pairs = u"x";
    for (int pair = 0; pair < 100; ++pair)
        pairs += u"\U0001F600";
    struct Row {
        const char* name;
        std::u16string text, extension, result;
    };
    const Row rows[] = {
        {"bytes", ascii, u"", ascii.substr(0, 255)},
        {"two bytes a unit", umlauts, u"", umlauts.substr(0, 127)},
        {"whole pairs", pairs, u"", pairs.substr(0, 1 + 2 * 63)},
        {"fits", u"abc", u"", u"abc"},
        {"U+0000", std::u16string(u"ab\0c", 4), u"", u"ab"},
        {"unpaired surrogate", u"ab\xD800", u"", u"ab"},
        {"with an extension", ascii, u"txt", ascii.substr(0, 251) + u".txt"},
        {"extension after two bytes a unit", umlauts, u"\u00E4", umlauts.substr(0, 126) + u".\u00E4"},
        {"short with an extension", u"a", u"b", u"a.b"},
        {"extension too long", u"ab", ascii, u"ab"},
        {"no room beside the extension", u"ab", ascii.substr(0, 254), u"ab"},
        {"room for one unit", u"ab", ascii.substr(0, 253), u"a." + ascii.substr(0, 253)},
        {"impossible extension", u"ab", u"\xD800", u"ab"},
        {"empty name", u"", u"txt", u""},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const NSString text(row.text);
        EXPECT_EQ(stringByCreatingFileSystemRepresentationByAppendingExtension(text, row.extension),
                  NSString(row.result));
        if (row.extension.empty()) {
            EXPECT_EQ(stringByCreatingFileSystemRepresentation(text), NSString(row.result));
        }
        NSMutableString name(text);
        createFileSystemRepresentationAndAppendExtension(name, row.extension);
        EXPECT_EQ(name.copy(), NSString(row.result));
    }
    EXPECT_TRUE(stringByCreatingFileSystemRepresentation(nullptr).isNil());
    EXPECT_TRUE(stringByCreatingFileSystemRepresentationByAppendingExtension(nullptr, u"x").isNil());
}

} // namespace
} // namespace kelvo
