#include "platform/appkit/html/HTMLReading.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"
#include "platform/foundation/FileIO.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSObject.h"
#include "platform/ledger/RequestNotes.h"
#include "platform/webkit/WebEngine.h"
#include "support/AttributedText.h"
#include "support/LocalServer.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>

#include <sys/socket.h>
#include <sys/un.h>

#include <sys/stat.h>
#include <unistd.h>

namespace kelvo {
namespace {

using tests::describe;
using tests::LocalServer;
using tests::TemporaryFolder;

/// Lets go what the function says, and remembers what it was asked.
class Judge final : public NSObject, public WebResourceLoadDelegate {
public:
    explicit Judge(std::function<bool(const std::string& url)> allows) : allows_(std::move(allows)) {}

    NSURLRequest webView_resource_willSendRequest_redirectResponse_fromDataSource(
        const Value&, const Value&, const NSURLRequest& request, const Value& redirectResponse,
        const Value&) override {
        const std::string url = request.URL().absoluteString().UTF8String();
        asked += url;
        if (const NSDictionary response = redirectResponse.dictionary(); !response.isNil())
            asked += " after " +
                     std::to_string(response.objectForKey(u"StatusCode").numberIfAny()->intValue()) + " of " +
                     response.objectForKey(u"URL").url().absoluteString().UTF8String();
        asked += "\n";
        return allows_(url) ? request : NSURLRequest();
    }

