#include "importers/pages/PageImport.h"

#include "support/Importing.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

using namespace std::string_literals;

std::string described(const Value& value) {
    if (const NSDate* const date = value.dateIfAny())
        return std::to_string(static_cast<long long>(date->timeIntervalSince1970()));
    if (!value.isArray())
        return value.string().UTF8String();
    std::string all;
    for (const Value& each : value.array())
        all += (all.empty() ? "" : "|") + each.string().UTF8String();
    return all;
}

NSDictionary attributesOf(const std::string& file, const char* type) {
    return attributesByImporter(importers::importPage, NSData::dataWithBytes(file), type);
}

/// The attributes in one order, without what all of their names begin with.
std::string imported(const std::string& file, const char* type = "public.html") {
    const NSDictionary attributes = attributesOf(file, type);
    std::string result;
    std::size_t count = 0;
    for (const char16_t* name :
         {u"Title", u"Authors", u"Keywords", u"Description", u"Languages", u"Creator", u"Copyright",
          u"ContentCreationDate", u"ContentModificationDate", u"URL", u"WhereFroms", u"TextContent"}) {
        const Value& value = attributes.objectForKey(NSString(u"kMDItem").stringByAppendingString(name));
        if (value.isNil())
            continue;
        ++count;
        result += (result.empty() ? "" : "; ") + NSString(name).UTF8String() + "=" + described(value);
    }
    EXPECT_EQ(attributes.count(), count);
    return result;
}

std::string text(const std::string& page) {
    return attributesOf(page, "public.html").objectForKey(u"kMDItemTextContent").string().UTF8String();
}

