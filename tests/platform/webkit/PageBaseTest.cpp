#include "platform/webkit/PageBase.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

using namespace std::string_literals;

TEST(PageBaseTest, PutsTheBaseWhereThePagesOwnWouldStand) {
    const std::tuple<const char*, std::string, const char16_t*, std::string> rows[] = {
        {"empty page", "", u"http://h/p", "<base href=\"http://h/p\">"},
        {"text", "x", u"http://h/?a&b", "<base href=\"http://h/?a&amp;b\">x"},
        {"without a base", "x", nullptr, "<base href=\"x-nowhere:\">x"},
        {"type first", "<!DOCTYPE html>\n<p>", u"http://h/", "<!DOCTYPE html>\n<base href=\"http://h/\"><p>"},
        {"comment, declaration, html, head",
         "\xEF\xBB\xBF<?xml version='1'?> <!-- <p> --><!doctype HTML><HTML lang='>'><Head id=x><title>",
         u"http://h/",
         "\xEF\xBB\xBF<?xml version='1'?> <!-- <p> --><!doctype HTML><HTML lang='>'><Head id=x><base "
         "href=\"http://h/\"><title>"},
        {"other tag of the same beginning", "<header>", u"http://h/", "<base href=\"http://h/\"><header>"},
        {"never closed", "<!-- <html", u"http://h/", "<!-- <html<base href=\"http://h/\">"},
        {"own base", "<head><base href='http://own/'>", u"http://h/",
         "<head><base href='http://own/'><base href='http://own/'>"},
        {"own base without quotes", "<p><BASE target=_top HREF=HTTP://own/x>", u"http://h/",
         "<base href=\"HTTP://own/x\"><p><BASE target=_top HREF=HTTP://own/x>"},
        {"own relative base", "<base href=\" d/e \">", u"http://h/a/b",
         "<base href=\"http://h/a/d/e\"><base href=\" d/e \">"},
        {"own base with a colon that is no scheme's", "<base href='d/e:f/'>", u"http://h/a/b",
         "<base href=\"http://h/a/d/e:f/\"><base href='d/e:f/'>"},
        {"own relative base, no base", "<base href=d>", nullptr, "<base href=\"x-nowhere:\"><base href=d>"},
        {"own base in a script and a comment",
         "<script>'<base href=http://a/>'</script><!--<base href=http://b/>-->", u"http://h/",
         "<base href=\"http://h/\"><script>'<base href=http://a/>'</script><!--<base href=http://b/>-->"},
        {"base without a reference before one with", "<base target=x><base href=http://own/>", u"http://h/",
         "<base href=\"http://own/\"><base target=x><base href=http://own/>"},
    };
    for (const auto& [name, page, base, expected] : rows) {
        const NSData placed = pageByPlacingBase(NSData::dataWithBytes(page), nullptr,
                                                base ? NSURL::URLWithString(base) : NSURL());
        EXPECT_EQ(placed.characters(), expected) << name;
    }
}

TEST(PageBaseTest, SpeaksThePagesEncoding) {
    const NSURL base = NSURL::URLWithString(u"a:b");
    const auto wide = [](const std::string& text, bool isBigEndian) {
        std::string units;
        for (const char unit : text)
            units += isBigEndian ? std::string{'\0', unit} : std::string{unit, '\0'};
        return units;
    };
    const std::string element = "<base href=\"a:b\">";
    EXPECT_EQ(pageByPlacingBase(NSData::dataWithBytes("\xFF\xFE" + wide("<html>x", false)), nullptr, base)
                  .characters(),
              "\xFF\xFE" + wide("<html>" + element + "x", false));
    EXPECT_EQ(pageByPlacingBase(NSData::dataWithBytes("\xFE\xFF" + wide("x", true) + "\x12"), nullptr, base)
                  .characters(),
              "\xFE\xFF" + wide(element + "x", true) + "\x12");
    for (const auto& [label, isBigEndian] :
         {std::pair(u"UTF-16BE", true), std::pair(u"UTF-16LE", false), std::pair(u"utf-16", false)})
        EXPECT_EQ(pageByPlacingBase(NSData::dataWithBytes(wide("x", isBigEndian)), label, base).characters(),
                  wide(element + "x", isBigEndian));
}

} // namespace
} // namespace kelvo