    std::string asked;

private:
    std::function<bool(const std::string& url)> allows_;
};

struct Reading {
    std::shared_ptr<Judge> judge = {};
    std::string base = {};
    std::string charset = {};
    double timeoutSeconds = 30;
};

NSAttributedString read(const std::string& page, const Reading& reading = {},
                        NSDictionary* attributes = nullptr) {
    auto options = NSMutableDictionary::dictionary();
    options.setObject_forKey(NSNumber::numberWithDouble(reading.timeoutSeconds), NSTimeoutDocumentOption);
    if (reading.judge)
        options.setObject_forKey(std::shared_ptr<NSObject>(reading.judge),
                                 NSWebResourceLoadDelegateDocumentOption);
    if (!reading.base.empty())
        options.setObject_forKey(NSURL::URLWithString(NSString::stringWithUTF8String(reading.base)),
                                 NSBaseURLDocumentOption);
    if (!reading.charset.empty())
        options.setObject_forKey(NSString::stringWithUTF8String(reading.charset),
                                 NSTextEncodingNameDocumentOption);
    return NSAttributedStringKitAdditions::initWithHTML_options_documentAttributes(
        NSData::dataWithBytes(page), options, attributes);
}

struct Row {
    const char* name;
    const char* page;
    const char* expected;
};

template <std::size_t count>
void expectRows(const Row (&rows)[count]) {
    for (const Row& row : rows)
        EXPECT_EQ(describe(read(row.page, {nullptr, "http://h/d/"})), row.expected) << row.name;
}

TEST(HTMLReadingTest, GivesTextTheStyleItIsShownIn) {
    expectRows({
        {"nothing", "", ""},
        {"text alone", "one  two\n three ", "one two three"},
        {"entities", "&lt;a&gt; &amp;&nbsp;&eacute;&#x1F600;", "<a> &\u00A0\u00E9\U0001F600"},
        {"weight, slant, lines", "a<b>b</b><i>c</i><u>d</u><s>e</s><em><strong>f</strong></em>",
         "a{bold:b}{italic:c}{under:d}{strike:e}{bold;italic:f}"},
        {"lines through inline elements", "<u>a <b>b</b><span style='display:inline-block'>c</span></u>",
         "{under:a }{bold;under:b}c"},
        {"size, family, colour", "<font size=5 color=#ff0000 face='Nobody Knows, Georgia'>x</font><tt>y</tt>",
         "{Georgia;18;#ff0000:x}{Courier;9.75:y}"},
        {"families that nobody knows", "<span style='font-family:Foo,Bar'>x</span>", "{Foo:x}"},
        {"half opaque", "<span style='color:rgba(0,0,0,.5);background:#00ff0080'>x</span>",
         "{#408040;on #80ff80:x}"},
        {"background of a block that the text needs",
         "<div style='background:#222;color:#eee'>x</div><div style='background:#eee'>y</div>",
         "{#eeeeee;on #222222:x}\ny\n"},
        {"grounds of tables that are none, and around those that are",
         "<table><tr><td style='background:#900;color:#fff'>a</table><div "
         "style='display:table;background:#090;color:#fff'>b</div><div style='background:#009'><table "
         "style='color:#fff'><tr><td>c<td bgcolor=black>d</table></div>",
         "{#ffffff;on #990000:a}\n{#ffffff;on #009900:b}\n[cell 0,0 of 2] {#ffffff;on #000099:c}\n"
         "[cell 0,1 of 2] {#ffffff:d}\n"},
        {"up, down", "x<sup>2<sup>3</sup></sup><sub>4</sub>",
         "x{10;super 1:2}{8.33;super 2:3}{10;super -1:4}"},
        {"letters apart, letters changed",
         "<p style='letter-spacing:2px;text-transform:uppercase'>stra\u00DFe<p "
         "style='text-transform:capitalize'>an o'clock",
         "[after 12] {kern 1.5:STRASSE}\nAn O'clock\n"},
        {"links",
         "<a href=x?a=1&amp;b>rel</a><a href='#f'>frag</a><a href='mailto:a@b'>m</a><a name=x>n</a><a "
         "href='javascript:x()'>j</a>",
         "{#0000ee;under;to http://h/d/x?a=1&b:rel}{#0000ee;under;to http://h/d/#f:frag}{#0000ee;under;to "
         "mailto:a@b:m}n{#0000ee;under:j}"},
        {"not shown",
         "a<span style=display:none>b</span><span style=visibility:hidden>c<i "
         "style=visibility:visible>d</i></span><script>1</script><style>x{}</style><noscript>n</"
         "noscript><template>t</template><!-- c -->e",
         "a{italic:d}e"},
        {"generated text",
         "<style>.q:before{content:'\\201C' "
         "\"a\"}.q::after{content:attr(x)}.i::before{content:'\\E001'}</style><p class=q>x<p "
         "class=i>y<p><q>z <q>w</q></q>",
         "[after 12] \u201Cax\n[after 12] y\n\u201Cz \u2018w\u2019\u201D\n"},
        {"controls",
         "<input value=a> <input type=password value=b> <input type=submit> <select><option>c<option "
         "selected>d</select><button>e</button>",
         "{Helvetica;9.75:a} {Helvetica;9.75;#333333:Submit} {Helvetica;9.75:d}{Helvetica;9.75;#333333:e}"},
    });
}

TEST(HTMLReadingTest, LinksBeyondReasonAreNone) {
    const auto link = [](std::size_t length) {
        return describe(read("<a href='" + std::string("http://h/").append(length - 9, 'x') + "'>a</a>"));
    };
    EXPECT_NE(link(8192).find("to http://h/x"), std::string::npos);
    EXPECT_EQ(link(8193), "{#0000ee;under:a}");
}

TEST(HTMLReadingTest, BreaksLinesWhereTheyAreSeenToBreak) {
    expectRows({
        {"blanks between boxes, also such as do not go away", "<p>a</p> <p>b</p>&nbsp;<p>c</p>",
         "[after 12] a\n[after 12] b\n[after 12] \u00A0\nc\n"},
        {"paragraphs", "<p>a<p>b</p>c", "[after 12] a\n[after 12] b\nc"},
        {"blocks in blocks", "<div><div>a</div></div><div></div> b <div> c</div>", "a\nb\nc\n"},
        {"breaks", "a<br>b<p>c<br></p><div><br></div><p>d<br><br></p>",
         "[after 12] a\u2028b\n[after 12] c\n[after 12] \nd\u2028\n"},
        {"pre", "<pre>\na  b\n\n\tc\n</pre>d", "{Courier;9.75:a  b}\n\n[after 9.75] {Courier;9.75:\\tc}\nd"},
        {"a line across", "a<hr><ul><li>b<hr></ul>",
         "[after 6.75] a\n[after 12.75 line below] \n[indent 0/36 after 6.75 {disc}] \\t\u2022\\tb\n"
         "[indent 36/36 line below] \n"},
        {"lines kept, blanks not", "<p style='white-space:pre-line'>a   b\n c", "a b\u2028c\n"},
        {"headings", "<h1>a</h1><h4>b</h4>", "[h1 after 16.08] {24;bold:a}\n[h4] {bold:b}\n"},
        {"alignment",
         "<p align=right>a<center>b</center><p style='text-align:justify'>c<p dir=rtl>d<p dir=rtl "
         "align=left>e",
         "[right after 12] a\n[center after 12] b\n[justified after 12] c\n[rtl after 12] d\n[left rtl] e\n"},
        {"indents",
         "<blockquote>a<blockquote>b</blockquote></blockquote><dl><dt>c<dd>d</dl><p "
         "style='text-indent:20px;line-height:15px;margin:5px 7px'>e<div style='margin:0 auto;width:9em'>f",
         "[indent 30/30 tail -30 after 12] a\n[indent 60/60 tail -60 after 12] b\nc\n[indent 30/30 after 12] "
         "d\n"
         "[indent 20.25/5.25 tail -5.25 after 3.75 line 11.25] e\nf\n"},
        {"collapsing margins",
         "<div style='margin:30px 0 5px'>a<p style='margin:9px 0 20px'>b</p></div><div "
         "style='padding-top:3px'><p style='margin-top:4px'>c",
         "[after 6.75] a\n[after 20.25] b\nc\n"},
        {"margins that pull together", "<p style='margin-bottom:25px'>a<p style='margin-top:-8px'>b",
         "[after 12.75] a\nb\n"},
        {"distances that are a page's layout",
         "<p style='margin-left:2000px'>a<p style='text-indent:-900px'>b<p style='margin:0 0 900px'>c<p>d",
         "[indent 288/288 after 12] a\n[after 12] b\n[after 72] c\nd\n"},
        {"drawings, but not the signs of buttons",
         "a<svg width=40 height=40></svg><svg width=20 height=40></svg>b", "a{image.svg 30x30:\uFFFC}b"},
        {"summary of what is closed", "<details><summary>a</summary>b</details>", "a\n"},
        {"what appears by animations and transitions",
         "<style>@keyframes s{from{visibility:hidden}to{visibility:visible}}#a{animation:s 8s steps(1,end) "
         "both}#b{visibility:hidden;animation:s 9s 1s both}#c{animation:s 9s infinite}#d{visibility:hidden;"
         "transition:visibility 9s 9s}#d.on{visibility:visible}</style><p id=a>a<p id=b>b<p id=c>c<p "
         "id=d>d<script>d.offsetWidth;d.className='on'</script>",
         "[after 12] a\n[after 12] b\n[after 12] c\nd\n"},
        {"shadow tree",
         "<div id=h><b slot=s>b</b>c</div><script>h.attachShadow({mode:'open'}).innerHTML='<i>a</i><slot "
         "name=s></slot>'</script>",
         "{italic:a}{bold:b}\n"},
        {"frame of its own page", "a<iframe srcdoc='<p>b'></iframe>", "[after 13.5] a\nb\n"},
    });
}

TEST(HTMLReadingTest, KeepsListsAndTables) {
    expectRows({
        {"list", "<ul><li>a<li><p>b</p><p>c</p></ul>",
         "[indent 0/36 after 12 {disc}] \\t\u2022\\ta\n[indent 0/36 after 12 {disc}] \\t\u2022\\tb\n"
         "[indent 36/36] c\n"},
        {"numbers", "<ol start=3><li>a<li value=7>b<li>c</ol><ol reversed type=i><li>d<li>e</ol>",
         "[indent 0/36 {decimal}.] \\t3.\\ta\n[indent 0/36 {decimal}.] \\t7.\\tb\n[indent 0/36 after 12 "
         "{decimal}.] \\t8.\\tc\n[indent 0/36 {lower-roman}.] \\tii.\\td\n[indent 0/36 {lower-roman}.] "
         "\\ti.\\te\n"},
        {"list in a list", "<ol><li>a<ul><li>b</ul><li><ol type=A><li>c</ol></ol>",
         "[indent 0/36 {decimal}.] \\t1.\\ta\n[indent 36/72 {decimal}. {circle}] \\t\u25E6\\tb\n"
         "[indent 36/72 {decimal}. {upper-alpha}.] \\tA.\\tc\n"},
        {"without markers", "<ul style='list-style:none;padding:0'><li>a<li>b</ul>", "a\nb\n"},
        {"empty item", "<ul><li></ul>", "[indent 0/36 {disc}] \\t\u2022\\t\n"},
        {"table", "a<table><tr><th>b<td>c<tr><td><td>d</table>e",
         "a\n[center cell 0,0 of 2] {bold:b}\n[cell 0,1 of 2] c\n[cell 1,0 of 2] \n[cell 1,1 of 2] d\ne"},
        {"spans", "<table><tr><td rowspan=9>a<td colspan=2>b<tr><td>c<td>d</table>",
         "[cell 0,0 spans 2,1 of 3] a\n[cell 0,1 spans 1,2 of 3] b\n[cell 1,1 of 3] c\n[cell 1,2 of 3] d\n"},
        {"a span to the end", "<table><tr><td rowspan=0>a<td>b<tr><td>c<tr><td>d</table>",
         "[cell 0,0 spans 3,1 of 2] a\n[cell 0,1 of 2] b\n[cell 1,1 of 2] c\n[cell 2,1 of 2] d\n"},
        {"groups in the order of their display",
         "<table><caption>x</caption><tfoot><tr><td>c<tbody><tr><td>b<td>b<thead><tr><td>a</table>",
         "[center] x\n[cell 0,0 of 2] a\n[cell 1,0 of 2] b\n[cell 1,1 of 2] b\n[cell 2,0 of 2] c\n"},
        {"table in a table", "<table><tr><td>a<table><tr><td>b<td>c</table><td>d</table>",
         "[cell 0,0 of 2] a\n[cell 0,0 of 2 cell 0,0 of 2] b\n[cell 0,0 of 2 cell 0,1 of 2] c\n[cell 0,0 of "
         "2] \n[cell 0,1 of 2] d\n"},
        {"table for layout alone", "<table><tr><td>a<p>b</table>", "[after 12] a\nb\n"},
        {"table in an item", "<ul><li><table><tr><td>a<td>b</table></ul>",
         "[indent 0/36 {disc}] \\t\u2022\\t\n[cell 0,0 of 2] a\n[cell 0,1 of 2] b\n"},
    });
}

/// Each paragraph's list or table, by its number in the text.
std::string placesIn(const NSAttributedString& text) {
    std::vector<const void*> known;
    std::string places;
    for (const auto& run : text.runs()) {
        const NSParagraphStyle& style = run.attributes->style();
        const void* place = nullptr;
        if (!style.textLists.empty())
            place = style.textLists.back().get();
        else if (!style.textBlocks.empty())
            place = style.textBlocks.back()->table.get();
        if (place && std::ranges::find(known, place) == known.end())
            known.push_back(place);
        const auto number = place ? std::ranges::find(known, place) - known.begin() + 1 : 0;
        const NSString shown = text.string().substringWithRange(run.range);
        for (const char16_t unit : shown.characters())
            if (unit == u'\n')
                places += std::to_string(number);
    }
    return places;
}

TEST(HTMLReadingTest, WhatLooksAlikeIsNotTheSame) {
    constexpr struct {
        const char* name;
        const char* page;
        const char* places;
        const char* placesInRTF;
    } rows[] = {
        {"lists", "<ol><li>a<li>b</ol><p>x</p><ol><li>c<li>d</ol>", "11022", "11022"},
        {"lists without anything between", "<ul><li>a</ul><ul><li>b</ul>", "12", "12"},
        {"lists in one item and in the next",
         "<ol><li>a<ol><li>b</ol>x<ol><li>c</ol><li>d<ol><li>e</ol></ol>", "120314", "120312"},
        {"tables", "<table border=1><tr><td>a</table><table border=1><tr><td>a</table>", "12", "12"},
        {"tables in a cell",
         "<table border=1><tr><td><table border=1><tr><td>a</table><table border=1><tr><td>a</table></table>",
         "123", "123"},
    };
    for (const auto& row : rows) {
        const NSAttributedString text = read(row.page);
        EXPECT_EQ(placesIn(text), row.places) << row.name;
        using namespace NSAttributedStringKitAdditions;
        const NSData written = RTFFromRange_documentAttributes(text, {0, text.length()}, nullptr);
        EXPECT_EQ(placesIn(initWithRTF_documentAttributes(written, nullptr)), row.placesInRTF) << row.name;
    }
}

TEST(HTMLReadingTest, TableCellsSayHowTheyLook) {
    const NSAttributedString text = read(
        "<table width='50%' bgcolor=yellow style='border-collapse:collapse'><tr bgcolor=blue><td width='25%' "
        "valign=bottom style='border-left:3px solid red;padding:1px 2px 3px 4px'>a<td>b</table>");
    const auto& cell = *text.runAtIndex(0).attributes->style().textBlocks.at(0);
    EXPECT_EQ(cell.borders[0], (NSTextBlockBorder{2.25F, NSColor{1, 0, 0, 1}}));
    EXPECT_EQ(cell.borders[1].width, 0);
    EXPECT_EQ(cell.padding, (NSTextTableBlock::Edges<float>{3, 0.75F, 1.5F, 2.25F}));
    EXPECT_EQ(cell.backgroundColor, (NSColor{0, 0, 1, 1}));
    EXPECT_EQ(cell.verticalAlignment, NSTextBlockVerticalAlignment::bottom);
    ASSERT_TRUE(cell.width);
    EXPECT_EQ(cell.width->unit, NSTextBlockLength::Unit::percent);
    EXPECT_NEAR(cell.width->value, 25, 1);
    EXPECT_EQ(cell.table->backgroundColor, (NSColor{1, 1, 0, 1}));
    EXPECT_TRUE(cell.table->collapsesBorders);
    EXPECT_EQ(read("<table bgcolor=yellow><tr><td>a<td>b</table>")
                  .runAtIndex(0)
                  .attributes->style()
                  .textBlocks.at(0)
                  ->backgroundColor,
              (NSColor{1, 1, 0, 1}))
        << "other readers know no grounds of tables";
    EXPECT_EQ(cell.table, text.runAtIndex(2).attributes->style().textBlocks.at(0)->table);
}

TEST(HTMLReadingTest, HeedsTheCharset) {
    const std::string russian = "<meta charset=windows-1251><p>\xCF\xF0\xE8";
    EXPECT_EQ(describe(read(russian)), "\u041F\u0440\u0438\n");
    EXPECT_EQ(describe(read(russian, {nullptr, "", "iso-8859-1"})), "\u00CF\u00F0\u00E8\n");
    EXPECT_EQ(describe(read("\xEF\xBB\xBF\xC3\xA4")), "\u00E4");
    EXPECT_EQ(describe(read("\xC3\xA4")), "\u00E4");
    EXPECT_EQ(describe(read("\xE4")), "\u00E4");
    EXPECT_EQ(describe(read(std::string("\xFF\xFE\xE4\0b\0", 6))), "\u00E4b");
}

TEST(HTMLReadingTest, TellsWhatThePageSaysOfItself) {
    NSDictionary attributes;
    read("<title>A &amp; B</title>x", {}, &attributes);
    EXPECT_EQ(attributes, NSDictionary(NSMutableDictionary::dictionaryWithObjectsAndKeys(
                              {{NSHTMLTextDocumentType, NSDocumentTypeDocumentAttribute},
                               {u"A & B", NSTitleDocumentAttribute}})));
    EXPECT_TRUE(
        NSAttributedStringKitAdditions::initWithHTML_options_documentAttributes(nullptr, nullptr, &attributes)
            .isNil());
    EXPECT_TRUE(attributes.isNil());
}

class HTMLResourcesTest : public testing::Test {
protected:
    LocalServer server;
    TemporaryFolder folder;

