#include "markup/PlainTextHandler.h"
#include "markup/Html2Text.h"
#include "markup/PlainTextContext.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

struct Row {
    const char* name;
    std::u16string html, text;
};

struct Options {
    bool nonUmlauted = false, reformat = false, onlyBody = false, removeJunk = false, markers = false;
    bool entities = true, standardEntities = true;
};

NSString convert(const std::u16string& html, Options options = {}, bool* junkFound = nullptr) {
    return stringByConvertingHtml2PlainTextEntities_stdEntities_nonUmlauted_reformat_onlyBody_removeJunk_googleTags(
        NSString(html), options.entities, options.standardEntities, options.nonUmlauted, options.reformat,
        options.onlyBody, options.removeJunk, junkFound, options.markers);
}

void expectRows(const std::vector<Row>& rows, Options options = {}) {
    for (const Row& row : rows)
        EXPECT_EQ(convert(row.html, options).UTF8String(), NSString(row.text).UTF8String()) << row.name;
}

TEST(PlainTextHandler, TagsWriteWhatTheirRuleSays) {
    struct TagRow {
        const char* names;
        std::u16string between;
    };
    for (const auto& [names, between] : std::vector<TagRow>{
             {"p div hr h1 h9 blockquote BLOCKQUOTE", u"\n\n"},
             {"br dd dt dl li ol ul tr address article figcaption form LEGEND nav section summary", u"\n"},
             {"td th TH img a TITLE table caption tbody button label textarea object input iNPUT", u" "},
             {"b span h0 h10 px body noscript/ font em wbr", u""},
         }) {
        const std::string list = names;
        for (std::size_t start = 0; start < list.size();) {
            const std::size_t end = std::min(list.find(' ', start), list.size());
            const std::string name = list.substr(start, end - start);
            start = end + 1;
            for (const std::string& tag : {"<" + name + ">", "</" + name + ">", "<" + name + " x=1/>"}) {
                const NSString html = NSString::stringWithUTF8String("a" + tag + "b");
                EXPECT_EQ(stringByConvertingHtml2PlainText(html).characters(), u"a" + between + u"b") << tag;
            }
        }
    }
}

TEST(PlainTextHandler, WhiteSpace) {
    expectRows({
        {"ends of runs give one space", u"<b> a </b> <i> b</i>\n", u"a b"},
        {"nothing between words of one run", u"w<b>o</b>rd", u"word"},
        {"line ends and no-break spaces", u"<b>a\r\n\t b\u00A0c&nbsp;&nbsp;d", u"a b c d"},
        {"none at the start of a line", u"<p> a <br> b", u"\n\na\nb"},
        {"decoded space at an end counts", u"<b>a&nbsp;</b>b", u"a b"},
        {"cell behind text only", u"<tr><td>a</td><td>b</td></tr>", u"\na b \n"},
        {"cell does not take the mark", u"<b>a</b> <td>b", u"a  b"},
        {"input at the very start", u"<input>a<input>b", u"a b"},
        {"pre without reformatting", u"<pre>a\n\nb  c</pre>", u"\n\na b c"},
        {"space before a run inside pre", u"<pre>a<b> b</b></pre>", u"\n\na  b"},
        {"long run with everything", u"<b>one two  three\nfour &amp; five six seven eight  nine ten eleven",
         u"one two three four & five six seven eight nine ten eleven"},
    });
}

TEST(PlainTextHandler, ReformatsPre) {
    const auto inPre = [](std::u16string text) { return u"<pre>" + text + u"</pre>"; };
    const Options reformat{.reformat = true};
    expectRows(
        {
            {"paragraph", inPre(u"a\n\n\nb"), u"\n\na\n\nb"},
            {"one break is a space", inPre(u"a\nb"), u"\n\na b"},
            {"kept before a dash", inPre(u"a\n- b"), u"\n\na\n- b"},
            {"kept before the rest", inPre(u"a\n/\n>\n}\n b"), u"\n\na\n/\n>\n}\n b"},
            {"CR LF counts once", inPre(u"a\r\nb\r\n\r\nc"), u"\n\na b\n\nc"},
            {"other line breaks", inPre(u"a\u2028\u2029b\fc\uFEFF\uFFFCd\u0003e"), u"\n\na\n\nb c\n\nd e"},
            {"no space behind one", inPre(u"a \nb"), u"\n\na b"},
            {"stretches of spaces", inPre(u"a \t  b"), u"\n\na b"},
            {"decoded first", inPre(u"a&#10;&#10;b &lt;c"), u"\n\na\n\nb <c"},
            {"outside pre", u"<b>a\n\n\nb\n-", u"a b -"},
            {"behind pre", u"<pre>a</pre>b\n\nc", u"\n\nab c"},
            {"self-closed pre", u"<pre/>b\n\nc", u"b c"},
        },
        reformat);
}

