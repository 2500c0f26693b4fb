#include "importers/structured/StructuredImport.h"

#include "platform/foundation/propertylists/NSPropertyListSerialization.h"
#include "support/Attributed.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo::importers {
namespace {

using namespace std::string_literals;
using tests::attributesOf;
using tests::one;

std::string binaryList(const Value& root) {
    const NSData data = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
        root, NSPropertyListBinaryFormat_v1_0, nullptr);
    return std::string(data.characters());
}

TEST(StructuredImport, StringsAreText) {
    const std::string list = "com.apple.property-list";
    const std::string binary = binaryList(NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSArray::arrayWithObjects({NSString(u"one"), NSString(u"dva é")}), u"key"}}));
    const std::string deep(200'000, '[');
    const std::string fault = "answered: not all of the file is read: ";
    const struct {
        const char* name;
        std::string file;
        std::string type;
        const char* attribute;
        std::string value;
    } rows[] = {
        {"JSON", R"({"a": "one", "b": [1, true, "two", {"a": "three"}], "empty": ""})", "public.json",
         "TextContent", "a\none\nb\ntwo\nthree\nempty"},
        {"escapes", R"(["\u00e9\ud83d\ude00\"\\\/ \n x", "\ud800", "\u12"])", "public.json", "TextContent",
         "é😀\"\\/ \n x\n\uFFFD\n12"},
        {"a value a line", "{\"a\":\"1\"}\n{\"a\":\"2\"}\n", "public.ndjson", "TextContent", "a\n1\n2"},
        {"comments", "// \"no\"\n{/* \"no\" */ \"a\": \"http://x\",}", "public.json", "TextContent",
         "a\nhttp://x"},
        {"UTF-16", "\xFF\xFE[\0\"\0\xE9\0\"\0]\0"s, "public.json", "TextContent", "é"},
        {"bare value", "\"x\"", "public.json", "TextContent", "x"},
        {"cut short", R"({"a": "one", "b": "tw)", "public.json", "note", fault + "it ends within a string"},
        {"brackets", R"({"a": "one")", "public.json", "note", fault + "its brackets do not match"},
        {"deep", deep + "\"x\"" + std::string(200'000, ']'), "public.json", "TextContent", "x"},
        {"no JSON", "<html>", "public.json", "note", "broken: the file is no JSON"},

        {"binary list", binary, list, "TextContent", "key\none\ndva é"},
        {"XML list", "<plist><dict><key>CFBundleIdentifier</key><string>org.x</string></dict></plist>", list,
         "CFBundleIdentifier", "org.x"},
        {"old list", "{ a = (one, \"two\\nlines\"); }", "com.apple.ascii-property-list", "TextContent",
         "a\none\ntwo\nlines"},
        {"location", "<plist><dict><key>URL</key><string>http://x.org</string></dict></plist>",
         "com.apple.web-internet-location", "URL", "http://x.org"},
        {"numbers alone", "<plist><array><real>1</real></array></plist>", list, "TextContent", ""},
        {"list cut short", binary.substr(0, binary.size() - 9), list, "TextContent", "absent"},
        {"empty", "", list, "note", "broken: the file is no property list: "},

        {"XML", "<r><a>one</a><b>two <i>of</i> it</b>\n <c x='no'/>three</r>", "public.xml", "TextContent",
         "one\ntwo of it\nthree"},
        {"feed", "<rss><channel><title>Tides</title><item><title>no</title></item></channel></rss>",
         "public.rss", "Title", "Tides"},
        {"outline", "<opml><body><outline text='one'><outline text='two'/></outline></body></opml>",
         "org.opml.opml", "TextContent", "one\ntwo"},
        {"not well-formed", "<r><a>one</b>", "public.xml", "TextContent", "one"},
        {"no XML", "one", "public.xml", "note", "broken: the file is no XML"},
        {"undeclared type with JSON", " {\"a\": \"b\"}", "dyn.a", "TextContent", "a\nb"},
        {"undeclared type with XML", "<r>one</r>", "dyn.a", "TextContent", "one"},
    };
    for (const auto& row : rows) {
        const auto attributes = attributesOf(importStructured, row.file, row.type.c_str());
        EXPECT_EQ(one(attributes, row.attribute).substr(0, std::max<std::size_t>(row.value.size(), 6)),
                  row.value)
            << row.name;
    }
}

} // namespace
} // namespace kelvo::importers