    static std::string dataURL() {
        return "data:image/gif;base64,R0lGODlhAQABAIAAAAAAAP///yH5BAEAAAAALAAAAAABAAEAAAIBRAA7";
    }
};

TEST_F(HTMLResourcesTest, PicturesBecomeAttachments) {
    server.respond("/a.gif", "image/gif", tests::smallPicture);
    server.respond("/error.gif", "image/gif", tests::smallPicture, "404 Not Found");
    const std::string longName = "/" + std::string(100, 'n') + ".gif";
    server.respond(longName, "image/gif", tests::smallPicture);
    const std::string file = folder.write("own.gif", tests::smallPicture);
    const std::string size = " width=20 height=10>";
    const NSAttributedString text =
        read("<img src=a.gif" + size + "<img src='a.gif'" + size + "<img src='file://" + file + "'" + size +
                 "<img src='" + dataURL() + "'" + size + "<img src=none.gif alt='not there'" + size +
                 "<img src=error.gif" + size + "<img src=" + longName + size +
                 "<img srcset='a.gif 1x, b.gif 2x'" + size + "<img src='" + dataURL() + "'>",
             {nullptr, server.url("/")});
    EXPECT_EQ(describe(text),
              "{a.gif 15x7.5:\uFFFC\uFFFC}{own.gif 15x7.5:\uFFFC}{image.gif 15x7.5:\uFFFC}not "
              "there{image.gif 15x7.5:\uFFFC}{a.gif 15x7.5:\uFFFC}");
    EXPECT_EQ(text.runAtIndex(0).attributes->attachment->fileWrapper->regularFileContents().characters(),
              tests::smallPicture);
    EXPECT_EQ(server.count("/b.gif"), 0);
}

TEST_F(HTMLResourcesTest, TheDelegateIsAskedForEveryRequest) {
    const std::string file = "file://" + folder.write("own.css", "p{color:red}");
    server.respond("/a.gif", "image/gif", tests::smallPicture);
    server.redirect("/go", server.url("/a.gif"));
    server.redirect("/away", server.url("/refused.gif"));
    const std::string page = "<link rel=stylesheet href='" + file +
                             "'><p>x<img width=9 height=9 src='/go'><img src='/away'><img "
                             "src='/refused2.gif'><img width=9 height=9 src='" +
                             dataURL() + "'><img width=8 height=8 src='" + dataURL() +
                             std::string(3 << 20, 'A') + "'>";
    const auto judge = std::make_shared<Judge>(
        [](const std::string& url) { return url.find("refused") == std::string::npos; });
    EXPECT_EQ(
        describe(read(page, {judge, server.url("/")})),
        "{#ff0000:x}{#ff0000;go.gif 6.75x6.75:\uFFFC}{#ff0000;image.gif 6.75x6.75:\uFFFC}{#ff0000;image.gif "
        "6x6:\uFFFC}\n");
    // Embedded data is asked about by its kind alone, however much it is.
    for (const std::string& line :
         {file, dataURL(), std::string("data:image/gif;base64,"), server.url("/go"),
          server.url("/a.gif after 302 of ") + server.url("/go"),
          server.url("/refused.gif after 302 of ") + server.url("/away"), server.url("/refused2.gif")})
        EXPECT_NE(("\n" + judge->asked).find("\n" + line + "\n"), std::string::npos) << line << " in\n"
                                                                                     << judge->asked;
    EXPECT_EQ(server.count("/refused.gif"), 0);
    EXPECT_EQ(server.count("/refused2.gif"), 0);
    EXPECT_EQ(server.count("/a.gif"), 1);
}

TEST_F(HTMLResourcesTest, NothingGoesPastTheDelegate) {
    const std::string port = server.url("").substr(7);
    const std::string page =
        "<link rel=preconnect href='http://" + port + "'><link rel=dns-prefetch href='http://" + port +
        "'><link rel=prefetch href=/p><link rel=icon href=/i><video src=/v poster=/vp></video><audio src=/a "
        "autoplay></audio><object data=/o></object><iframe src=/f></iframe><style>@import "
        "'/c';@font-face{font-family:F;src:url(/ff)}p{font-family:F;background:url(/bg)}</"
        "style><p>x<script>try{new WebSocket('ws://" +
        port +
        "/ws')}catch(e){}try{navigator.sendBeacon('/b')}catch(e){}fetch('/fetch').catch(e=>0);try{new "
        "EventSource('/es')}catch(e){}try{new Worker('/w')}catch(e){}new Image().src='/img'</script>";
    const auto judge = std::make_shared<Judge>([](const std::string&) { return false; });
    EXPECT_NE(describe(read(page, {judge, server.url("/")})).find("x"), std::string::npos);
    for (const char* path : {"/p", "/i", "/v", "/vp", "/a", "/o", "/f", "/c", "/ff", "/bg", "/ws", "/b",
                             "/fetch", "/es", "/w", "/img"})
        EXPECT_EQ(server.count(path), 0) << path;
    EXPECT_NE(judge->asked.find("/img\n"), std::string::npos) << judge->asked;
}

TEST_F(HTMLResourcesTest, NoConnectionGoesPastTheDelegate) {
    LocalServer other;
    const char* const paths[] = {"/xhr", "/fetch", "/ping", "/img", "/style", "/script", "/frame", "/form"};
    for (const char* path : paths)
        server.redirect(path, other.url(path), "307 Temporary Redirect");
    const std::string page =
        "<link rel=stylesheet href=/style><script src=/script></script><iframe src=/frame></iframe><iframe "
        "name=f></iframe><form id=o action=/form method=post target=f></form><img src=/img><a id=l href='#x' "
        "ping=/ping></a><p>x<script>l.click();o.submit();fetch('/"
        "fetch',{keepalive:true,mode:'no-cors'}).catch(e=>0);try{var r=new "
        "XMLHttpRequest();r.open('GET','/xhr',false);r.send()}catch(e){}</script>";
    // The delegate of the first pass is asked about redirects too. That of the second lets them go when it is
    // asked for the request, and not when it is asked for the connection, as with a name that means another
    // host by then.
    for (const bool isPatient : {false, true}) {
        const auto judge = std::make_shared<Judge>([&](const std::string& url) {
            return url.find(other.url("/")) != 0 || (isPatient && url != other.url("/"));
        });
        const RequestNotes notes;
        EXPECT_NE(describe(read(page, {judge, server.url("/")})).find("x"), std::string::npos);
        EXPECT_EQ(
            std::ranges::count(notes.refusedAddresses(), NSString::stringWithUTF8String(other.url("/"))), 1);
        EXPECT_NE(judge->asked.find(server.url("/") + "\n"), std::string::npos) << "the connection";
    }
    for (const char* path : {"/xhr", "/fetch", "/img", "/style", "/script"})
        EXPECT_GE(server.count(path), 2) << path;
    for (const char* path : paths)
        EXPECT_EQ(other.count(path), 0) << path;
}

TEST_F(HTMLResourcesTest, NothingOfAPageOutlivesIt) {
    LocalServer other;
    server.keepSilent("/late");
    server.respond("/b.gif", "image/gif", tests::smallPicture);
    const auto judge = std::make_shared<Judge>([](const std::string&) { return true; });
    EXPECT_EQ(
        describe(read("<p>x<script>fetch('/late',{keepalive:true,mode:'no-cors'})</script><img src=/b.gif>",
                      {judge, server.url("/")})),
        "x\n");
    EXPECT_EQ(server.count("/late"), 1);
    EXPECT_EQ(server.releaseTo(other.url("/late")), 1);
    // The next page may load what it likes, and has to wait for nobody's leftovers.
    other.respond("/a.gif", "image/gif", tests::smallPicture);
    EXPECT_EQ(describe(read("<img width=9 height=9 src=/a.gif>", {judge, other.url("/")})),
              "{a.gif 6.75x6.75:\uFFFC}");
    EXPECT_EQ(other.count("/late"), 0);
}

/// The sockets of the file system on which the X servers of the engine listen.
std::set<std::string> socketsOfDisplays() {
    const std::string engine = std::to_string(WebEngine::sharedEngine().processIdentifier());
    std::set<std::string> inodes;
    std::ifstream children("/proc/" + engine + "/task/" + engine + "/children");
    for (std::string child; children >> child;) {
        std::string name;
        std::getline(std::ifstream("/proc/" + child + "/comm"), name);
        if (name != "Xvfb")
            continue;
        for (const auto& descriptor : std::filesystem::directory_iterator("/proc/" + child + "/fd")) {
            std::error_code ignored;
            inodes.insert(std::filesystem::read_symlink(descriptor, ignored).string());
        }
    }
    std::set<std::string> paths;
    std::ifstream sockets("/proc/net/unix");
    for (std::string line; std::getline(sockets, line);) {
        std::istringstream fields(line);
        const std::vector<std::string> field(std::istream_iterator<std::string>(fields), {});
        if (field.size() > 7 && field[7][0] == '/' && inodes.count("socket:[" + field[6] + "]") != 0)
            paths.insert(field[7]);
    }
    return paths;
}

TEST(WebEngineTest, ItsDisplaysTakeNobodyElse) {
    read("start");
    const auto paths = socketsOfDisplays();
    EXPECT_EQ(paths.size(), 2U);
    for (const std::string& path : paths) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const FileDescriptor client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(connect(client.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
        // A client of protocol 11 without a cookie.
        const char greeting[12] = {'l', 0, 11, 0, 0, 0, 0, 0, 0, 0, 0, 0};
        char answer = 2;
        ASSERT_TRUE(writeAll(client.get(), greeting, sizeof greeting));
        ASSERT_EQ(readSome(client.get(), &answer, 1), 1);
        EXPECT_EQ(answer, 0) << "refused";
    }
}

TEST_F(HTMLResourcesTest, WithoutABaseRelativeReferencesAreNothing) {
    const auto judge = std::make_shared<Judge>([](const std::string&) { return true; });
    EXPECT_EQ(describe(read("<img src=a.gif alt=b><a href=x.html>c</a>", {judge})),
              "b{#0000ee;under;to x.html:c}");
    EXPECT_EQ(judge->asked, "");
}

TEST_F(HTMLResourcesTest, ScriptsSeeNoFilesAndCannotLeave) {
    const std::string file = "file://" + folder.write("secret.html", "secret");
    const std::string page = "<iframe width=0 id=f src='" + file +
                             "'></iframe><p id=p>x<script>function put(t){p.append(t)}try{var r=new "
                             "XMLHttpRequest();r.open('GET','" +
                             file + "',false);r.send();put(r.responseText)}catch(e){put('!')}fetch('" + file +
                             "').then(r=>r.text()).then(put).catch(e=>put('!'));onload=function(){try{put(f."
                             "contentDocument.body.textContent)}catch(e){put('!')}};location.href='" +
                             file + "';alert(1);open('" + file + "')</script>";
    EXPECT_EQ(describe(read(page)), "x!!!\n");
}

TEST_F(HTMLResourcesTest, OfThisMachinePagesLoadOnlyWhatIsMeantForThem) {
    folder.write("page/own.js", "document.write('own')");
    folder.write("page/notes.txt", "not shown");
    folder.write("other.js", "document.write('other')");
    folder.write("frame.html", "frame");
    ASSERT_EQ(mkfifo(folder.path("page/fifo.gif").c_str(), 0600), 0);
    ASSERT_EQ(symlink("/dev/zero", folder.path("page/zero.gif").c_str()), 0);
    const std::string page =
        "<script src=own.js></script><script src=../other.js></script><img alt=f src=fifo.gif><img alt=z "
        "src=zero.gif><iframe src=notes.txt></iframe><iframe src=../frame.html></iframe>";
    // With and without somebody who lets everything go.
    for (const auto& judge :
         {std::shared_ptr<Judge>(), std::make_shared<Judge>([](const std::string&) { return true; })}) {
        const RequestNotes notes;
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(describe(read(page, {judge, "file://" + folder.path("page/p.html")})),
                  "[after 4.5] ownfz\nframe\n");
        EXPECT_EQ(notes.refusedAddresses().size(), 4U);
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
    }
}

TEST_F(HTMLResourcesTest, PagesCannotDeceiveTheWalk) {
    EXPECT_EQ(describe(read("<script>getComputedStyle=function(){return{}};Array.prototype.push=function(){};"
                            "Map=null;JSON.stringify=null;Object.defineProperty(Node.prototype,'childNodes',{"
                            "get(){return[]}})</script><form name=body><input name=tagName value=a><input "
                            "name=childNodes value=b></form><img name=documentElement>c")),
              "[after 12] {Helvetica;9.75:ab}\nc");
}

TEST_F(HTMLResourcesTest, FramesAreReadWhereTheyStand) {
    LocalServer elsewhere;
    const std::string remote = elsewhere.url("/remote");
    const std::string inner = server.url("/inner");
    const std::string file = "file://" + folder.write("own.html", "<title>t</title><p>own");
    elsewhere.respond("/b.gif", "image/gif", tests::smallPicture);
    elsewhere.respond("/remote", "text/html",
                      "r<a href=x>l</a><img width=9 height=9 src=b.gif><iframe src=" + inner + "></iframe>");
    server.respond("/inner", "text/html",
                   "<style>body{color:red}p:before{content:'g'}</style><p>i<iframe srcdoc=d></iframe>");
    server.respond("/a.gif", "image/gif", tests::smallPicture);
    server.respond("/set", "text/html",
                   "<frameset rows='*,*'><frame src=plain><frameset cols='*,*,0'><frame src=inner><frame "
                   "src=none><frame src=inner></frameset></frameset>");
    server.respond("/plain", "text/plain", "p  q");
    server.respond("/busting", "text/html",
                   "busting<form id=f action=/other target=_top></form><a id=l href=/other "
                   "target=_top></"
                   "a><script>if(top!=self)try{top.location=self.location}catch(e){}f.submit();l.click();"
                   "open('/other','_top')</script>");
    server.respond("/forging", "text/html",
                   "<script>parent.frames=top.Map=Map=String=null;closed=true;Object.prototype.get=Date.now="
                   "null;</script><img name=self><form name=document></form>own");
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"file", "a<iframe src='" + file + "'></iframe>b", "[after 13.5] a\n[after 13.5] own\nb"},
        {"embedded",
         "<iframe src='data:text/html,<b>x'></iframe><object data='data:text/html,y' "
         "type=text/html>z</object>",
         "[after 1.5] {bold:x}\ny\n"},
        {"elsewhere, with a picture and a frame of its own", "<iframe src='" + remote + "'></iframe>c",
         "[after 13.5] r{#0000ee;under;to " + elsewhere.url("/x") +
             ":l}{b.gif 6.75x6.75:\uFFFC}\n"
             "[after 1.5] {#ff0000:gi}\n[after 16.5] d\nc"},
        {"object, shown and missing", "<object data=set>not shown</object><object data=/none>shown</object>",
         "[after 12] {Courier;9.75:p  q}\n[after 1.5] {#ff0000:gi}\n[after 13.5] d\nshown"},
        {"object that is refused, or is a picture",
         "<object data='file:///none.html'>shown</object><object data=a.gif width=9 height=9></object>",
         "shown{a.gif 6.75x6.75:\uFFFC}"},
        {"frames without a page",
         "<frameset cols='50%,*'><frame src=set><frame src='" + file + "'></frameset>",
         "[after 12] {Courier;9.75:p  q}\n[after 1.5] {#ff0000:gi}\n[after 13.5] d\nown\n"},
        {"not in the order of their loading",
         "<iframe srcdoc=1></iframe><iframe id=m srcdoc=2></iframe><iframe id=r "
         "srcdoc=3></iframe><script>r.remove();document.body.prepend(m)</script>",
         "[after 3] 2\n1\n"},
        {"not seen",
         "<iframe style=display:none srcdoc=1></iframe><iframe style=visibility:hidden "
         "srcdoc=2></iframe><iframe width=1 height=1 srcdoc=3></iframe><iframe height=0 srcdoc=4></iframe>x",
         "x"},
        {"in a cell", "<table><tr><td>a<td><iframe srcdoc='<p>b<p>c'></iframe></table>",
         "[cell 0,0 of 2] a\n[after 12 cell 0,1 of 2] b\n[cell 0,1 of 2] c\n"},
        {"that would rather be the page",
         "a<iframe src=busting></iframe><iframe "
         "srcdoc=\"b<script>parent.location='/other'</script>\"></iframe>",
         "[after 1.5] a\n[after 15] busting\nb\n"},
        {"that want to be taken for others", "<iframe src=forging></iframe><iframe srcdoc=b></iframe>",
         "[after 3] own\nb\n"},
    };
    for (const auto& [name, page, expected] : rows)
        EXPECT_EQ(describe(read(page, {nullptr, server.url("/")})), expected) << name;
}

TEST_F(HTMLResourcesTest, FramesShareTheBoundsOfThePage) {
    server.respond("/again", "text/html", "a<iframe src=again></iframe><iframe src=again></iframe>");
    const std::string deep = describe(read("<iframe src=again></iframe>", {nullptr, server.url("/")}));
    EXPECT_LT(deep.size(), 10000U);
    std::string wide;
    for (int count = 0; count < 400; ++count)
        wide += "<iframe srcdoc=x></iframe>";
    // Those that come and go do not count.
    const std::string churning = "<script>for(var i=0;i<600;i++){var "
                                 "f=document.createElement('iframe');document.body.append(f);f.remove()}</"
                                 "script><iframe srcdoc=y></iframe>";
    const std::string text = describe(read("<body>" + churning + wide));
    EXPECT_EQ(std::count(text.begin(), text.end(), 'y'), 1);
    EXPECT_EQ(std::count(text.begin(), text.end(), 'x'), 254);
}

class HTMLFailuresTest : public HTMLResourcesTest {
protected:
    const RequestNotes notes;

