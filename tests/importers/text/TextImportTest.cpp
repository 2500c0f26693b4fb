#include "importers/text/TextImport.h"

#include "platform/foundation/propertylists/NSPropertyListSerialization.h"
#include "platform/launchservices/DynamicType.h"
#include "platform/launchservices/UTType.h"
#include "support/Importing.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

namespace kelvo {
namespace {

using namespace std::string_literals;

NSDictionary attributesOf(const std::string& file, const char* type = "public.plain-text") {
    return attributesByImporter(importers::importText, NSData::dataWithBytes(file), type);
}

std::string attribute(const NSDictionary& attributes, const char16_t* name) {
    const Value& value = attributes.objectForKey(name);
    return value.isString() ? value.string().UTF8String() : "none";
}

TEST(TextImport, Encodings) {
    const struct {
        const char* name;
        std::string file;
        std::string text;
    } rows[] = {
        {"empty file", "", ""},
        {"white space alone", " \r\n", " \r\n"},
        {"UTF-8", "a\r\n\xC3\xA4\xF0\x9F\x98\x80\n", "a\r\nä😀\n"},
        {"UTF-8 with a mark", "\xEF\xBB\xBF\xC3\xA4", "ä"},
        {"UTF-8 with a mark, broken", "\xEF\xBB\xBF\xC3\xA4\xC3", "ä\uFFFD"},
        {"UTF-16, big end first", "\xFE\xFF\0a\xD8\x3D\xDE\0"s, "a😀"},
        {"UTF-16, little end first", "\xFF\xFE\xE4\0"s, "ä"},
        {"UTF-32", "\0\0\xFE\xFF\0\x1\xF6\0"s, "😀"},
        {"Windows Latin 1", "\x93\xE4\x94\r", "“ä”\r"},
        {"ISO Latin 1", "\x81\xE4", "\u0081ä"},
        {"Windows Cyrillic",
         "\xCF\xE0\xF0\xEE\xF5\xEE\xE4 \xEE\xF2\xF5\xEE\xE4\xE8\xF2 \xEE\xF2 "
         "\xEF\xF0\xE8\xF1\xF2\xE0\xED\xE8\n",
         "Пароход отходит от пристани\n"},
        {"KOI8-R",
         "\xF0\xC1\xD2\xCF\xC8\xCF\xC4 \xCF\xD4\xC8\xCF\xC4\xC9\xD4 \xCF\xD4 "
         "\xD0\xD2\xC9\xD3\xD4\xC1\xCE\xC9\n",
         "Пароход отходит от пристани\n"},
        {"Shift JIS",
         "\x82\xB1\x82\xEA\x82\xCD\x90\x6C\x81\x58\x82\xAA\x96\x88\x93\xFA\x93\xC7\x82\xDE\x95\xB6\x8F\xCD"
         "\x82\xC5\x82\xB7\x81\x42",
         "これは人々が毎日読む文章です。"},
        {"ISO 2022", "\x1B$B$3$s$K$A$O!\"@$3&!#\x1B(B", "こんにちは、世界。"},
        {"GB",
         "\xC4\xE3\xBA\xC3\xA3\xAC\xCA\xC0\xBD\xE7\xA1\xA3\xD5\xE2\xCA\xC7\xC8\xCB\xC3\xC7\xC3\xBF\xCC\xEC",
         "你好，世界。这是人们每天"},
        {"German is Western",
         "F\xFCr \xF6"
         "de \xC4hren, gr\xF6\xDF"
         "er, sch\xF6n, \xFC"
         "ber, M\xFChle",
         "Für öde Ähren, größer, schön, über, Mühle"},
        {"colours of terminals", "\x1B[31mred\x1B[0m", "\x1B[31mred\x1B[0m"},
        {"a bell", "a\ab", "a\ab"},
        {"bytes with NUL", "a\0b"s, "none"},
        {"controls that are not UTF-8", "\x1\xE4", "none"},
        {"UTF-16 without a mark", "\0a\0b"s, "none"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(attribute(attributesOf(row.file), u"kMDItemTextContent"), row.text) << row.name;
}

TEST(TextImport, LongTextIsCutBeforeACharacter) {
    const std::size_t most = importers::mostUnitsOfText;
    const std::string fill(most - 1, 'x');
    const struct {
        const char* name;
        std::string file;
        std::size_t length;
    } rows[] = {
        {"all that is kept", fill + "x", most},
        {"UTF-8, one unit too many", fill + "\xC3\xA4x", most},
        {"UTF-8, a pair across the bound", fill + "\xF0\x9F\x98\x80", most - 1},
        {"UTF-8, damaged behind the bound", fill + "x\xFF", most},
        {"Latin 1", fill + "\xE4x", most},
        {"UTF-16, a pair across the bound",
         [] {
             std::string file = "\xFF\xFE";
             for (std::size_t unit = 1; unit < importers::mostUnitsOfText; ++unit)
                 file += "x\0"s;
             return file + "\x3D\xD8\0\xDE"s;
         }(),
         most - 1},
    };
    for (const auto& row : rows) {
        const NSString text = attributesOf(row.file).objectForKey(u"kMDItemTextContent").string();
        EXPECT_EQ(text.length(), row.length) << row.name;
        EXPECT_EQ(text.characters().find(u'\uFFFD'), std::u16string_view::npos) << row.name;
    }
}

TEST(TextImport, TitlesOfMarkdown) {
    const struct {
        const char* file;
        const char* title;
    } rows[] = {
        {"\xEF\xBB\xBF\n# A  title #\ntext", "A title"},
        {"# C#\n", "C#"},
        {"Title\r\n=====\r\n", "Title"},
        {"---\nlayout: x\nTitle: \"Of the page\"\ntitle: other\n---\n# Heading", "Of the page"},
        {"+++\ntitle = 'TOML'\n+++\n", "TOML"},
        {"---\nsubtitle: no\n---\n\n# Heading", "Heading"},
        {"---\ntitle:", "none"},
        {"Text\n# Section", "none"},
        {"## Second level", "none"},
        {"#hashtag", "none"},
        {"Text\n=", "Text"},
        {"Text\n\n===", "none"},
        {"", "none"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(attribute(attributesOf(row.file, "net.daringfireball.markdown"), u"kMDItemTitle"),
                  row.title)
            << row.file;
    }
    EXPECT_EQ(attribute(attributesOf("# Remark", "public.shell-script"), u"kMDItemTitle"), "none");
    EXPECT_EQ(attribute(attributesOf("\xFF\xFE#\0 \0x\0"s, "net.daringfireball.markdown"), u"kMDItemTitle"),
              "x");
}

// A file is only brought here by the very type that it has: an extension that gets a type of its own needs that.
TEST(TextImport, TypesAreThoseThatFilesHave) {
    const NSData file = NSData::dataWithContentsOfFile(
        NSString::stringWithUTF8String(std::getenv("KELVO_IMPORTERS") + "/text/Info.plist"s));
    const Value information =
        NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
            file, NSPropertyListMutabilityOptions::immutable, nullptr, nullptr);
    const NSArray types = information.dictionary()
                              .objectForKey(u"CFBundleDocumentTypes")
                              .array()
                              .objectAtIndex(0)
                              .dictionary()
                              .objectForKey(u"LSItemContentTypes")
                              .array();
    EXPECT_GT(types.count(), 300u);
    for (const Value& each : types) {
        const NSString type = each.string();
        if (const auto dynamic = dynamicTypeWithIdentifier(type)) {
            EXPECT_EQ(dynamic->conformsTo, u"public.data");
            ASSERT_EQ(dynamic->tags.size(), 1u) << type.UTF8String();
            EXPECT_TRUE(typeWithFilenameExtension(dynamic->tags[0].value, ItemKind::file).isNil())
                << dynamic->tags[0].value.UTF8String();
        } else {
            EXPECT_TRUE(UTTypeConformsTo(type, u"public.text")) << type.UTF8String();
        }
    }
    for (const char16_t* extension : {u"txt", u"c", u"py", u"md", u"csv", u"log", u"yaml"})
        EXPECT_TRUE(types.containsObject(typeWithFilenameExtension(extension, ItemKind::file)))
            << NSString(extension).UTF8String();
    for (const char16_t* known :
         {u"dyn.ah62d4rv4ge81k55rru", u"dyn.ah62d4rv4ge80g55sq2", u"dyn.ah62d4rv4ge81g6pq"})
        EXPECT_TRUE(types.containsObject(NSString(known))) << NSString(known).UTF8String();
}

} // namespace
} // namespace kelvo