TEST(PlainTextHandler, LeavesOutWhatIsNotShown) {
    expectRows({
        {"script and style", u"a<script>x</script>b<STYLE>y</STYLE>c", u"abc"},
        {"comment and section", u"a<!-- x -->b<![if x]>c", u"abc"},
        {"noframes", u"a<noframes>x</noframes>b", u"ab"},
        {"noscript", u"a<noscript>x<p>y</noscript>b", u"a\n\nb"},
        {"iframe", u"a<iframe>x</iframe>b<iframe/>c", u"abc"},
        {"option", u"a<select><option>x</option>y<option>z</select>b", u"ayb"},
        {"option in odd letters", u"a<o\u0050T\u0131ON>x</option>b", u"ab"},
        {"long s for S in select", u"<option>x<\u017Felect>a", u"a"},
        {"long s is no S in section", u"a<\u017Fection>b", u"ab"},
    });
}

TEST(PlainTextHandler, JunkDivisions) {
    const auto textWith = [](const std::u16string& attributes) {
        return std::u16string(convert(u"a<div " + attributes + u">b</div>c").characters());
    };
    for (const char16_t* junk :
         {u"class=\"HIDDEN\"", u"style=\"visibility: hidden\"", u"style='display: none'",
          u"style=\"Position:absolute; left:-1001px\"", u"style=\"position:absolute;top: -9999px\""})
        EXPECT_EQ(textWith(junk), u"a\n\n\n\nc") << NSString(junk).UTF8String();
    for (const char16_t* shown :
         {u"class=\"hidden x\"", u"style=\"VISIBILITY: hidden\"", u"x=hidden style=\"visibility: y\"",
          u"style='x:y; display none'", u"style=\"position:absolute; left:-1000px; top:-1000\"",
          u"style=\"position: absolute;top:-9999px\"", u"style=\"position:absolute;margin-top:-9999px\""})
        EXPECT_EQ(textWith(shown), u"a\n\nb\n\nc") << NSString(shown).UTF8String();
    expectRows({
        {"up to the next div tag", u"<div class=hidden>a<p>b<div>c</div>d", u"\n\n\n\n\n\nc\n\nd"},
        {"select ends it", u"<div class=hidden>a</select>b", u"\n\nb"},
        {"too short to be junk", u"<div :dd>a", u"\n\na"},
    });
}

TEST(PlainTextHandler, HiddenFonts) {
    const auto textWith = [](const std::u16string& style) {
        return std::u16string(convert(u"a<font style=\"" + style + u"\">b</font>c").characters());
    };
    for (const char16_t* hidden : {u"font-size:4pt", u"font-size:\u06614pt"})
        EXPECT_EQ(textWith(hidden), u"ac") << NSString(hidden).UTF8String();
    for (const char16_t* shown : {u"font-size:5pt", u"FONT-SIZE:14PT", u"font-size:1.5pt",
                                  u"font-size: 10.2pt", u"font-size:0pt", u"margin:: 4pt"})
        EXPECT_EQ(textWith(shown), u"abc") << NSString(shown).UTF8String();
    expectRows({
        {"colour of the body", u"<body bgcolor=White>a<font color=\"white\">b</font>c", u"ac"},
        {"other colour", u"<body bgcolor=White>a<font color=\"black\">b</font>c", u"abc"},
        {"no body colour", u"a<font color=\"white\">b</font>c", u"abc"},
        {"body clears it", u"a<font style=\"font-size:4pt\">b<body>c", u"ac"},
    });
}

TEST(PlainTextHandler, Markers) {
    const std::u16string off = u"<!--googleoff: index-->", on = u"<!-- GoogleOn: all -->";
    const std::vector<Row> rows = {
        {"off and on", u"a" + off + u"b" + on + u"c", u"ac"},
        {"all", u"a<!--googleoff:all-->b", u"a"},
        {"other bits", u"a<!--googleoff: snippet, anchor-->b", u"ab"},
        {"several names", u"a<!--googleoff: anchor index-->b", u"a"},
        {"no name", u"a<!--googleoff: that index-->b", u"ab"},
        {"both in one", u"a<!--googleon: all googleoff: index-->b", u"a"},
    };
    expectRows(rows, {.markers = true});
    EXPECT_EQ(convert(rows[0].html), u"abc");
}

