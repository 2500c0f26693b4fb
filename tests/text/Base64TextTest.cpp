#include "text/Base64Text.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(Base64TextTest, encodesAndDecodes) {
    const char16_t* const rows[][2] = {
        {u"", u""},
        {u"f", u"Zg=="},
        {u"fo", u"Zm8="},
        {u"foo", u"Zm9v"},
        {u"foobar", u"Zm9vYmFy"},
        {u"\u00E4\u00FF", u"w6TDvw=="},
        {u"~~~???", u"fn5+Pz8/"},
    };
    for (const auto& [text, base64] : rows) {
        EXPECT_TRUE(encodebase64(text) == base64);
        EXPECT_TRUE(decodebase64(base64) == text);
    }
    EXPECT_TRUE(decodebase64(u" Zm9\r\nvYg\t= =\n") == u"foob");
    EXPECT_TRUE(decodebase64UsingEncoding(u"5A==", NSISOLatin1StringEncoding) == u"\u00E4");
    for (const char16_t* broken : {u"Z", u"Zg", u"Zg=", u"Zg===", u"Zm8", u"Zm9v=", u"====", u"Zh==", u"Zm9=",
                                   u"Zg==Zg==", u"Z=g=", u"Zm-_", u"Zm9v\u00E4", u"5A=="})
        EXPECT_TRUE(decodebase64(broken).isNil()) << NSString(broken).UTF8String();
    EXPECT_TRUE(decodebase64UsingEncoding(u"Zg==", kCFStringEncodingInvalidId).isNil());
    EXPECT_TRUE(encodebase64(u"\xD800").isNil() && encodebase64(nullptr).isNil());
    EXPECT_TRUE(decodebase64(nullptr).isNil());
}

} // namespace
} // namespace kelvo
