#include "markup/Entities.h"

#include "support/ReferenceMarkup.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

std::u16string nameOf(std::size_t index) {
    const std::string_view name = entityNames[index];
    return {name.begin(), name.end()};
}

std::u16string decoded(std::u16string_view text, bool standard, bool onlyNumeric, bool nonUmlauted) {
    std::u16string result(text.size(), u'?');
    result.resize(convertEntities2Characters(text.data(), result.data(), 0, text.size(), standard,
                                             onlyNumeric, nonUmlauted));
    return result;
}

TEST(EntitiesTest, everyNameBothWays) {
    std::set<char16_t> characters;
    for (std::size_t index = 0; index < entityCount; ++index) {
        const std::u16string name = nameOf(index);
        const char16_t character = entityCharacters[index];
        EXPECT_TRUE(characters.insert(character).second) << entityNames[index];
        EXPECT_STREQ(entityNameOfCharacter(character), entityNames[index]);
        EXPECT_EQ(characterOfEntityName(name), character) << entityNames[index];
        const std::u16string reference = u"&" + name + u";";
        const std::u16string expected = name.size() < 7 ? std::u16string(1, character) : reference;
        EXPECT_EQ(decoded(reference, false, false, false), expected) << entityNames[index];
        const std::u16string text = u"<" + std::u16string(1, character) + u"&";
        EXPECT_EQ(stringByConvertingCharactersToEntities(NSString(std::u16string_view(text))).characters(),
                  u"<" + reference + u"&");
    }
    EXPECT_EQ(entityCharacters[entityCount], 0);
    EXPECT_EQ(*characters.begin(), 0x00A0);
    EXPECT_EQ(*characters.rbegin(), 0x2666);
    for (unsigned code = 0; code <= 0xFFFF; ++code)
        ASSERT_EQ(entityNameOfCharacter(static_cast<char16_t>(code)) != nullptr,
                  characters.contains(static_cast<char16_t>(code)));
    for (const std::u16string_view name : {u"quot", u"amp", u"lt", u"gt", u"cedil", u"fnof", u"apos", u"a",
                                           u"", u"EACUTE", u"thetasymx", u"\u0165acute"})
        EXPECT_EQ(characterOfEntityName(name), 0);
    // The order of the Latin letters, against a list that was typed by hand.
    EXPECT_STREQ(entityNames[0], "AElig");
    EXPECT_STREQ(entityNames[61], "szlig");
    EXPECT_STREQ(entityNames[62], "nbsp");
    EXPECT_STREQ(entityNames[94], "divide");
    EXPECT_STREQ(entityNames[245], "euro");
}

TEST(EntitiesTest, references) {
    using Row = std::tuple<const char*, const char16_t*, const char16_t*, const char16_t*, const char16_t*>;
    const Row rows[] = {
        {"one level only", u"&amp;lt;", u"&lt;", u"&amp;lt;", u"&lt;"},
        {"fixed forms", u"&lt;&gt;&amp;&quot;&apos;&nbsp;", u"<>&\"'\u00A0", u"&lt;&gt;&amp;&quot;'\u00A0",
         u"<>&\"'\u00A0"},
        {"hexadecimal", u"&#x20AC;&#X41 &#xfG", u"\u20ACA \u000FG", u"\u20ACA \u000FG", u"\u20ACA \u000FG"},
        {"wraps", u"&#65601;", u"A", u"A", u"A"},
        {"too long", u"&#128512;&#x10041;&#000065;", u"&#128512;&#x10041;&#000065;",
         u"&#128512;&#x10041;&#000065;", u"&#128512;&#x10041;&#000065;"},
        {"long name", u"&epsilon;&epsilon", u"&epsilon;&epsilon", u"&epsilon;&epsilon", u"&epsilon;&epsilon"},
    };
    for (const auto& [name, text, standard, withoutStandard, onlyNumeric] : rows) {
        EXPECT_EQ(decoded(text, true, false, false), standard) << name;
        EXPECT_EQ(decoded(text, false, false, false), withoutStandard) << name;
        EXPECT_EQ(decoded(text, true, true, false), onlyNumeric) << name;
    }
    EXPECT_EQ(decoded(u"&eacute;\u00E9&#233;\u0151A\u4E00&foo;", true, false, true), u"eeeoA\u4E00&foo;");
}

