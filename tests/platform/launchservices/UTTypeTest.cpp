#include "platform/launchservices/UTType.h"

#include "platform/foundation/Value.h"
#include "platform/launchservices/DeclaredTypes.h"
#include "platform/launchservices/DynamicType.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace kelvo {
namespace {

std::set<std::string> words(std::string_view list) {
    std::istringstream in{std::string(list)};
    return {std::istream_iterator<std::string>(in), {}};
}

// Types are taken away whose parents are all gone, until none is left: one that stays is above itself, or has a
// parent that nobody has declared.
TEST(DeclaredTypes, AreATreeWithoutCycles) {
    std::map<std::string, std::set<std::string>> left;
    for (const DeclaredType& row : declaredTypes()) {
        EXPECT_TRUE(left.emplace(row.identifier, words(row.conformsTo)).second) << row.identifier;
        EXPECT_EQ(row.typeCodes.size() % 4, 0U) << row.identifier;
    }
    EXPECT_GE(left.size(), 150U);
    for (std::set<std::string> gone; !left.empty();) {
        const std::size_t count = gone.size();
        for (const auto& [type, parents] : left) {
            if (std::ranges::includes(gone, parents))
                gone.insert(type);
        }
        std::erase_if(left, [&](const auto& entry) { return gone.contains(entry.first); });
        ASSERT_GT(gone.size(), count) << left.begin()->first << " and others";
    }
}

TEST(UTType, GoesByOtherNames) {
    using enum ItemKind;
    const auto byExtension = [](const char16_t* name, ItemKind item = file) {
        return typeWithFilenameExtension(name, item);
    };
    const std::tuple<const char*, NSString, const char16_t*> rows[] = {
        {"extension", byExtension(u"HTM"), u"public.html"},
        {"declared in capitals", byExtension(u"prefpane", folder), u"com.apple.systempreference.prefpane"},
        {"two parts", byExtension(u"tar.bz2"), u"public.tar-bzip2-archive"},
        {"a package", byExtension(u"pages", folder), u"com.apple.iWork.Pages.pages"},
        {"the same as a file", byExtension(u"pages"), u"com.apple.iWork.Pages.sffpages"},
        {"a file only", byExtension(u"pdf", folder), nullptr},
        {"a package only", byExtension(u"framework"), nullptr},
        {"audio too", byExtension(u"mp4"), u"public.mpeg-4"},
        {"a document too", byExtension(u"xml"), u"public.xml"},
        {"a formula too", byExtension(u"otf"), u"public.opentype-font"},
        {"nothing", byExtension(u""), nullptr},
        {"MIME", typeWithMIMEType(u"Application/VND.ms-word.document.macroenabled.12"),
         u"org.openxmlformats.wordprocessingml.document.macroenabled"},
        {"first of several", typeWithMIMEType(u"application/msword"), u"com.microsoft.word.doc"},
        {"a parameter that counts", typeWithMIMEType(u"text/plain; charset=UTF-8"),
         u"public.utf8-plain-text"},
        {"one that does not", typeWithMIMEType(u"text/html;charset=x"), u"public.html"},
        {"unknown", typeWithMIMEType(u"text/unknown"), nullptr},
        {"code", typeWithOSType(u"'PDF '"), u"com.adobe.pdf"},
        {"second code", typeWithOSType(u"'ut16'"), u"public.utf16-plain-text"},
        {"halves of two codes", typeWithOSType(u"'xtut'"), nullptr},
        {"code in small letters", typeWithOSType(u"'pdf '"), nullptr},
        {"no code", typeWithOSType(u""), nullptr},
    };
    for (const auto& [name, type, expected] : rows)
        EXPECT_EQ(type, expected) << name;
}

TEST(UTType, ConformsAtAnyDistance) {
    const std::tuple<const char16_t*, const char16_t*, bool> rows[] = {
        {u"public.jpeg", u"public.jpeg", true},
        {u"com.apple.ical.ics", u"public.content", true},
        {u"com.apple.application-and-system-extension", u"public.item", true},
        {u"Public.Python-Script", u"public.TEXT", true},
        {u"public.text", u"public.plain-text", false},
        {u"com.apple.rtfd", u"public.data", false},
        {u"org.nobody.type", u"org.nobody.type", true},
        {u"org.nobody.type", u"public.item", false},
        {u"dyn.ah62d4rv4ge80g4dr", u"public.item", true},
        {u"dyn.ah62d4rv4ge80g4dr", u"public.directory", false},
    };
    for (const auto& [type, other, conforms] : rows)
        EXPECT_EQ(UTTypeConformsTo(type, other), conforms) << NSString(type).UTF8String();
    EXPECT_EQ(typesConformedToBy(u"com.apple.ical.vcs"),
              NSArray::arrayWithObjects({u"com.apple.ical.vcs", u"public.text", u"public.item",
                                         u"public.calendar-event", u"public.data", u"public.content"}));
}

TEST(DynamicType, PublishedIdentifiers) {
    using enum UTTagClass;
    const auto file = [](const char16_t* extension) {
        return DynamicType{u"public.data", {{filenameExtension, extension}}};
    };
    const std::pair<DynamicType, const char16_t*> rows[] = {
        {file(u"chm"), u"dyn.ah62d4rv4ge80g4dr"},
        {file(u"srt"), u"dyn.ah62d4rv4ge81g6xy"},
        {file(u"conf"), u"dyn.ah62d4rv4ge80g55sq2"},
        {file(u"sql"), u"dyn.ah62d4rv4ge81g6pq"},
        {file(u"s16"), u"dyn.ah62d4rv4ge81gqm0"},
        {file(u"livp"), u"dyn.ah62d4rv4ge8024p0sa"},
        {file(u"mcpb"), u"dyn.ah62d4rv4ge80425uqk"},
        {{u"public.directory", {{filenameExtension, u"xyz"}}}, u"dyn.ah62d4vm4ge81u8p4"},
        {{u"public.data", {{pasteboardType, u"Apple URL pasteboard type"}}},
         u"dyn.ah62d4rv4gu8yc6durvwwaznwmuuha2pxsvw0e55bsmwca7d3sbwu"},
        {{u"public.data", {{MIMEType, u"application/x-foo"}}},
         u"dyn.ah62d4rv4gq80c6durvy0g2pyrf106p52fzxg852"},
        {{u"public.data", {{typeCode, u"ABCD"}}}, u"dyn.ah62d4rv4gk8ycuwdku"},
    };
    for (const auto& [type, identifier] : rows) {
        EXPECT_EQ(dynamicTypeIdentifier(type), identifier);
        EXPECT_EQ(dynamicTypeWithIdentifier(identifier), type) << NSString(identifier).UTF8String();
    }
}

TEST(DynamicType, KeepsWhateverIsSaid) {
    using enum UTTagClass;
    const DynamicType types[] = {
        {u"com.apple.package", {{filenameExtension, u"abc"}}},
        {nullptr, {{URLScheme, u"x"}}},
        {u"public.data", {}},
        {u"public.image",
         {{filenameExtension, u"a:b=c,d\\e?"}, {typeCode, u"A:\\="}, {MIMEType, u"\xE9\x65E5"}}},
        {u"public.data", {{filenameExtension, u"not\xDCE9UTF-8"}}},
    };
    for (const DynamicType& type : types)
        EXPECT_EQ(dynamicTypeWithIdentifier(dynamicTypeIdentifier(type)), type);
}

TEST(DynamicType, OthersHaveNone) {
    const std::u16string rows[] = {u"",
                                   u"dyn.",
                                   u"dyn.a",
                                   u"public.data",
                                   u"dyn.ah62d4rv4ge80g4dl",
                                   u"dyn.aaaaa",
                                   u"dyn.ah62d4rv4ge80g4d\x0172",
                                   u"dyn.ah6" + std::u16string(5000, u'a')};
    for (const std::u16string& row : rows)
        EXPECT_FALSE(dynamicTypeWithIdentifier(row)) << UTF8StringOfCharacters(row).substr(0, 40);
}

} // namespace
} // namespace kelvo
