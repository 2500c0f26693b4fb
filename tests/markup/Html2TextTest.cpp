#include "markup/Html2Text.h"

#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

NSString onlyBody(const NSString& string) {
    return stringByConvertingHtml2PlainTextNonUmlauted_reformat_onlyBody_googleTags(string, false, false,
                                                                                    true, false);
}

TEST(Html2Text, ReceiverComesBack) {
    for (const char16_t* text : {u"", u"A plain sentence.", u"two  spaces\nand lines", u"a < b", u"R&D &foo;",
                                 u"<p></p><br>", u"<script>x</script>", u"<p> &nbsp; </p>", u"<!-- x"}) {
        const NSString receiver(text);
        for (auto* convert :
             {stringByConvertingHtml2PlainText, stringByConvertingHtml2ReformattedPlainText, onlyBody})
            EXPECT_TRUE(convert(receiver).isIdenticalTo(receiver)) << receiver.UTF8String();
    }
    EXPECT_TRUE(stringByConvertingHtml2PlainText(nullptr).isNil());
    const NSString plain(u"A plain sentence.");
    EXPECT_TRUE(stringByConvertingHtml2SimplifiedPlainText(plain).isIdenticalTo(plain));
    EXPECT_TRUE(stringByConvertingHtml2PlainTextNonUmlauted(plain, true).isIdenticalTo(plain));
    EXPECT_EQ(stringByConvertingHtml2PlainTextNonUmlauted(u"caf\u00E9", true), u"cafe");
    EXPECT_EQ(stringByConvertingHtml2PlainText(u"R&amp;D"), u"R&D");
}

TEST(Html2Text, OnlyBody) {
    const std::tuple<const char*, const char16_t*, const char16_t*> rows[] = {
        {"head left out", u"<html><head><title>T</title></head><body>A</body></html>", u"A"},
        {"behind the body", u"x<body>A</body>B", u"A"},
        {"no body", u"<title>T</title><p>A", u"T\n\nA"},
        {"empty body", u"<p>A</p><body> <p></body>", u"\n\nA\n\n\n\n"},
        {"head without an end", u"<head>x<body>A", u"xA"},
        {"frames", u"<frameset><noframes>x<body>A</body></noframes></frameset>B", u"B"},
        {"noscript outside", u"<noscript>x</noscript><body>A", u"A"},
    };
    for (const auto& [name, html, text] : rows) {
        EXPECT_EQ(onlyBody(html), text) << name;
    }
    EXPECT_EQ(stringByConvertingHtml2PlainText(u"<head><title>T</title></head><body>A"), u"T A");
}

TEST(Html2Text, Simplified) {
    EXPECT_EQ(stringByConvertingHtml2SimplifiedPlainText(
                  u"<html><head><title>T</title></head><body>A</body></html>"),
              u" A");
    EXPECT_EQ(stringByConvertingHtml2SimplifiedPlainText(u"<body> a\n<p>b &amp; c<b>&lt"),
              u"  a\n b & c &lt");
    EXPECT_EQ(stringByConvertingHtml2SimplifiedPlainText(u"<p>no body"), u" no body");
    EXPECT_EQ(stringByConvertingHtml2SimplifiedPlainText(u"<body>a<noframes>b</noframes><body/>c</body>d"),
              u" a b c");
}

bool throwing(const NSString&, char16_t*, std::size_t, std::size_t, std::size_t, std::size_t, std::size_t,
              TagKind, void*) {
    throw NSException(NSString(u"Name"), NSString(u"reason"));
}

TEST(Html2Text, InterruptedScanGivesTheReceiver) {
    const NSString receiver(u"<p>a");
    EXPECT_TRUE(
        _convertHtml2PlainTextUsingHandler_entities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
            receiver, throwing, true, true, false, false, true, false, nullptr, false)
            .isIdenticalTo(receiver));
}

TEST(Html2Text, LargePageIsTheSumOfItsParts) {
    std::u16string html, text;
    for (int part = 0; part < 15000; ++part) {
        html += u"<div class=\"x\"><b>caf&eacute;</b>  au\nlait</div>";
        text += u"\n\ncaf\u00E9 au lait\n\n";
    }
    EXPECT_EQ(stringByConvertingHtml2PlainText(NSString(html)).characters(), text);
}

} // namespace
} // namespace kelvo
