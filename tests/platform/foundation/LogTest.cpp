#include "platform/foundation/NSLog.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

std::string text(const NSString& string) {
    return string.UTF8String();
}

TEST(StringFormat, FollowsPrintf) {
    EXPECT_EQ(text(stringWithFormat(u"%@ %d %% %s", u"a", -5, "\xC3\xA4")), "a -5 % \xC3\xA4");
    EXPECT_EQ(text(stringWithFormat(u"%hhd %hd %d %lld %qd", 300, 70000, 1LL << 32, 1LL << 32, -1LL)),
              "44 4464 0 4294967296 -1");
    EXPECT_EQ(text(stringWithFormat(u"%u %lu %llu %x %#X %o", -1, -1, ~0ULL, 255U, 255, 8)),
              "4294967295 18446744073709551615 18446744073709551615 ff 0XFF 10");
    EXPECT_EQ(text(stringWithFormat(u"%f %.1e %g %G %05.1f %+d % d %-4d|%04d", 0.5, 12345.0, 0.1F, 1e30, 2.25,
                                    7, 7, 7, 7)),
              "0.500000 1.2e+04 0.1 1E+30 002.2 +7  7 7   |0007");
    EXPECT_EQ(text(stringWithFormat(u"%c%C%c", 0x41, 0x20AC, 0x1E4)), "A\xE2\x82\xAC\xC3\xA4");
    EXPECT_EQ(
        text(stringWithFormat(u"[%5@|%-5s|%.2@|%*d|%-*d|%.*f]", u"abc", "abc", u"abc", 4, 1, 4, 1, 1, 0.25)),
        "[  abc|abc  |ab|   1|1   |0.2]");
    EXPECT_EQ(text(stringWithFormat(u"[%*d|%*@|%-*f]", -4, 1, -3, u"x", -4, 0.5)), "[1   |x  |0.500000]");
    EXPECT_EQ(text(stringWithFormat(u"%2$@ %1$@ %2$d %1$*3$d", 1, 2, 3)), "2 1 2   1");
    EXPECT_EQ(text(stringWithFormat(u"%@ %@ %d", true, nullptr, 3.99)), "1 (null) 3");
}

TEST(StringFormat, NothingInAFormatIsUndefined) {
    // A conversion that is none, or has no argument, stays as it is.
    for (const char16_t* format :
         {u"%", u"100%", u"%@", u"%d", u"%n", u"%p", u"%k", u"%5", u"%.", u"%1$", u"%0$@", u"%9$@",
          u"%99999999999$d", u"%*d", u"%.*f", u"%l", u"%hh", u"%\u00E4", u"%-+ #0'5.5"})
        EXPECT_EQ(stringWithFormat(format), format) << text(NSString(format));
    EXPECT_EQ(text(stringWithFormat(u"%d %@", 1)), "1 %@");
    EXPECT_EQ(text(stringWithFormat(u"%n %d", 7)), "%n 7");
    // An argument of another kind is shown as it is, and extra ones are not.
    EXPECT_EQ(text(stringWithFormat(u"%d %f %c %x", u"text", u"more", u"yet", nullptr, 5)),
              "text more yet (null)");
    EXPECT_EQ(text(stringWithFormat(u"%s", 5)), "5");
    // Widths are held, whatever asks for them.
    EXPECT_EQ(stringWithFormat(u"%999999999d", 1).length(), maximumFieldWidth);
    EXPECT_EQ(stringWithFormat(u"%*@", INT32_MIN, u"x").length(), maximumFieldWidth);
    EXPECT_EQ(stringWithFormat(u"%.999999999d", 1).length(), maximumFieldWidth);
    EXPECT_EQ(stringWithFormat(u"%.99999f", -1.7e308).length(), 1 + 309 + 1 + maximumFieldWidth);
    EXPECT_EQ(text(stringWithFormat(u"%.*d", -3, 5)), "5");
    EXPECT_EQ(stringWithFormat(u"%@", NSString(std::u16string_view(u"a\0b", 3))).length(), 3U);
}

TEST(Log, CapturesMessagesAsFormatted) {
    const NSLogCapture outer;
    {
        const NSLogCapture inner;
        NSLog(u"%@ (%@):\n%@", u"operation", u"Class", u"100%d");
        ASSERT_EQ(inner.messages().size(), 1U);
        EXPECT_EQ(text(inner.messages()[0]), "operation (Class):\n100%d");
    }
    EXPECT_TRUE(outer.messages().empty());
    NSLogMessage(u"%@%n");
    EXPECT_EQ(outer.messages(), std::vector<NSString>{u"%@%n"});
}

TEST(Log, OneMessageIsOneLine) {
    EXPECT_EQ(logLineOfMessage(u"a\tb\nc\r\x1B[2J\x85\x2028\u00E4\xD800"),
              "a\tb\\nc\\r\\u001B[2J\\u0085\\u2028\xC3\xA4\xEF\xBF\xBD");
    EXPECT_EQ(logLineOfMessage(NSString(std::u16string_view(u"a\0b", 3))), "a\\u0000b");
    EXPECT_EQ(logLineOfMessage(NSString(std::u16string(8192, u'x'))).size(), 8192U);
    EXPECT_EQ(logLineOfMessage(NSString(std::u16string(8193, u'x'))),
              std::string(8192, 'x') + "\xE2\x80\xA6");
}

} // namespace
} // namespace kelvo