    static pid_t webProcess() {
        const std::string group = std::to_string(WebEngine::sharedEngine().processIdentifier());
        pid_t found = 0;
        for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
            std::ifstream file(entry.path() / "stat");
            std::string stat;
            std::getline(file, stat);
            const std::size_t nameEnd = stat.rfind(") ");
            if (nameEnd == std::string::npos || stat.find("(WebKitWebProces") == std::string::npos)
                continue;
            std::string state, parent, own;
            std::istringstream(stat.substr(nameEnd + 2)) >> state >> parent >> own;
            if (own == group)
                found = std::stoi(entry.path().filename());
        }
        return found;
    }
};

TEST_F(HTMLFailuresTest, ServersThatKeepSilentCostOnlyWhatTheyWouldHaveSent) {
    server.keepSilent("/never");
    read("the engine's start is not of the time for a page");
    EXPECT_TRUE(notes.sentenceOfResult().isNil());
    EXPECT_EQ(describe(read("a<img src=/never>b<script>document.write('c')</script>",
                            {nullptr, server.url("/"), "", 2})),
              "abc");
    EXPECT_EQ(server.count("/never"), 1);
    EXPECT_EQ(notes.sentenceOfResult(), u"what had not come in time was left out");
}

TEST_F(HTMLFailuresTest, PagesThatWaitForAScriptAreReadWithout) {
    server.keepSilent("/never");
    read("start");
    EXPECT_EQ(
        describe(read("<script src=/never></script>a<img alt=b src=/x>", {nullptr, server.url("/"), "", 3})),
        "ab");
    EXPECT_EQ(server.count("/never"), 1);
    EXPECT_EQ(notes.sentenceOfResult(), u"it was read without what the network did not send in time");
}

