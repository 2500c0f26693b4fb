#include "text/ConfigurationText.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

constexpr const char16_t* settings =
    u"\uFEFF# comment\r\n"
    u"name = \" a b \"\r\n"
    u"; name = other\n"
    u"//x=1\n"
    u"\n"
    u"  long key :value # kept  \n"
    u"flag\n"
    u"empty=\n"
    u"name=second\n"
    u"on=YES\nint=-12\nbig=+9000000000\nreal=1.5e3\nhuge=99999999999999999999\n"
    u"quoted=\"1\"\ndate=2026-11-21\ninf=inf\nsigns=+-1\nequal=a=b";

TEST(ConfigurationTextTest, linesAndValues) {
    const NSArray lines = configLines(settings);
    ASSERT_EQ(lines.count(), 15u);
    EXPECT_TRUE(lines.objectAtIndex(1) == u"long key :value # kept");
    EXPECT_TRUE(configLines(nullptr).isNil());
    EXPECT_EQ(configLines(u" \n#").count(), 0u);
    const std::tuple<const char16_t*, const char16_t*, Value> rows[] = {
        {u"name", u" a b ", u" a b "},
        {u"long key", u"value # kept", u"value # kept"},
        {u"long", nullptr, nullptr},
        {u"flag", u"", u""},
        {u"empty", u"", u""},
        {u"on", u"YES", NSNumber::numberWithBool(true)},
        {u"int", u"-12", NSNumber::numberWithInt(-12)},
        {u"big", u"+9000000000", NSNumber::numberWithLongLong(9000000000)},
        {u"real", u"1.5e3", NSNumber::numberWithDouble(1500)},
        {u"huge", u"99999999999999999999", NSNumber::numberWithDouble(1e20)},
        {u"quoted", u"1", u"1"},
        {u"date", u"2026-11-21", u"2026-11-21"},
        {u"inf", u"inf", u"inf"},
        {u"signs", u"+-1", u"+-1"},
        {u"equal", u"a=b", u"a=b"},
        {u"# comment", nullptr, nullptr},
        {u"Name", nullptr, nullptr},
        {u"", nullptr, nullptr},
        {nullptr, nullptr, nullptr},
    };
    for (const auto& [key, value, expected] : rows) {
        SCOPED_TRACE(NSString(key).UTF8String());
        EXPECT_TRUE(configValueForKey(settings, key) == value);
        const Value typed = typedValueForKeys(settings, NSArray::arrayWithObjects({u"none", NSNull(), key}));
        EXPECT_TRUE(typed == expected) << typed.description().UTF8String();
        if (typed.isNumber() && expected.isNumber()) {
            EXPECT_EQ(typed.numberIfAny()->kind(), expected.numberIfAny()->kind());
        }
    }
    EXPECT_TRUE(typedValueForKeys(settings, NSArray::arrayWithObjects({u"flag", u"on"})) == u"");
    EXPECT_TRUE(typedValueForKeys(settings, nullptr).isNil());
    EXPECT_TRUE(typedValueForKeys(nullptr, NSArray::arrayWithObjects({u"on"})).isNil());
    EXPECT_TRUE(configValueForKey(nullptr, u"on").isNil());
}

TEST(ConfigurationTextTest, mailsLoseTheirQuoteMarks) {
    EXPECT_TRUE(reformattedMailing(u"> > one\n>two -> 2\n>\n| three") == u"one two -> 2\n\nthree");
    EXPECT_TRUE(reformattedMailing(u"") == u"");
    EXPECT_TRUE(reformattedMailing(nullptr).isNil());
}

TEST(ConfigurationTextTest, dumps) {
    EXPECT_TRUE(dump(u"ab\u00E4d\nfgh\xD800~") ==
                u"00000000: 0061 0062 00E4 0064 000A 0066 0067 0068  ab.d.fgh\n"
                u"00000008: D800 007E                                .~\n");
    EXPECT_EQ(dumpAsArray(u"123456789").count(), 2u);
    EXPECT_TRUE(dumpAsArray(u"x").objectAtIndex(0) ==
                u"00000000: 0078                                     x");
    EXPECT_EQ(dumpAsArray(u"").count(), 0u);
    EXPECT_TRUE(dump(u"") == u"");
    EXPECT_TRUE(dump(nullptr).isNil() && dumpAsArray(nullptr).isNil());
}

} // namespace
} // namespace kelvo