TEST(PageImport, WhatPagesSayOfThemselves) {
    const struct {
        const char* name;
        std::string page;
        const char* expected;
    } rows[] = {
        {"empty file", "", "TextContent="},
        {"all of it",
         "<html lang='en-GB'><title>\n A &amp; <b>B</b> </title><meta name=author content='Ann, Bob'>"
         "<META CONTENT=\"x; y, z,, x\" NAME=Keywords><meta name=description content='It &quot;is&quot;'>"
         "<meta name=generator content=Hand><meta name=copyright content='\xC2\xA9 2020'>"
         "<meta property=article:published_time content=2011-03-24T12:34:56.5+01:00>"
         "<meta itemprop=dateModified content='2011-03-24T12:34Z'><body>T",
         "Title=A & <b>B</b>; Authors=Ann, Bob; Keywords=x; y|z|x; Description=It \"is\"; Languages=en-GB; "
         "Creator=Hand; Copyright=\xC2\xA9 2020; ContentCreationDate=1300966496; "
         "ContentModificationDate=1300970040; TextContent=T"},
        {"keywords between semicolons", "<meta name=keywords content='a b;c'>",
         "Keywords=a b|c; TextContent="},
        {"better statements count, wherever they stand",
         "<meta property=og:description content=worse><meta name=description content=good>"
         "<meta property=og:title content=worse><title>good</title><meta name=twitter:title content=worst>"
         "<meta name=dc.creator content=worse><meta name=author content=A><meta name=author content=B>"
         "<meta name=citation_author content=worst>",
         "Title=good; Authors=A|B; Description=good; TextContent="},
        {"others count where nothing better is said",
         "<title> </title><meta property=og:title content=T><meta property=og:description content=D>"
         "<meta property=og:locale content=pt_BR><meta property=article:author content=http://a/>",
         "Title=T; Description=D; Languages=pt-BR; TextContent="},
        {"what is no language and no moment",
         "<html lang='the English one'><meta name=date content=2011-03-24>"
         "<meta name=dcterms.created content=2011-03-24T12:34:56><meta name=dc.date "
         "content=2011-02-29T12:00Z>",
         "TextContent="},
        {"titles of pictures and hidden ones",
         "<svg><title>a</title></svg><div hidden><title>b</title></div>", "TextContent="},
        {"a title without an end", "<head><title>a</head><body>b", "Title=a; TextContent=b"},
        {"characters past U+FFFF", "<title>&#x1F600;</title>&#128512; &#0128512 &#x110000; &#;",
         "Title=😀; TextContent=😀 😀 &#x110000; &#;"},
        {"XHTML",
         "<?xml version='1.0'?><html xml:lang='de'><head><title/></head><body><p hidden=''/>x</body>",
         "Languages=de; TextContent=x"},
        {"bytes",
         "\x7F"
         "ELF\0<title>x</title>"s,
         ""},
        {"UTF-16", "\xFF\xFE<\0p\0>\0\xE4\0"s, "TextContent=ä"},
        {"UTF-8 undeclared", "<p>\xC3\xA4", "TextContent=ä"},
        {"Windows Latin 1 undeclared", "<p>\x93\xE4\x94", "TextContent=“ä”"},
        {"declared", "<meta charset=koi8-r><p>\xC3\xA4", "TextContent=ц╓"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(imported(row.page), row.expected) << row.name;
}

TEST(PageImport, TextIsWhatReadersSee) {
    const struct {
        const char* page;
        const char* text;
    } rows[] = {
        {"no markup &amp; all", "no markup & all"},
        {"<p> a\n b<p><br><br>c</div>d", "a b\n\nc\n\nd"},
        {"<a>x</a>, (<a>y</a>). <a>z</a><a>!?</a> <b>v</b>w", "x, (y). z!? vw"},
        {"<a>x</a> .", "x ."},
        {"<a>x</a>y <b>.</b>", "xy ."},
        {"ma<i><a id=p3></a></i>gni<a id='p4'/>fi<a name=p5><a name=p6><a href='#p'></a>cen<a href=x><!-- "
         "--></a>ce",
         "magnificence"},
        {"12<a name=p>34</a></a>5<a href=x>6</a>", "12345 6"},
        {"<a href=x>Berlin</a>er <a href=y/>ä</a>\u00E4, <a href=x>y</a><b>1</b>", "Berliner ää, y 1"},
        {"<a href=x/>a</a><a href=y/>b</a><a name=p></a><a name=q>c</a><a>d</a>", "a b c d"},
        {"a<a href=x><img></a>b<img><a name=p></a>c<a href=x></a> d <a href=x></a>e", "a b c d e"},
        {"<pre>a\n  b\n\n\nc</pre>d", "a\nb\n\nc\n\nd"},
        {"a<script>b</script><style>c</style><!-- d --><template>e<template>f</template>g</template>h", "ah"},
        {"a<noscript><p>b</noscript>c<iframe>d<iframe></iframe>e<video>f</video><select><option>g</select>",
         "ace"},
        {"<div hidden>a<div>b</div>c<p hidden>d</div>e", "e"},
        {"<div style='Display : NONE !important'>a</div>b<p style='color:red;visibility:hidden'>c<p>d",
         "b\n\nd"},
        {"<div style='--display:none;visibility:visible;overflow:hidden'>a</div>", "a"},
        {"<i style='position:absolute;left:-9999px'>a</i><i style='position:absolute;left:-999px'>b</i>",
         "b"},
        {"<span class=hidden>a</span><span class='x hidden'>b</span><b data-hidden title=hidden>c</b>", "bc"},
        {"<input hidden>a<br hidden>b", "a\nb"},
        {"<p draggable hidden>a<p>b", "b"},
        {"<div hidden/>a<div hidden></div>b", "a\n\nb"},
        {"<ul><li hidden>a<ul><li>b</ul>c<li>d</ul>e", "d\ne"},
        {"<ul><li>a<li hidden>b</ul>c", "a\nc"},
        {"<ul><li hidden>a<li hidden>b</ul>c", "c"},
        {"<dl><dt hidden>a<dd>b</dl>", "b"},
        {"<table><tr><td hidden>a<table><td>b</table><td>c<tr hidden><td>d<tr><td>e</table>f", "c\ne f"},
        {"<div>a<p hidden>b<br>c</div>d", "a\n\nd"},
        {"<dialog>a</dialog><dialog open>b</dialog>c", "b\nc"},
        {"<html hidden><body style='visibility:hidden'>a", "a"},
        {"a<div hidden>b", "a"},
        {"a<math><annotation>b</annotation></math><svg><desc>c</desc><text>d</text></svg>", "ad"},
        {"<style>i { overflow: hidden }</style>a<script>if (a <b hidden) c</script>b", "ab"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(text(row.page), row.text) << row.page;
}

std::string resource(const std::string& address, const std::string& type, const std::string& data) {
    return "<dict><key>WebResourceURL</key><string>" + address +
           "</string><key>WebResourceMIMEType</key><string>" + type +
           "</string><key>WebResourceData</key><string><![CDATA[" + data + "]]></string></dict>";
}

std::string archive(const std::string& main, const std::string& frames) {
    return "<dict><key>WebMainResource</key>" + main + "<key>WebSubframeArchives</key><array>" + frames +
           "</array></dict>";
}

std::string archiveFile(const std::string& main, const std::string& frames) {
    return "<plist>" + archive(main, frames) + "</plist>";
}

TEST(PageImport, SavedPages) {
    const std::string page = "<html lang=en><title>T</title><p>main<div hidden>x</div>";
    const std::string mime = "Subject: s\r\nMIME-Version: 1.0\r\nContent-Location: http://a/x\r\n"
                             "Content-Type: multipart/related; boundary=b\r\n\r\n";
    const struct {
        const char* name;
        const char* type;
        std::string file;
        const char* expected;
    } rows[] = {
        {"web archive with frames in frames", "com.apple.webarchive",
         archiveFile(
             resource("https://a/b", "text/html", page),
             archive(resource("http://f/", "text/html", "<title>F</title><meta name=author content=F>one"),
                     archive(resource("http://g/", "text/html", "inner"), "")) +
                 archive(resource("http://p/", "text/plain", "2 <3> 4"), "") +
                 archive(resource("http://i/", "image/png", "png"), "")),
         "Title=T; Languages=en; URL=https://a/b; WhereFroms=https://a/b; "
         "TextContent=main\n\none\n\ninner\n\n2 <3> 4"},
        {"from the disk", "com.apple.webarchive", archiveFile(resource("file:///b", "text/html", "x"), ""),
         "TextContent=x"},
        {"MIME HTML", "com.microsoft.word.mhtml",
         mime +
             "--b\r\nContent-Type: text/html; charset=iso-8859-2\r\nContent-Location: http://a/x\r\n"
             "Content-Transfer-Encoding: quoted-printable\r\n\r\n<title>=B9</title>a<iframe "
             "src=3D\"y\"></iframe>\r\n--b\r\nContent-Type: text/html\r\nContent-Location: http://a/y\r\n\r\n"
             "frame\r\n--b--\r\n",
         "Title=š; URL=http://a/x; WhereFroms=http://a/x; TextContent=a\n\nframe"},
        {"a letter", "com.microsoft.word.mhtml",
         "MIME-Version: 1.0\nContent-Type: multipart/mixed; boundary=b\n\n--b\n\nx\n--b--\n", ""},
        {"neither", "com.apple.webarchive", "<html>", ""},
        {"empty", "com.microsoft.word.mhtml", "", ""},
    };
    for (const auto& row : rows)
        EXPECT_EQ(imported(row.file, row.type), row.expected) << row.name;
}

TEST(PageImport, LongPagesAreCutAndDeepOnesRead) {
    std::string deep;
    for (int level = 0; level < 100000; ++level)
        deep += "<div hidden><ul><li><table>";
    EXPECT_EQ(text("a" + deep), "a");
    const std::string fill(importers::mostUnitsOfText - 1, 'x');
    const NSString cut = attributesOf("<p>" + fill + "\xF0\x9F\x98\x80", "public.html")
                             .objectForKey(u"kMDItemTextContent")
                             .string();
    EXPECT_EQ(cut.UTF8String(), fill);
}

} // namespace
} // namespace kelvo
