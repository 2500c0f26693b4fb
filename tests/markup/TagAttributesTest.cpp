#include "markup/TagAttributes.h"
#include "markup/TagPredicates.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelvo {
namespace {

/// The value in UTF-8, "nil" for nil.
std::string shown(const NSString& value) {
    return value.isNil() ? "nil" : value.UTF8String();
}

TEST(TagAttributesTest, attributesOfTags) {
    const std::tuple<const char*, const char16_t*, const char*, const char*, const char*> rows[] = {
        {"quoted", u"<a href=\"x y\" b>", "href", "x y", "x y"},
        {"apostrophes", u"<a href='x\"y'>", "HREF", "x\"y", "x\"y"},
        {"unquoted", u"<a href=x/y z>", "href", "x/y", "x/y"},
        {"white space around =", u"<a href \n=\t 'x'>", "href", "x", "x"},
        {"white space in the value", u"<a href=' x y \u00A0'>", "href", " x y", " x y"},
        {"nothing but white space", u"<a href=' \n '>", "href", "nil", "nil"},
        {"empty", u"<a href=''       >", "href", "nil", "nil"},
        {"nothing behind =", u"<a bcd href=   ", "href", "nil", "nil"},
        {"inside quotes", u"<a b='href=1' href=2>", "href", "2", "2"},
        {"an open quote hides the rest", u"<a b='c href=2>", "href", "nil", "nil"},
        {"part of a word", u"<a xhref=1 href=2>", "href", "2", "2"},
        {"part of a word with a hyphen", u"<a x-href=1 href=2>", "href", "1", "1"},
        {"no longer than length + 5", u"a=1234", "a", "nil", "nil"},
        {"one longer", u"a=12345", "a", "12345", "12345"},
        {"name without letters' case", u"<a d\u0131r=1 dir=2>", "dir", "1", "1"},
        {"> in a quoted value", u"<a title=\"x>y\">", "title", "x", "x"},
        {"> first in a quoted value", u"<a title=\">xy\">", "title", "nil", ">xy"},
        {"markup in a value", u"<a title=\"x<b>y</b>z\">", "title", "x<b", "x<b>y</b>z"},
        {"< open at the end", u"<a title=\"xyz<\">", "title", "xyz<", "xyz"},
        {"</ open at the end", u"<a title=\"xyz</\">", "title", "xyz</", "xyz"},
        {"two < open", u"<a title=\"x<z<\">", "title", "x<z<", "x<z<"},
        {"the next meta tag", u"<meta content=\"x\n<MeTa name=\"y\">", "content", "x\n<MeTa name=", "x"},
        {"never closed", u"<a title=\"xyz", "title", "xyz", "xyz"},
        {"empty name", u"<a title=\"xyz\">", "", "nil", "nil"},
        {"null name", u"<a title=\"xyz\">", nullptr, "nil", "nil"},
    };
    for (const auto& [name, markup, attribute, value, nestedValue] : rows) {
        const std::u16string_view tag = markup;
        const std::u16string inside = u"href=0 " + std::u16string(tag) + u" href=9";
        EXPECT_EQ(shown(XmlExtensions::attributeOfTagCharacters_range_withName(inside.data(), {7, tag.size()},
                                                                               attribute)),
                  value)
            << name;
        EXPECT_EQ(
            shown(XmlExtensions::attributeOfTagCharacters_length_withName(markup, tag.size(), attribute)),
            value)
            << name;
        EXPECT_EQ(shown(_attributeOfTagCharactersWithName(inside.data(), 7, tag.size(), attribute, true)),
                  nestedValue)
            << name;
    }
}

TEST(TagAttributesTest, parameters) {
    const std::tuple<const char*, const char16_t*, const char*, const char*> rows[] = {
        {"up to ;", u"Charset=utf-8;x=y", "utf-8", "utf-8"},
        {"up to white space", u"charset=utf-8 x", "utf-8 x", "utf-8"},
        {"white space before =", u"charset \t=x", "x", "x"},
        {"white space after =", u"charset= x", " x", "x"},
        {"quoted", u"charset='a;b c'd", "a;b c", "a;b c"},
        {"open quote", u"charset='a;b", "a;b", "a;b"},
        {"empty, then not", u"charset=;charset='';charset=x", "x", "x"},
        {"open quote at the end", u"charset='", "nil", "nil"},
        {"something between", u"charsets=x", "nil", "nil"},
        {"only the name", u"charset", "nil", "nil"},
    };
    for (const auto& [name, text, value, valueToWhite] : rows) {
        EXPECT_EQ(shown(_copyOfAttributeOfString(text, "CHARSET", 7, u'\'', false)), value) << name;
        EXPECT_EQ(shown(_copyOfAttributeOfString(text, "CHARSET", 7, u'\'', true)), valueToWhite) << name;
    }
    EXPECT_TRUE(_copyOfAttributeOfString(u"charset=x", "charset", 7, u'"', true).isNil());
    EXPECT_TRUE(_copyOfAttributeOfString(u"charset=x", "", 0, u'"', true).isNil());
}

TEST(TagAttributesTest, generalReader) {
    const std::tuple<const char*, const char16_t*, const char*, const char*, const char*> rows[] = {
        {"tag, unquoted", u"<a HREF=x y>", "href", "x", "nil"},
        {"tag, > in quotes", u"<a title = \"x>y\" b>", "title", "x>y", "nil"},
        {"tag, quote never closed", u"<a title='x y>z", "title", "x y", "nil"},
        {"tag, part of a name", u"<a data-id=1 id=2>", "id", "2", "nil"},
        {"style", u"position:absolute; Top: -2000px ;left:0", "top", "nil", "-2000px"},
        {"style, last", u"position:absolute; Top: -2000px ;left:0", "left", "nil", "0"},
        {"style, part of a name", u"margin-top:1px;top:2px", "top", "nil", "2px"},
        {"style, quoted", u"font-family: 'A; B' ; x:y", "font-family", "nil", "A; B"},
        {"style, quoted in part", u"font: \"A;B\", 'C';x:y", "font", "nil", "\"A;B\", 'C'"},
        {"style, quote never closed", u"font: x 'A;b:c", "font", "nil", "x 'A"},
        {"style, first quote never closed", u"font: 'A;b:c", "font", "nil", "A"},
        {"style, nothing", u"left:;top:1", "left", "nil", "nil"},
    };
    for (const auto& [name, text, attribute, ofTag, ofStyle] : rows) {
        EXPECT_EQ(shown(attributeOfTagWithName(text, attribute)), ofTag) << name;
        EXPECT_EQ(shown(attributeOfStyleWithName(text, attribute)), ofStyle) << name;
    }
    EXPECT_EQ(shown(attributeOfTagInRange_withName(u"<b id=1><a id=23>", {8, 9}, "id")), "23");
    EXPECT_EQ(shown(attributeOfStyleInRange_withName(u"top:1;top:234;", {6, 6}, "top")), "23");
    EXPECT_EQ(shown(attributeOfTagInRange_withName(u"<a id=23>", {3, 7}, "id")), "nil");
    EXPECT_EQ(shown(attributeOfTagWithName(u"<a id=23>", nullptr)), "nil");
    EXPECT_EQ(shown(_attributeOfStringWithName(u"A:1|a:2|", 0, 8, "a", 0, u':', u'|')), "2");
}

TEST(TagPredicatesTest, oneTag) {
    const std::tuple<const char16_t*, const char*, bool, bool, bool, bool> rows[] = {
        {u"<a b>", "a", true, false, false, false},
        {u"</td\n>", "td", false, true, false, false},
        {u"<br/>", "br", true, true, false, false},
        {u"<br />", "br", true, true, false, false},
        {u"<>", "nil", true, false, false, false},
        {u"<12>", "nil", true, false, false, false},
        {u"<!-- x -->", "x", true, false, true, false},
        {u"<![if IE]>", "if", true, false, false, true},
        {u"<!DOCTYPE", "DOCTYPE", true, false, false, false},
        {u"<", "nil", false, false, false, false},
        {u"", "nil", false, false, false, false},
    };
    for (const auto& [markup, name, isOpen, isClosed, isRemark, isMeta] : rows) {
        const std::u16string_view tag = markup;
        const std::u16string whole = u"a/" + std::u16string(tag) + u"/b";
        const NSRange range{2, tag.size()};
        EXPECT_EQ(shown(nameOfTag(tag)), name);
        EXPECT_EQ(shown(nameOfTagInRange(whole, range)), name);
        const bool expected[] = {isOpen, isClosed, isRemark, isMeta};
        const bool ofTag[] = {isTagOpen(tag), isTagClosed(tag), isRemarkTag(tag), isMetaTag(tag)};
        const bool inRange[] = {isTagOpenInRange(whole, range), isTagClosedInRange(whole, range),
                                isRemarkTagInRange(whole, range), isMetaTagInRange(whole, range)};
        EXPECT_TRUE(std::ranges::equal(ofTag, expected)) << name;
        EXPECT_TRUE(std::ranges::equal(inRange, expected)) << name;
    }
    EXPECT_TRUE(nameOfTagInRange(u"<a>", {1, 3}).isNil() && nameOfTag(NSString()).isNil());
}

} // namespace
} // namespace kelvo
