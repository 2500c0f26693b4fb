#include "text/StringComparison.h"

#include "text/StringEncodingSetting.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

const NSString nil;

TEST(StringComparisonTest, numbersAndYes) {
    const std::tuple<const char*, NSString, std::int32_t, bool> rows[] = {
        {"nil", nil, 0, false},
        {"empty", u"", 0, false},
        {"on", u"On", 0, true},
        {"yes", u"YES", 0, true},
        {"true", u"tRUE", 0, true},
        {"a word that is longer", u"yes ", 0, false},
        {"a word that is shorter", u"y", 0, false},
        {"white space is for numbers only", u" on", 0, false},
        {"folding of a lone unit", u"ye\u017F", 0, true},
        {"nought", u"0", 0, false},
        {"below nought", u"-1", -1, true},
        {"off", u"off", 0, false},
        {"after white space", u" \t\n\u2003\u00A01", 1, true},
        {"U+FEFF is no white space", u"\uFEFF1", 0, false},
        {"plus and rest", u"+12abc", 12, true},
        {"white space after the sign", u"- 1", 0, false},
        {"hexadecimal is none", u"0x10", 0, false},
        {"digits of another script", u"\u0661", 0, false},
        {"past the largest", u"2147483648", 2147483647, true},
        {"past the smallest", u"-2147483649", -2147483647 - 1, true},
        {"far past 64 bits", u"99999999999999999999999999", 2147483647, true},
    };
    for (const auto& [name, text, number, yes] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(intValue(text), number);
        EXPECT_EQ(boolValue(text), yes);
    }
}

TEST(StringComparisonTest, withoutRegardToCase) {
    const std::tuple<const char*, NSString, NSString, bool, bool, bool> rows[] = {
        {"nil and nil", nil, nil, false, false, false},
        {"nil and empty", nil, u"", false, false, false},
        {"empty and nil", u"", nil, false, false, false},
        {"both empty", u"", u"", true, false, false},
        {"text and nil", u"a", nil, false, false, false},
        {"empty affix", u"abc", u"", false, false, false},
        {"affix too long", u"abc", u"aabc", false, false, false},
        {"whole", u"hTmL", u"HtMl", true, true, true},
        {"at the beginning", u"\u00C4bc", u"\u00E4B", false, true, false},
        {"at the end", u"ab\u03A3", u"B\u03C2", false, false, true},
        {"another length never matches", u"stra\u00DFe", u"STRASSE", false, false, false},
        {"nothing is normalised", u"e\u0301", u"\u00C9", false, false, false},
        {"decomposed on both sides", u"e\u0301", u"E\u0301", true, true, true},
        {"a folding that upper case does not know", u"\u212Ag", u"kG", true, true, true},
        {"unpaired surrogates", u"\xD801x", u"\xD801X", true, true, true},
        {"a pair is two units", u"\U00010400", u"\U00010428", false, false, false},
        {"U+0000", NSString(std::u16string_view(u"a\0b", 3)), NSString(std::u16string_view(u"A\0B", 3)), true,
         true, true},
    };
    for (const auto& [name, first, second, equal, prefix, suffix] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(isEqualToStringNoCase(first, second), equal);
        EXPECT_EQ(hasPrefixNoCase(first, second), prefix);
        EXPECT_EQ(hasSuffixNoCase(first, second), suffix);
    }
}

TEST(StringComparisonTest, asciiTellsNilFromEmpty) {
    EXPECT_FALSE(isAsciiString(nil) || isAsciiString(NSData()));
    EXPECT_TRUE(isAsciiString(NSString(u"")) && isAsciiString(NSData::data()));
    for (const std::size_t length : {1u, 15u, 16u, 17u, 64u, 1000u})
        for (const std::size_t place : {std::size_t{0}, length / 2, length - 1}) {
            std::u16string units(length, u'\x7F');
            std::string bytes(length, '\x7F');
            EXPECT_TRUE(isAsciiString(NSString(units)) && isAsciiString(NSData::dataWithBytes(bytes)));
            units[place] = u'\x80';
            bytes[place] = '\x80';
            EXPECT_FALSE(isAsciiString(NSString(units))) << length << ", " << place;
            EXPECT_FALSE(isAsciiString(NSData::dataWithBytes(bytes))) << length << ", " << place;
        }
}

TEST(StringComparisonTest, emptinessAndTheStringItself) {
    for (const NSString& text : {nil, NSString(u""), NSString(u"a")}) {
        EXPECT_EQ(NSStringKelvoExtensions::isStringEmpty(text), text.length() == 0);
        EXPECT_EQ(NSStringKelvoExtensions::isStringNotEmpty(text), text.length() > 0);
        EXPECT_TRUE(string(text).isIdenticalTo(text));
    }
}

TEST(StringEncodingSettingTest, defaultAndNullTerminatedBytes) {
    using namespace NSStringKelvoExtensions;
    EXPECT_EQ(defaultEncoding(), 4u);
    setDefaultEncoding(NSMacOSRomanStringEncoding);
    EXPECT_EQ(defaultEncoding(), 30u);
    setDefaultEncoding(NSUTF8StringEncoding);

    EXPECT_EQ(initWithNullTerminatedCString_encoding("\xC3\xA9\0more", NSUTF8StringEncoding), u"\u00E9");
    EXPECT_EQ(stringWithNullTerminatedCString_encoding("\xE9", NSISOLatin1StringEncoding), u"\u00E9");
    EXPECT_EQ(stringWithNullTerminatedCString_encoding("", NSUTF8StringEncoding), u"");
    EXPECT_TRUE(stringWithNullTerminatedCString_encoding("\xE9", NSUTF8StringEncoding).isNil());
    EXPECT_TRUE(stringWithNullTerminatedCString_encoding("a", kCFStringEncodingInvalidId).isNil());
    EXPECT_TRUE(stringWithNullTerminatedCString_encoding(nullptr, NSUTF8StringEncoding).isNil());
}

} // namespace
} // namespace kelvo