TEST(PlainTextHandler, References) {
    const std::u16string html = u"<p>&lt;&eacute;&quot &lt;</p>";
    EXPECT_EQ(convert(html), u"\n\n<\u00E9\" <\n\n");
    EXPECT_EQ(convert(html, {.nonUmlauted = true}), u"\n\n<e\" <\n\n");
    EXPECT_EQ(convert(html, {.standardEntities = false}), u"\n\n&lt;\u00E9&quot &lt;\n\n");
    EXPECT_EQ(convert(html, {.entities = false}), u"\n\n<&eacute;&quot <\n\n");
    EXPECT_EQ(convert(html, {.entities = false, .standardEntities = false}),
              u"\n\n&lt;&eacute;&quot &lt;\n\n");
    EXPECT_EQ(convert(u"a<b>\u00E9x\u00E9</b>", {.nonUmlauted = true}), u"a\u00E9x\u00E9");
}

TEST(PlainTextHandler, RemovesJunk) {
    const Options junk{.removeJunk = true};
    const auto words = [](std::size_t length) { return std::u16string(length, u'x'); };
    const std::tuple<const char*, std::u16string, std::u16string, bool> rows[] = {
        {"line of 20,000", u"<pre>" + words(20000), u"\n\n" + words(20000), false},
        {"line of 20,001", u"<pre>" + words(20001) + u"</pre><p>a", u"\n\n\n\na", true},
        {"line of three runs",
         u"a<br>" + words(9000) + u"<b>" + words(9000) + u"<b>" + words(2001) + u"<br>b", u"a\n\nb", true},
        {"line of three short runs", u"<b>" + words(9000) + u"<b>" + words(9000) + u"<b>" + words(2000),
         words(20000), false},
        {"run of 10,000", u"<b>" + words(10000), words(10000), false},
        {"run of 10,001", u"a<b>" + words(10001), u"a", true},
        {"link of 3,500", u"<a>" + words(3500), words(3500), false},
        {"link of 3,501", u"b<a>" + words(3501) + u"</a>c", u"b c", true},
        {"heading of 3,501", u"b<h1>" + words(3501) + u"</h1>", u"b\n\n\n\n", true},
        {"behind the link", u"<a></a></a><a/>" + words(3501), words(3501), false},
    };
    for (const auto& [name, html, text, isFound] : rows) {
        bool found = !isFound;
        EXPECT_EQ(convert(html, junk, &found).characters(), text) << name;
        EXPECT_EQ(found, isFound) << name;
        convert(html, {}, &found);
        EXPECT_FALSE(found) << name;
    }
}

TEST(PlainTextHandler, ReportsHiddenTextThatReadsLikeText) {
    const auto isReported = [](const std::u16string& hidden) {
        bool found = false;
        convert(u"a<font style=\"font-size:1pt\">" + hidden + u"</font>", {}, &found);
        return found;
    };
    std::u16string text;
    for (int word = 0; word < 16; ++word)
        text += u"abcdef ";
    EXPECT_TRUE(isReported(text.substr(0, 100)));
    EXPECT_FALSE(isReported(text.substr(0, 99) + u"   \n"));
    EXPECT_FALSE(isReported(std::u16string(101, u'x') + u"-x-x-x-x"));
    EXPECT_TRUE(isReported(std::u16string(101, u'x') + u"-x-x-x-x-x"));
    std::u16string shortWords;
    for (int word = 0; word < 30; ++word)
        shortWords += u"-abcd";
    EXPECT_FALSE(isReported(shortWords)) << "5 units for each stretch are not more than 5";
}

TEST(PlainTextHandler, SuspendedTextGoesOnAtFormElements) {
    std::u16string buffer(1000, u'\0');
    for (const char16_t* tag : {u"<input>", u"<select>", u"</option>", u"<pre/>", u"</div>"}) {
        for (bool second : {false, true}) {
            PlainTextContext context;
            context.outputStart = context.write = context.lineStart = buffer.data();
            context.isSuspended[second] = true;
            const NSString html(u"a" + std::u16string(tag) + u"b");
            GetTagsOfString(html, PlainTextHandler, &context, false);
            EXPECT_EQ(context.write[-1], u'b') << second;
            EXPECT_EQ(std::u16string_view(context.outputStart, context.write).find(u'a'),
                      std::u16string_view::npos);
        }
    }
}

TEST(PlainTextHandler, TellsCallersOfDatesOfFeeds) {
    std::u16string buffer(1000, u'\0');
    for (const auto& [html, isFeedDate] : std::vector<std::pair<std::u16string, bool>>{
             {u"<font class=feed_date>a", true},
             {u"<font class=FEED_DATE>a", false},
             {u"<font class=feed_date>a</font>b", false},
             {u"<font class=feed_date>a<body>b", false},
         }) {
        PlainTextContext context;
        context.outputStart = context.write = context.lineStart = buffer.data();
        GetTagsOfString(NSString(html), PlainTextHandler, &context, false);
        EXPECT_EQ(context.feedDate, isFeedDate) << NSString(html).UTF8String();
    }
}

} // namespace
} // namespace kelvo