TEST_F(HTMLFailuresTest, PagesThatEatMemoryAreEnded) {
    EXPECT_EQ(describe(read("<script>for(var a=[];;)a.push(new Uint8Array(1<<22).fill(1))</script>",
                            {nullptr, "", "", 100})),
              "(nil)");
    EXPECT_EQ(notes.outcome(), Outcome::outOfMemory);
    EXPECT_EQ(describe(read("next")), "next");
    EXPECT_TRUE(notes.sentenceOfResult().isNil());
}

TEST_F(HTMLFailuresTest, PagesTooDeepAreReadInPart) {
    const char* const script =
        "<script>for(var e=document.body,i=0;i<3000;i++)e=e.appendChild(document.createElement('b'));"
        "e.append('x')</script>";
    EXPECT_EQ(describe(read(std::string("<body>a") + script)), "a");
    EXPECT_EQ(notes.sentenceOfResult(),
              u"it is larger or deeper than what is read of a page, and the rest was left out");
}

TEST_F(HTMLFailuresTest, RedirectsWithoutEndEnd) {
    server.redirect("/r", server.url("/r"));
    EXPECT_EQ(describe(read("a<img src=/r>b", {nullptr, server.url("/"), "", 10})), "ab");
}

TEST_F(HTMLFailuresTest, PagesThatAScriptLeavesAreReadWithoutScripts) {
    server.respond("/other", "text/html", "other");
    server.respond("/a.gif", "image/gif", tests::smallPicture);
    constexpr const char* all = "abc{a.gif 6.75x6.75:\uFFFC}";
    constexpr const char* withoutScripts = "bn{a.gif 6.75x6.75:\uFFFC}";
    const struct {
        const char* name;
        const char* script;
        const char* expected = withoutScripts;
    } rows[] = {
        {"another page", "location='/other'"},
        {"reloaded", "location.reload()"},
        {"a form", "document.write('<form id=f action=/other></form>');f.submit()"},
        {"opened in its place", "open('/other','_self')"},
        {"stopped", "stop()"},
        {"a link, which waits", "document.write('<a id=f href=/other></a>');f.click()", all},
        {"once it has loaded", "onload=function(){location='/other'}", all},
        {"a place in it", "location.hash='x'", all},
        {"by itself", "document.write('<meta http-equiv=refresh content=0;url=/other>')", all},
    };
    const auto readWith = [&](const std::string& script) {
        return describe(
            read("<head><script>" + script +
                     "</script></head><body><script>document.write('a')</script>b<noscript>n</"
                     "noscript><script>document.write('c')</script><img src=a.gif width=9 height=9>",
                 {nullptr, server.url("/")}));
    };
    for (const auto& row : rows)
        EXPECT_EQ(readWith(row.script), row.expected) << row.name;
    // What these do depends on the pages before.
    for (const char* script : {"history.back()", "close()"}) {
        const std::string text = readWith(script);
        EXPECT_TRUE(text == all || text == withoutScripts) << script << ": " << text;
    }
    EXPECT_EQ(server.count("/other"), 0);
}

