#include "markup/MarkupDecoding.h"

#include "platform/foundation/NSLog.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using XmlExtensions::stringWithMarkupData_contentType_defaultEncoding;
using XmlExtensions::stringWithMarkupData_defaultEncoding;
using XmlExtensions::stringWithMarkupData_encodingName_defaultEncoding_URL;

constexpr NSStringEncoding latin1 = NSISOLatin1StringEncoding;

std::string meta(const std::string& charset) {
    return "<meta charset='" + charset + "'>";
}

NSString decode(const std::string& bytes, const char16_t* label, NSStringEncoding defaultEncoding = latin1) {
    return stringWithMarkupData_encodingName_defaultEncoding_URL(NSData::dataWithBytes(bytes), label,
                                                                 defaultEncoding, {});
}

TEST(MarkupDecodingTest, choosesBetweenAskedAndDeclared) {
    constexpr NSStringEncoding utf8 = NSUTF8StringEncoding;
    const std::tuple<const char*, const char16_t*, NSStringEncoding, const char*, std::string,
                     const char16_t*>
        rows[] = {
            {"nothing declared", nullptr, latin1, "", "\xE9", u"\u00E9"},
            {"the declared is the default", nullptr, utf8, "utf-8", "\xC3\xA9", u"\u00E9"},
            {"ASCII declared", nullptr, utf8, "us-ascii", "\xC3\xA9", u"\u00E9"},
            {"an unknown one declared", u"utf-8", latin1, "martian", "\xC3\xA9", u"\u00E9"},
            {"an unknown label", u"martian", utf8, "", "\xC3\xA9", u"\u00E9"},
            {"declared against the default", nullptr, latin1, "utf-8", "\xC3\xA9", u"\u00E9"},
            {"even with more losses", nullptr, latin1, "utf-8", "\xE9", u"\uFFFD"},
            {"more losses than asked for", u"latin1", utf8, "utf-8", "\xE9", u"\u00E9"},
            {"no more losses than asked for", u"us-ascii", utf8, "utf-8", "\xC3\xA9\xE9", u"\u00E9\uFFFD"},
            {"as many losses", u"iso-8859-7", utf8, "iso-8859-8", "\xE1\xFF", u"\u05D1\uFFFD"},
            {"no losses", u"latin1", utf8, "utf-8", "\xC3\xA9", u"\u00E9"},
            {"UTF-8 asked for, Latin 1 left behind", u"utf-8", utf8, "latin1", "\xC3\xA9", u"\u00E9"},
            {"UTF-8 asked for, CP1251 left behind", u"utf-8", utf8, "cp1251", "\xD0\xB6", u"\u0436"},
            {"UTF-8 asked for, another page", u"utf-8", utf8, "latin2", "\xC4\x9B", u"\u00C4\u009B"},
            {"UTF-8 by default only", nullptr, utf8, "latin1", "\xC3\xA9", u"\u00C3\u00A9"},
            {"UTF-8 asked for, but it is not", u"utf-8", utf8, "latin1", "\xE9", u"\u00E9"},
            {"CP1251 against another label", u"latin1", utf8, "cp1251", "\xE6", u"\u0436"},
            {"Big5", u"latin1", utf8, "big5", "\xA4\xA4\xFE", u"\u4E2D\uFFFD"},
            {"Shift-JIS", nullptr, latin1, "x-sjis", "\x93\xFA", u"\u65E5"},
            {"Kamenicky", u"latin1", latin1, "x-kam-cs", "\x80\xA9", u"\u010C\u0159"},
            {"KOI8-CS2, losses not counted", u"latin1", latin1, "koi8-cs2", "\xC7\xA1", u"ch\uFFFD"},
            {"Kamenicky asked for", u"x-kam-cs", latin1, "", "\x80\xA9", u"\u010C\u0159"},
            {"Kamenicky on both sides", u"kam-cs", latin1, "x-kam-cs", "\x80", u"\u010C"},
            {"UTF-8 declared, Kamenicky asked for", u"kam-cs", latin1, "utf-8", "\xC4\x8C", u"\u010C"},
            {"KOI8-CS2 asked for", u"koi8-cs2", latin1, "", "\xC7\xA1", u"ch\uFFFD"},
            {"KOI8-CS2 by default", nullptr, NSKOI8CS2StringEncoding, "", "\xC7", u"ch"},
            {"a sequence cut off", u"utf-8", latin1, "", "\xE4\xB8", u"\uFFFD"},
            {"a byte-order mark", u"utf-8", latin1, "", "\xEF\xBB\xBF", u"\uFEFF"},
            {"ASCII that says it is UTF-16", nullptr, latin1, "utf-16", " ab", nullptr},
        };
    // Behind a body as long as these the beginning alone is looked at first.
    for (const std::string& rest : {std::string(), std::string(20000, 'x')})
        for (const auto& [name, label, defaultEncoding, charset, bytes, shown] : rows) {
            const std::string head = "<title>t</title>" + meta(charset) + "<body>" + rest;
            const NSString text = decode(head + bytes, label, defaultEncoding);
            if (shown) {
                EXPECT_EQ(text.UTF8String(), head + NSString(shown).UTF8String()) << name;
            } else {
                EXPECT_EQ(text.length(), (head.size() + bytes.size() + 1) / 2) << name;
            }
        }
}

