#include "text/StringFolding.h"

#include "platform/foundation/Value.h"
#include "text/FoldingTables.h"
#include "text/NSStringExtensions.h"
#include "text/StringMatching.h"
#include "text/StringRemoval.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

namespace kelvo {
namespace {

TEST(StringFoldingTest, folded) {
    EXPECT_EQ(nonUmlautedString(u"\u00C4rger Stra\u00DFe"), u"Arger Stra\u00DFe");
    EXPECT_EQ(uppercaseNonUmlautedString(u"\u00E4rger Stra\u00DFe"), u"ARGER STRA\u00DFE");
    EXPECT_EQ(asciiString(u"\u00E9\u00DF\u4E2D\u00A0\U0001F600"), u"e     ");
    // A mark of its own is no letter, so only its composition goes.
    EXPECT_EQ(nonUmlautedString(u"e\u0301q\u0301"), u"e\u0301q\u0301");
    EXPECT_EQ(nonUmlautedNormalizedString(u"e\u0301q\u0301"), u"eq\u0301");
    EXPECT_EQ(uppercaseNonUmlautedNormalizedString(u"e\u0301"), u"E");
    EXPECT_EQ(lowercaseNonUmlautedNormalizedString(u"E\u0301"), u"e");
}

TEST(StringFoldingTest, kindsOfText) {
    const std::tuple<const char*, NSString, bool, bool, bool> rows[] = {
        {"nil", nullptr, false, false, false},
        {"empty", u"", false, false, false},
        {"upper", u"ABC 1", false, true, false},
        {"lower", u"abc-1", false, false, true},
        {"both", u"Abc", false, false, false},
        {"no letters", u"12 3", false, false, false},
        {"umlaut", u"xy\u00E4", true, false, true},
        {"sharp s is lower case and no umlaut", u"STRA\u00DFE", false, false, false},
        {"title case is neither", u"\u01C5", false, false, false},
        {"mark of its own", u"e\u0301", false, false, true},
    };
    for (const auto& [name, text, umlauted, upper, lower] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(isUmlautedString(text), umlauted);
        EXPECT_EQ(isUpperCaseString(text), upper);
        EXPECT_EQ(isLowerCaseString(text), lower);
    }
}

TEST(StringFoldingTest, equality) {
    const NSString nil;
    const struct {
        const char* name;
        NSString text, other;
        bool equal[4];
    } rows[] = {
        {"nil and nil", nil, nil, {false, false, false, false}},
        {"nil and empty", nil, u"", {false, false, false, false}},
        {"empty and nil", u"", nil, {false, false, false, false}},
        {"both empty", u"", u"", {true, true, true, true}},
        {"same", u"ab", u"ab", {true, true, true, true}},
        {"case", u"aB", u"Ab", {true, true, true, false}},
        {"umlaut", u"\u00E4", u"A", {true, true, false, false}},
        {"no ASCII counterpart", u"\u4E2D\u6587", u"\u00DF ", {false, true, false, false}},
        {"never normalised", u"e\u0301", u"\u00E9", {false, false, false, false}},
        {"lengths", u"ab", u"abc", {false, false, false, false}},
    };
    constexpr decltype(range_isEqualTo)* tests[] = {
        range_isNonUmlautedEqualToNoCase, range_isAsciiEqualToNoCase, range_isEqualToNoCase, range_isEqualTo};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(isNonUmlautedEqualToStringNoCase(row.text, row.other), row.equal[0]);
        EXPECT_EQ(isAsciiEqualToStringNoCase(row.text, row.other), row.equal[1]);
        const NSString longer(u"x" + std::u16string(row.text.characters()) + u"y");
        for (std::size_t index = 0; index < std::size(tests); ++index) {
            EXPECT_EQ(tests[index](row.text, {0, row.text.length()}, row.other), row.equal[index]);
            EXPECT_EQ(tests[index](longer, {1, row.text.length()}, row.other),
                      row.equal[index] || (row.text.isNil() && row.other == u""));
        }
    }
    for (const auto equal : tests)
        for (const NSRange outside : {NSRange{2, 1}, NSRange{3, 0}, NSRange{1, ~std::size_t{0}}})
            EXPECT_FALSE(equal(u"ab", outside, outside.length == 0 ? u"" : u"b"));
}

TEST(StringFoldingTest, equalityWithoutCaseFollowsTheUpperCaseTable) {
    const char16_t* upper = initUpperCharsTable();
    for (unsigned number = 0; number <= 0xFFFF; ++number) {
        const auto unit = static_cast<char16_t>(number);
        for (const UChar32 other :
             {u_toupper(unit), u_tolower(unit), u_foldCase(unit, U_FOLD_CASE_DEFAULT)}) {
            const auto partner = static_cast<char16_t>(other);
            const bool isEqual = upper[unit] == upper[partner];
            const NSString text(std::u16string_view(&unit, 1)), wanted(std::u16string_view(&partner, 1));
            ASSERT_EQ(range_isEqualToNoCase(text, {0, 1}, wanted), isEqual) << number;
            ASSERT_EQ(containsStringNoCase(NSArray::arrayWithObjects({text}), wanted), isEqual) << number;
        }
    }
}

TEST(StringFoldingTest, keysWithoutCaseAreEqualForEqualStrings) {
    const NSString texts[] = {u"a-b c",   u"ABC", u"ab", u"\u00E4bc", u"\u00C4BC",
                              u"a\u017F", u"AS",  u"",   u"-"};
    for (const NSString& first : texts)
        for (const NSString& second : texts)
            EXPECT_EQ(caseInsensitiveStringByRemovingNonAlphaNumericCharacters(first) ==
                          caseInsensitiveStringByRemovingNonAlphaNumericCharacters(second),
                      equalStringsNoCaseUsingCharacterSetRep(first, second, alphaNumCharacterSetRep()));
}

TEST(StringFoldingTest, comparesOfTheClass) {
    using namespace NSStringKelvoExtensions;
    EXPECT_LT(compareCharacters_withCharacters(u"ab", 2, u"abc", 3), 0);
    EXPECT_GT(compareCharacters_withCharacters(u"b", 1, u"B", 1), 0);
    EXPECT_EQ(caseInsensitiveCompareCharacters_withCharacters(u"b\u00E4", 2, u"B\u00C4", 2), 0);
    EXPECT_EQ(compareCharacters_withCharacters(nullptr, 5, nullptr, 7), 0);
    EXPECT_LT(caseInsensitiveCompareCharacters_withCharacters(nullptr, 5, u"a", 1), 0);
}

} // namespace
} // namespace kelvo
