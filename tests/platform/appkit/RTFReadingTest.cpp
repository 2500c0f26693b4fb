#include "platform/appkit/RTFReading.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/foundation/Value.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace kelvo {
namespace {

using namespace NSAttributedStringKitAdditions;

NSAttributedString read(std::string_view source, NSDictionary* attributes = nullptr) {
    return initWithRTF_documentAttributes(NSData::dataWithBytes(source), attributes);
}

/// The text in braces with a head that names fonts: 0 plain, 1 Cyrillic, 2 Japanese, 3 Symbol, 4 Wingdings.
std::string document(std::string_view body) {
    return "{\\rtf1\\ansi\\ansicpg1252{\\fonttbl{\\f0\\fswiss\\fcharset0 Arial;}{\\f1\\fcharset204 Arial;}"
           "{\\f2\\fcharset128 Mincho;}{\\f3\\fcharset2 Symbol;}{\\f4\\fcharset2 Wingdings;}}" +
           std::string(body) + "}";
}

std::string textOf(std::string_view body) {
    return read(document(body)).string().UTF8String();
}

TEST(RTFReading, Text) {
    struct Row {
        const char* name;
        const char* body;
        const char* text;
    };
    const Row rows[] = {
        {"line ends mean nothing but behind a backslash", "a\r\nb\\\r\nc\\\nd\\par e", "ab\nc\nd\ne"},
        {"escapes", "\\{\\}\\\\\\~\\_\\-\\tab\\line\\page x", "{}\\\u00A0\u2011\u00AD\t\u2028\fx"},
        {"bytes of the code page", "\\'e4\xE4\\'80", "ää€"},
        {"bytes of a font's charset", "\\f1\\'d3{\\f0\\'d3}\\'e2", "УÓв"},
        {"two bytes a character, across escapes", "\\f2\\'82\\'6c\\'83\\\\\\'83^\\'82\r\n\\'72", "ＭソタＳ"},
        {"half a character", "\\f2\\'96\\tab", "–\t"},
        {"signs", "\\f3 ab\\'b7\\u-4031?{\\f4\\'fc\\u61607?}", "αβ•Α✓▪"},
        {"Unicode and its stand-ins",
         "\\u8364?\\uc2\\u8364ab{\\uc0\\u8364}\\u-10179\\'3f?\\u-8704\\'3f\\'3fz", "€€€😀z"},
        {"a stand-in ends with its group", "\\uc4{\\u8364 a}b", "€b"},
        {"a number past 16 bits is one character", "\\u128512?", "😀"},
        {"stand-ins that are words", "\\u8226\\bullet\\u8211\\endash x\\u8364\\b y", "•–x€y"},
        {"unknown words and groups", "a\\unknown1 b{\\*\\unknown x{y}}{\\unknown c}\\*\\b d", "abcd"},
        {"binary data with braces in it", "a{\\*\\unknown\\bin3 }}}}b{\\bin2 {{}c\\bin-1 d", "abcd"},
        {"headers, comments, hidden and deleted text",
         "a{\\header h}{\\footerl f}{\\*\\atnid x}{\\*\\annotation n}{\\v v\\par}{\\deleted d}b", "a\nb"},
        {"index entries and bookmarks", "a{\\xe {\\v x}}{\\*\\bkmkstart m}{\\tc t}b", "ab"},
        {"one of two forms of a text", "{\\upr{ansi}{\\*\\ud{\\u8364 ?}}}", "€"},
        {"notes behind the text",
         "a{\\super\\chftn{\\footnote\\pard {\\super\\chftn} n}}b{\\footnote m}\\par c", "a1b\nc\n1 n\nm\n"},
        {"frames behind their paragraph",
         "a{\\shp{\\*\\shpinst{\\sp{\\sn x}{\\sv y}}{\\shptxt f\\par g}}{\\shprslt f}}b\\par c",
         "ab\nf\ng\nc"},
        {"markers of lists", "{\\listtext\t\\bullet\t}a\\par{\\pntext 1.\\tab}{\\*\\pn\\pnlvlbody\\pndec}b",
         "\t•\ta\n1.\tb"},
        {"objects show their results", "{\\object{\\*\\objdata 00}{\\result r}}", "r"},
        {"signs as fields", "{\\field{\\*\\fldinst SYMBOL 97 \\\\f \"Symbol\"}{\\fldrslt\\f3}}", "α"},
        {"a document within a document", "a{\\rtf1{\\fonttbl{\\f9 X;}}b}c", "abc"},
        {"nothing behind the end", "a}b", "a"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(textOf(row.body), row.text) << row.name;
}

} // namespace
} // namespace kelvo
