#include "platform/foundation/encodings/PlainTextReading.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using namespace std::string_literals;

TEST(PlainText, EncodingsInTheirOrder) {
    const std::tuple<const char*, std::string, const char16_t*, NSStringEncoding> rows[] = {
        {"empty", "", u"", NSUTF8StringEncoding},
        {"UTF-8", "\xC3\xA4\r\n", u"\u00E4\r\n", NSUTF8StringEncoding},
        {"UTF-8 with a mark", "\xEF\xBB\xBF\xC3\xA4\xC3", u"\u00E4\uFFFD", NSUTF8StringEncoding},
        {"UTF-16, big", "\xFE\xFF\x20\xAC"s, u"\u20AC", NSUnicodeStringEncoding},
        {"UTF-16, little, cut off", "\xFF\xFE\xAC\x20\x41"s, u"\u20AC", NSUnicodeStringEncoding},
        {"UTF-32, little", "\xFF\xFE\0\0\xAC\x20\0\0"s, u"\u20AC", NSUTF32StringEncoding},
        {"UTF-32, big", "\0\0\xFE\xFF\0\x01\xF6\0\0"s, u"\U0001F600", NSUTF32StringEncoding},
        {"Windows Latin 1", "\x80\xE4", u"\u20AC\u00E4", NSWindowsCP1252StringEncoding},
    };
    for (const auto& [name, bytes, text, expected] : rows) {
        NSStringEncoding encoding = 0;
        EXPECT_EQ(stringWithPlainText(NSData::dataWithBytes(bytes), &encoding), NSString(text)) << name;
        EXPECT_EQ(encoding, expected) << name;
    }
    // Whatever the bytes, they are a text.
    NSStringEncoding encoding = 0;
    for (int byte = 0x80; byte <= 0xFF; ++byte)
        EXPECT_EQ(
            stringWithPlainText(NSData::dataWithBytes(std::string(1, static_cast<char>(byte))), &encoding)
                .length(),
            1U)
            << byte;
    EXPECT_TRUE(stringWithPlainText(NSData::dataWithBytes("\0\0\xFE\xFF\x7F\0\0\0"s), &encoding).isNil());
    EXPECT_TRUE(stringWithPlainText(nullptr, &encoding).isNil());
}

} // namespace
} // namespace kelvo