TEST(MarkupDecodingTest, otherWaysIn) {
    EXPECT_EQ(stringWithMarkupData_defaultEncoding(nullptr, latin1), u"");
    EXPECT_EQ(decode("", u"martian"), u"");
    const NSData data = NSData::dataWithBytes("\xC3\xA9");
    EXPECT_EQ(stringWithMarkupData_defaultEncoding(data, latin1), u"\u00C3\u00A9");
    EXPECT_EQ(stringWithMarkupData_contentType_defaultEncoding(data, u"text/html; charset=UTF-8", latin1),
              u"\u00E9");
    EXPECT_EQ(stringWithMarkupData_contentType_defaultEncoding(data, nullptr, NSUTF8StringEncoding),
              u"\u00E9");
    EXPECT_EQ(stringWithMarkupData_contentType_defaultEncoding(data, u"text/html", latin1), u"\u00C3\u00A9");
}

TEST(MarkupDecodingTest, encodingsThatCannotBeAskedForGiveNil) {
    for (NSStringEncoding unknown : {0u, 0xFFFFFFFFu, 0x80000009u})
        EXPECT_TRUE(decode(meta("utf-8"), nullptr, unknown).isNil());
}

TEST(MarkupDecodingTest, wideTexts) {
    EXPECT_EQ(decode(std::string("\xFF\xFE<\0p\0>", 7), u"utf-16"), u"<p\uFFFD");
    EXPECT_EQ(decode(std::string("\0<\0p\0>", 6), u"utf-16"), u"<p>");
    EXPECT_EQ(decode(std::string("\xFE\xFF", 2), u"utf-16", 0xFFFFFFFF), nullptr);
}

TEST(MarkupDecodingTest, textsAreCutWhereTheyPassTheirBytes) {
    // MacHebrew 81 is two units.
    EXPECT_EQ(decode(std::string(20, '\x81'), u"mac-hebrew").length(), 32u);
    EXPECT_EQ(decode(std::string(41, '\x81'), u"mac-hebrew").length(), 40u);
    for (const char16_t* label : {static_cast<const char16_t*>(nullptr), u"koi8-cs2"}) {
        const std::string czech = meta(label ? "" : "koi8-cs2") + std::string(100, '\xC7');
        EXPECT_EQ(decode(czech, label).length(), czech.size() + 100);
    }
}

TEST(MarkupDecodingTest, unknownLabelsAreLoggedOnceEach) {
    for (std::size_t length : {0, 20000}) {
        NSLogCapture capture;
        decode(meta("martian") + "<body>" + std::string(length, 'x'), u"venusian");
        const std::vector<NSString> expected = {u"Unknown/Unsupported encoding: venusian",
                                                u"Unknown/Unsupported encoding: martian"};
        EXPECT_EQ(capture.messages(), expected);
    }
}

TEST(MarkupDecodingTest, hugeHeadsTakeLinearTime) {
    std::string metas;
    while (metas.size() < 1000000)
        metas += "<meta content=\"charset charset=\" x='charset'>";
    EXPECT_EQ(decode(metas + meta("utf-8") + "\xC3\xA9", nullptr).length(), metas.size() + 23);
    const std::string label(1000000, '1');
    EXPECT_EQ(decode(meta(label), u"utf-8").length(), label.size() + 17);
}

TEST(MarkupDecodingTest, bytesOfDocuments) {
    const std::tuple<const char16_t*, NSStringEncoding, std::string> rows[] = {
        {nullptr, 1, ""},
        {u"", 1, ""},
        {u"<p>\u00E9\u4E2D<&>", 1, "<p>&eacute;&#20013;<&>"},
        {u"<meta charset=utf-8>\u00E9", 4, "<meta charset=utf-8>\xC3\xA9"},
        {u"<meta charset=kam-cs>\u0159", NSKamenickyStringEncoding, "<meta charset=kam-cs>\xA9"},
        {u"<?xml encoding='cp1251'?>\u0436", 11, "<?xml encoding='cp1251'?>\xE6"},
    };
    for (const auto& [markup, expected, bytes] : rows) {
        NSStringEncoding encoding = 0;
        const NSData data = markupData(markup, &encoding);
        EXPECT_FALSE(data.isNil());
        EXPECT_EQ(data.characters(), bytes);
        EXPECT_EQ(encoding, expected) << bytes;
        EXPECT_EQ(markupData(markup), data);
    }
    EXPECT_TRUE(markupData(u"<meta charset=latin1>\u4E2D").isNil());
    for (const char16_t* charset : {u"utf-8", u"x-sjis", u"iso-2022-jp", u"euc-jp", u"utf-16"}) {
        const std::u16string text = std::u16string(u"<meta charset=") + charset + u"><p>\u65E5\u672C";
        const NSData data = markupData(NSString(text));
        EXPECT_EQ(stringWithMarkupData_encodingName_defaultEncoding_URL(data, charset, latin1, {}),
                  text.c_str());
    }
}

} // namespace
} // namespace kelvo
