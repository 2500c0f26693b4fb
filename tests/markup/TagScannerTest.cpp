#include "markup/TagScanner.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/NSLog.h"
#include "support/ReferenceMarkup.h"

#include <gtest/gtest.h>

#include <random>
#include <stdexcept>

namespace kelvo {

namespace reference {
void PrintTo(const Call& call, std::ostream* stream) {
    *stream << "name " << call.nameLocation << "+" << call.nameLength << " tag " << call.tagLocation << "+"
            << call.tagLength << " text " << call.textLocation << " kind " << static_cast<int>(call.kind);
}
} // namespace reference

namespace {

using reference::Call;

std::vector<Call> callsOfScan(const NSString& string) {
    std::vector<Call> calls;
    EXPECT_EQ(GetTagsOfString(string, reference::record, &calls, false), !string.isEmpty());
    return calls;
}

/// Each construct as "kind:name:tag", the text in front of it as it is, parted by "|".
std::string pieces(const char16_t* text) {
    const NSString string(text);
    std::string result;
    for (const Call& call : callsOfScan(string)) {
        const auto part = [&](std::size_t location, std::size_t length) {
            return string.substringWithRange({location, length}).UTF8String();
        };
        if (call.tagLocation > call.textLocation)
            result += part(call.textLocation, call.tagLocation - call.textLocation) + "|";
        if (call.kind != TagKind::text)
            result += std::to_string(static_cast<int>(call.kind)) + ":" +
                      (call.nameLength ? part(call.nameLocation, call.nameLength) : "") + ":" +
                      part(call.tagLocation, call.tagLength) + "|";
    }
    return result;
}

TEST(TagScannerTest, constructs) {
    const std::tuple<const char*, const char16_t*, const char*> rows[] = {
        {"> inside a quoted value", u"<a href=\"x>y\">", "1:a:<a href=\"x>y\">|"},
        {"apostrophe opens after =", u"<a title=it's>x' >y", "1:a:<a title=it's>x' >|y|"},
        {"name runs to a slash", u"</td><br/>", "1:td:</td>|1:br:<br/>|"},
        {"name begins with its first letter", u"<!DOCTYPE html><?xml?><h1>",
         "1:DOCTYPE:<!DOCTYPE html>|1:xml?:<?xml?>|1:h1:<h1>|"},
        {"name of letters past ASCII", u"<\u00E9\u4E00\u00A0x>", "1:\u00E9\u4E00:<\u00E9\u4E00\u00A0x>|"},
        {"long comment", u"<!--x->y-->z", "2::<!--x->y-->|z|"},
        {"unfinished comments", u"a<!--b->", "a|2::<!--b->|"},
        {"section", u"<![CDATA[a>]]>b", "3::<![CDATA[a>]]>|b|"},
        {"conditional comment", u"<![endif]-->b", "3::<![endif]-->|b|"},
        {"script is one tag", u"<script>if(a<b)document.write('</scr'+'ipt>')</script>c",
         "1:script:<script>if(a<b)document.write('</scr'+'ipt>')</script>|c|"},
        {"style in any case", u"<STYLE a>x>y</stYle\n>z", "1:STYLE:<STYLE a>x>y</stYle\n>|z|"},
        {"closed and self-closed", u"<script/>a</script><style />b",
         "1:script:<script/>|a|1:script:</script>|1:style:<style />|b|"},
        {"hidden in a comment", u"<script><!-- '</script>' --></script>x",
         "1:script:<script><!-- '</script>' --></script>|x|"},
        {"--> shares nothing with <!-", u"<script><!--></script>-->", "1:script:<script><!--></script>|-->|"},
        {"end tag in its own tag", u"<script a=\"</script>b\">c", "1:script:<script a=\"</script>|b\">c|"},
        {"long s is no s", u"<\u017Fcript>a<b></script>",
         "1:\u017Fcript:<\u017Fcript>|a|1:b:<b>|1:script:</script>|"},
    };
    for (const auto& [name, markup, expected] : rows) {
        EXPECT_EQ(pieces(markup), expected) << name;
        EXPECT_EQ(callsOfScan(NSString(markup)), reference::scan(markup)) << name;
    }
}

TEST(TagScannerTest, plainTextGivesOneCall) {
    EXPECT_EQ(callsOfScan(u"abc"), (std::vector<Call>{{NSNotFound, 0, 3, 0, 0, TagKind::text}}));
    EXPECT_TRUE(callsOfScan(u"").empty() && callsOfScan(nullptr).empty());
}

TEST(TagScannerTest, randomMarkupAsTheReference) {
    std::vector<std::u16string> parts(1);
    for (const char16_t unit :
         std::u16string_view(u"<|>|\"|'|=|/|-|!|]|<!-|<!--|-->|--!>|<![|]>|]-->|a| "
                             u"b|=\"|='|<script>|<script|<STYLE|style|</styl|</style>|</SCRIPT>|</script|<p "
                             u"class=\"x\">|\u00E9|\u00A0|\u263A|\uFF1C\u3C3E|some longer text that holds "
                             u"nothing of interest and fills blocks of the scan, and then some"))
        unit == u'|' ? void(parts.emplace_back()) : parts.back().push_back(unit);
    std::mt19937 random(20240117);
    for (int round = 0; round < 30000; ++round) {
        // Some rounds use a few parts only, which makes deep interplay of those likely.
        const std::size_t first = random() % parts.size();
        const std::size_t choices = round % 3 ? parts.size() - first : 1 + random() % 4;
        std::u16string text;
        for (std::size_t count = random() % (round % 10 ? 40 : 300); count > 0; --count)
            text += parts[(first + random() % choices) % parts.size()];
        const NSString string{std::u16string_view(text)};
        if (!string.isEmpty()) {
            ASSERT_EQ(callsOfScan(string), reference::scan(text)) << string.UTF8String();
        }
    }
}

std::u16string repeated(std::u16string_view text, std::size_t count) {
    std::u16string result;
    while (count-- > 0)
        result += text;
    return result;
}

TEST(TagScannerTest, endTagsInsideTheirTags) {
    // Every script is followed to the same far quote, and then scanned again from inside its tag.
    for (const std::u16string_view unit :
         {u"<script \"=\"</script>", u"<script \"'=\"</script>='", u"<style '=' \"</style>text that is long",
          u"<script \"=\"</script>=======================================================>"}) {
        for (const std::size_t count : {1u, 2u, 3u, 10u, 60u}) {
            const std::u16string text = u"x" + repeated(unit, count) + u"\">' >z";
            EXPECT_EQ(callsOfScan(NSString(std::u16string_view(text))), reference::scan(text));
        }
    }
}

TEST(TagScannerTest, timeGrowsWithTheLengthAlone) {
    // A search that starts over for each of these would run into the time limit of the tests.
#ifdef KELVO_SANITIZED
    const std::size_t count = 200'000;
#else
    const std::size_t count = 2'000'000;
#endif
    for (const std::u16string_view unit :
         {u"<", u"=\"", u"<!--", u"<!-- >", u"<![", u"<script>", u"<script><!--</script>",
          u"<script><!--</script>-->", u"<style \"=\"</style>", u"<a b='>", u"&", u"\""}) {
        const std::u16string text = repeated(unit, count) + u"\">";
        std::size_t calls = 0;
        const auto countCalls = [](const NSString&, char16_t*, std::size_t, std::size_t, std::size_t,
                                   std::size_t, std::size_t, TagKind,
                                   void* context) { return ++*static_cast<std::size_t*>(context), false; };
        EXPECT_TRUE(GetTagsOfString(NSString(std::u16string_view(text)), countCalls, &calls, false));
        EXPECT_GE(calls, 1u);
    }
}

struct Stopping {
    int callsLeft;
    std::vector<TagKind> kinds;
};

bool stopLater(const NSString&, char16_t*, std::size_t, std::size_t, std::size_t, std::size_t, std::size_t,
               TagKind kind, void* context) {
    auto& stopping = *static_cast<Stopping*>(context);
    stopping.kinds.push_back(kind);
    return --stopping.callsLeft == 0;
}

TEST(TagScannerTest, handlersStopTheScan) {
    Stopping atTag{2, {}}, atUnfinishedComment{3, {}};
    EXPECT_TRUE(GetTagsOfString(u"<a><b><!--x", stopLater, &atTag, false));
    EXPECT_EQ(atTag.kinds, (std::vector{TagKind::tag, TagKind::tag}));
    EXPECT_TRUE(GetTagsOfString(u"<a><b><!--x", stopLater, &atUnfinishedComment, false));
    EXPECT_EQ(atUnfinishedComment.kinds, (std::vector{TagKind::tag, TagKind::tag, TagKind::comment}));
}

bool blankOut(const NSString& string, char16_t* characters, std::size_t, std::size_t, std::size_t tagLocation,
              std::size_t tagLength, std::size_t textLocation, TagKind, void* context) {
    EXPECT_EQ(string.characters()[textLocation], characters[textLocation]);
    std::fill(characters + textLocation, characters + tagLocation + tagLength, u'<');
    ++*static_cast<int*>(context);
    return false;
}

TEST(TagScannerTest, copiesMayBeChangedInPlace) {
    const NSString string(u"one<b>two<!-- c -->three<script>x</script> ");
    int calls = 0;
    EXPECT_TRUE(parseXmlWithHandler_context_mutable(string, blankOut, &calls, true));
    EXPECT_EQ(calls, 4);
    EXPECT_EQ(string, u"one<b>two<!-- c -->three<script>x</script> ");
}

TEST(TagScannerTest, exceptionsOfHandlers) {
    const auto raise = [](const NSString&, char16_t*, std::size_t, std::size_t, std::size_t, std::size_t,
                          std::size_t, TagKind, void* context) -> bool {
        if (context)
            throw std::logic_error("not the platform's");
        throw NSException(u"BadName", u"bad reason");
    };
    const NSLogCapture log;
    int notNull = 0;
    EXPECT_FALSE(parseXmlWithHandler_context_mutable(u"a<b>", raise, nullptr, true));
    EXPECT_EQ(log.messages(), std::vector<NSString>{
                                  u"parseXmlWithHandler:context:mutable: (NSString):\nBadName\nbad reason"});
    EXPECT_THROW(parseXmlWithHandler_context_mutable(u"a<b>", raise, &notNull, false), std::logic_error);
    EXPECT_THROW(GetTagsOfString(u"a<b>", raise, nullptr, false), NSException);
}

} // namespace
} // namespace kelvo