TEST_F(HTMLFailuresTest, WithoutScriptsThePageIsTheOneForSuchReaders) {
    server.respond("/a.gif", "image/gif", tests::smallPicture);
    server.respond("/n", "text/html",
                   "<p>x<noscript><b>f</b></noscript><script>document.write('s')</script>");
    EXPECT_EQ(describe(read(
                  "<head><script>stop()</script><noscript><style>i{color:red}</style><meta "
                  "http-equiv=refresh content='0;url=/other'></noscript></head><body onload='x.append(1)'><i "
                  "id=x>a</i><noscript><img src=a.gif width=9 height=9><script>2</script>b &amp; "
                  "c</noscript><iframe src=n></iframe><iframe srcdoc='<noscript>d</noscript>'></iframe>",
                  {nullptr, server.url("/")})),
              "[after 13.5] {italic;#ff0000:a}{a.gif 6.75x6.75:\uFFFC}b & c\n[after 15] x{bold:f}\nd\n");
    EXPECT_EQ(server.count("/other"), 0);
}

TEST(HTMLReadingTest, PagesThatShowNothingAreReadWithoutScripts) {
    const auto readAndSaid = [](const char* page) {
        const RequestNotes own;
        const std::string text = describe(read(page));
        return text + own.sentenceOfResult().UTF8String();
    };
    EXPECT_EQ(readAndSaid("<p>a</p><script>document.body.innerHTML=''</script>"),
              "a\nits scripts were stopped, and it was read without them");
    EXPECT_EQ(readAndSaid("<style>body{display:none}</style><noscript><style>body{display:block}"
                          "</style></noscript><p>a</p>"),
              "a\nits scripts were stopped, and it was read without them");
    EXPECT_EQ(readAndSaid("<body hidden>a"), "it shows none of its text, with its scripts and without");
    EXPECT_EQ(readAndSaid("<title>a</title><p><br>"), "\n") << "there is nothing to show";
}