TEST(EntitiesTest, randomTextAsTheReference) {
    const std::u16string_view parts[] = {
        u"&",      u"&#", u"&#x",  u";",      u"6",       u"0",          u"41",
        u"amp",    u"lt", u"nbsp", u"apos",   u"eacute",  u"eta",        u"euro;",
        u"Dagger", u"a",  u" ",    u"\u00E9", u"\u0151x", u"\U0001F600", u"text without references "};
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        std::u16string text;
        for (unsigned count = random() % 24; count > 0; --count)
            text += parts[random() % std::size(parts)];
        const bool standard = round & 1, onlyNumeric = round & 2, nonUmlauted = round & 4;
        const std::u16string expected = reference::decode(text, standard, onlyNumeric, nonUmlauted);
        ASSERT_EQ(decoded(text, standard, onlyNumeric, nonUmlauted), expected);
        // In place, with neighbours that must not change, and to the front of the same array.
        for (const std::size_t destination : {3, 0}) {
            std::u16string place = u"&lt" + text + u";lt;";
            const std::size_t written = convertEntities2Characters(
                place.data(), place.data() + destination, 3, text.size(), standard, onlyNumeric, nonUmlauted);
            ASSERT_EQ(place.substr(destination, written), expected);
            ASSERT_TRUE(place.ends_with(u";lt;") && (destination == 0 || place.starts_with(u"&lt")));
        }
    }
}

TEST(EntitiesTest, stringOperations) {
    const NSString shortText(u"&lt"), plain(u"no reference"), nothing(u"&foo; &");
    for (const NSString& string : {shortText, plain, nothing, NSString(), NSString::string()}) {
        EXPECT_TRUE(stringByConvertingEntitiesToCharacters(string).isIdenticalTo(string));
        EXPECT_TRUE(stringByConvertingEntitiesToCharactersNonUmlauted(string, true).isIdenticalTo(string));
        EXPECT_TRUE(stringByConvertingStandardEntitiesToCharacters(string).isIdenticalTo(string));
        EXPECT_TRUE(stringByConvertingCharactersToEntities(string).isIdenticalTo(string));
    }
    EXPECT_EQ(stringByConvertingEntitiesToCharactersNonUmlauted(u"&eacute;\u00E9", false), u"\u00E9\u00E9");
    EXPECT_EQ(stringByConvertingEntitiesToCharactersNonUmlauted(u"\u00E9\u00E9\u00E9x", true), u"eeex");
    EXPECT_EQ(stringByConvertingStandardEntitiesToCharacters(u"&lt;&gt&amp;lt;&quot;&apos;&eta;&#60;"),
              u"<>&lt;\"&apos;&eta;&#60;");
    for (const std::size_t length : {250u, 256u, 257u, 5000u}) {
        const std::u16string rest(length - 5, u'x');
        const NSString result =
            stringByConvertingEntitiesToCharacters(NSString(std::u16string_view(u"&eta;" + rest)));
        EXPECT_EQ(result.characters(), u"\u03B7" + rest);
    }
}

TEST(EntitiesTest, escaping) {
    const NSString text(u"a<b>&\"c\"\u00E9\uFFFD'"), plain(u"plain '\u00E9");
    EXPECT_EQ(stringByConvertingCharactersToStandardEntities(text),
              u"a&lt;b&gt;&amp;&quot;c&quot;\u00E9\uFFFD'");
    EXPECT_EQ(stringByConvertingHighCharactersToEntities(text),
              u"a&lt;b&gt;&amp;&quot;c&quot;&#233;&#65533;'");
    EXPECT_EQ(stringByConvertingCharactersToEntities(text), u"a<b>&\"c\"&eacute;&#65533;'");
    EXPECT_EQ(stringByConvertingCharactersToEntities(u"\u0080\u03D1\uFFFF"), u"&#128;&thetasym;&#65535;");
    EXPECT_TRUE(stringByConvertingCharactersToEntities(plain, false).isIdenticalTo(plain));
    EXPECT_EQ(stringByConvertingCharactersToEntities(plain, true), u"plain '&#233;");
    EXPECT_TRUE(stringByConvertingHighCharactersToEntities(nullptr).isNil());
}

} // namespace
} // namespace kelvo
