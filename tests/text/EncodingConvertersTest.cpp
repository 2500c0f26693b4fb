#include "text/EncodingConverters.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace kelvo {
namespace {

const std::uint8_t* bytesOf(std::string_view text) {
    return reinterpret_cast<const std::uint8_t*>(text.data());
}

TEST(EncodingConvertersTest, nothingConvertsBeforeTheConvertersAreMade) {
    // A process of its own, in which no other case has made them.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            char16_t unit = u'#';
            std::uint8_t byte = '#';
            const bool bothFail = convertUTF8ToUnicode(bytesOf("a"), 1, &unit, 1) == paramErr &&
                                  convertUnicodeToUTF8(u"a", 1, &byte, 1) == paramErr;
            std::exit(bothFail && unit == u'#' && byte == '#' ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST(EncodingConvertersTest, betweenUTF8AndUnicode) {
    initUnicodeConverters();
    initUnicodeConverters();
    const std::tuple<const char*, std::string_view, std::u16string_view> rows[] = {
        {"ASCII", "abc", u"abc"},
        {"two bytes", "\xC3\xA4", u"\u00E4"},
        {"three bytes", "\xE2\x82\xAC", u"\u20AC"},
        {"four bytes, two units", "\xF0\x9F\x98\x80", u"\xD83D\xDE00"},
        {"NUL", std::string_view("a\0b", 3), std::u16string_view(u"a\0b", 3)},
    };
    for (const auto& [name, source, expected] : rows) {
        SCOPED_TRACE(name);
        std::u16string units(expected.size() + 1, u'#');
        EXPECT_EQ(convertUTF8ToUnicode(bytesOf(source), source.size(), units.data(), expected.size()), noErr);
        EXPECT_EQ(units, std::u16string(expected) + u'#');
        std::string utf8(source.size() + 1, '#');
        auto* bytes = reinterpret_cast<std::uint8_t*>(utf8.data());
        EXPECT_EQ(convertUnicodeToUTF8(expected.data(), expected.size(), bytes, source.size()), noErr);
        EXPECT_EQ(utf8, std::string(source) + '#');

        EXPECT_EQ(convertUTF8ToUnicode(bytesOf(source), source.size(), units.data(), expected.size() - 1),
                  kTECOutputBufferFullStatus);
        EXPECT_EQ(convertUnicodeToUTF8(expected.data(), expected.size(), bytes, source.size() - 1),
                  kTECOutputBufferFullStatus);
    }
}

TEST(EncodingConvertersTest, fromAnyEncoding) {
    const std::tuple<const char*, std::string_view, TextEncoding, std::size_t, std::int32_t,
                     std::u16string_view>
        rows[] = {
            {"fits", "\x8A", kCFStringEncodingMacRoman, 8, 1, u"\u00E4"},
            {"fits exactly", "ab", kCFStringEncodingISOLatin1, 2, 1, u"ab"},
            {"no room for the last", "abc", kCFStringEncodingISOLatin1, 2, 0, u"ab"},
            {"no room for half a character", "a\xF0\x9F\x98\x80", kCFStringEncodingUTF8, 2, 0, u"a"},
            {"no room at all", "abc", kCFStringEncodingISOLatin1, 0, 0, u""},
            {"cut off at the end", "a\xC3", kCFStringEncodingUTF8, 8, 1, u"a\uFFFD"},
            {"empty", "", kCFStringEncodingUTF8, 8, 1, u""},
            {"UTF-16, marked", std::string_view("\xFF\xFE\x61\x00", 4), kCFStringEncodingUTF16, 8, 1, u"a"},
            {"no such encoding", "abc", kCFStringEncodingInvalidId, 8, kTextUnsupportedEncodingErr, u""},
        };
    for (const auto& [name, source, encoding, capacity, result, expected] : rows) {
        SCOPED_TRACE(name);
        char16_t units[8] = {};
        std::size_t written = 77;
        EXPECT_EQ(
            convertEncodingToUnicode(bytesOf(source), source.size(), encoding, units, capacity, &written),
            result);
        EXPECT_EQ(std::u16string_view(units, written), expected);
    }
}

} // namespace
} // namespace kelvo