TEST_F(HTMLFailuresTest, PagesWithScriptsWithoutEndAreReadWithout) {
    server.keepSilent("/never");
    read("start");
    for (const char* page : {"a<script>for(;;);</script>",
                             "a<img src=/never><script>setTimeout(function(){for(;;);},0)</script>"}) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(
            describe(read(page + std::string("b<noscript>c</noscript>"), {nullptr, server.url("/"), "", 5})),
            "abc")
            << page;
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(4700)) << page;
        EXPECT_EQ(describe(read("<script>document.write('next')</script>")), "next");
    }
    EXPECT_EQ(notes.sentenceOfResult(), u"its scripts were stopped, and it was read without them");
}

TEST_F(HTMLFailuresTest, DeadProcessesAreReplaced) {
    server.keepSilent("/never");
    read("start");
    for (const bool killsEngine : {false, true}) {
        const auto judge = std::make_shared<Judge>([&](const std::string&) {
            const pid_t victim = killsEngine ? WebEngine::sharedEngine().processIdentifier() : webProcess();
            EXPECT_GT(victim, 1);
            if (victim > 1)
                kill(victim, SIGKILL);
            return true;
        });
        // Were it not seen at once, the test would run into its limit.
        const auto page = [&] {
            return describe(read("a<img src=/never>", {judge, server.url("/"), "", 200}));
        };
        if (killsEngine) {
            EXPECT_THROW(page(), NSException);
        } else {
            EXPECT_EQ(page(), "(nil)");
        }
        EXPECT_NE(judge->asked, "");
        EXPECT_EQ(describe(read("next")), "next");
    }
    // An engine that ends once need not be the page's fault.
    bool hasKilled = false;
    const auto judge = std::make_shared<Judge>([&](const std::string&) {
        if (!std::exchange(hasKilled, true))
            kill(WebEngine::sharedEngine().processIdentifier(), SIGKILL);
        return true;
    });
    EXPECT_EQ(describe(read("a<img src=/none.gif>", {judge, server.url("/")})), "a");
}

} // namespace
} // namespace kelvo
