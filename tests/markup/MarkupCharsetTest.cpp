#include "markup/MarkupCharset.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

TEST(MarkupCharsetTest, firstDeclarationBeforeTheBody) {
    const std::tuple<const char*, const char16_t*, const char16_t*> rows[] = {
        {"nil", nullptr, u""},
        {"no tags", u"charset=utf-8", u""},
        {"short form", u"<html><META Charset = 'a-1' ></html>", u"a-1"},
        {"long form", u"<meta http-equiv=Content-Type content=\"text/html; charset=a-1\">", u"a-1"},
        {"parameter in apostrophes", u"<meta content=\"text/html; CHARSET ='a 1;'; x\">", u"a 1;"},
        {"parameter before white space", u"<meta content=\"text/html; charset= a-1 b\">", u"a-1"},
        {"long form before short", u"<meta charset=short-form content='x; charset=long-form'>", u"long-form"},
        {"content without charset", u"<meta content='text/html' charset=short-form>", u"short-form"},
        {"others in front",
         u"<!-- <meta charset=no> --><meta name=a content=b><title>t</title><meta charset=yes>", u"yes"},
        {"markup in content", u"<meta content=\"<b>; charset=a-1</b>\">", u"a-1</b>"},
        {"references", u"<meta charset='u&#116;f-&#x38'>", u"utf-8"},
        {"closing tag", u"</meta charset=no><meta charset=yes>", u"yes"},
        {"other name", u"<metal charset=no><xmeta charset=no><met charset=no>", u""},
        {"behind the body", u"<bOdY><meta charset=no>", u""},
        {"behind the closing body", u"</body><meta charset=no>", u""},
        {"in a script", u"<script>'<meta charset=no><body>'</script><meta charset=yes>", u"yes"},
        {"XML", u"<?xml version='1.0' ENCODING=\"a-1\"?><meta charset=no>", u"a-1"},
        {"XML without encoding", u"<?XML version='1.0'?><meta charset=yes>", u"yes"},
        {"references in XML stay", u"<?xml encoding='&#97;-1'?>", u"&#97;-1"},
        {"XML style sheet", u"<?xml-stylesheet encoding='no'?><meta charset=yes>", u"yes"},
        {"element xml", u"<xml encoding='no'></xml><meta charset=yes>", u"yes"},
        {"never closed", u"<meta charset=no", u""},
    };
    for (const auto& [name, markup, expected] : rows) {
        const NSString charset = markupCharset(markup);
        EXPECT_FALSE(charset.isNil()) << name;
        EXPECT_EQ(charset.UTF8String(), NSString(expected).UTF8String()) << name;
    }
    EXPECT_EQ(markupEncoding(u"<meta charset=windows-1251>"), 11u);
    EXPECT_EQ(markupEncoding(nullptr), 0xFFFFFFFF);
}

TEST(MarkupCharsetTest, beginningsTellOnlyWhatNoRestCanChange) {
    // The end of the first script depends on whether the comment is closed.
    const std::u16string page =
        u"<title>t</title><!-- c --><meta name=x content=y><script><!-- </script><meta charset=first><body> "
        u"--> </script><meta charset=second><body>";
    for (const std::u16string& text :
         {page, page.substr(page.find(u"<meta charset=second")), page.substr(0, 40)})
        for (std::size_t length = 0; length <= text.size(); ++length) {
            const NSString told =
                markupCharsetOfBeginning(NSString(std::u16string_view(text).substr(0, length)));
            if (!told.isNil()) {
                EXPECT_EQ(told, markupCharset(NSString(text))) << length;
            }
        }
    EXPECT_EQ(markupCharsetOfBeginning(u"<title>t</title><meta charset=utf-8>"), u"utf-8");
    EXPECT_EQ(markupCharsetOfBeginning(u"<p><body>"), u"");
}

TEST(MarkupCharsetTest, headers) {
    EXPECT_EQ(headerCharset(u"text/html; Charset=utf-8"), u"utf-8");
    EXPECT_EQ(headerCharset(u"text/html;charset = 'iso 8859-2' ; x"), u"iso 8859-2");
    EXPECT_EQ(headerCharset(u"text/html; charset=;charset=koi8-r;"), u"koi8-r");
    for (const char16_t* header : {u"text/html", u"charset", u"charset=", u""})
        EXPECT_TRUE(headerCharset(header).isNil());
    EXPECT_TRUE(headerCharset(nullptr).isNil());
    EXPECT_EQ(headerEncoding(u"text/html; charset=latin2"), 9u);
    EXPECT_EQ(headerEncoding(u"text/html"), 0xFFFFFFFF);
}

} // namespace
} // namespace kelvo
