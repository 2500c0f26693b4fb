#include "text/CharacterSetReps.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

namespace kelvo {
namespace {

bool inCategories(char16_t unit, std::uint32_t mask) {
    return (U_GET_GC_MASK(unit) & mask) != 0;
}

TEST(CharacterSetRepsTest, everyBitFollowsUnicode) {
    const std::set<char16_t> whiteBesides = {0x0000, 0x0003, 0x0009, 0x000A, 0x000C, 0x000D,
                                             0x00A0, 0x2028, 0x2029, 0xFEFF, 0xFFFC};
    struct Row {
        const char* name;
        CharacterSetRep rep;
        bool (*isMember)(char16_t);
        std::set<char16_t> besides;
    };
    const Row rows[] = {
        {"empty", emptyCharacterSetRep(), [](char16_t) { return false; }, {}},
        {"white", whiteCharacterSetRep(), [](char16_t c) { return u_isUWhiteSpace(c) != 0; }, whiteBesides},
        {"space",
         spaceCharacterSetRep(),
         [](char16_t c) { return c != 0xA0 && inCategories(c, U_GC_ZS_MASK); },
         {0x0000, 0x0009}},
        {"upper", upperCharacterSetRep(), [](char16_t c) { return inCategories(c, U_GC_LU_MASK); }, {}},
        {"lower", lowerCharacterSetRep(), [](char16_t c) { return inCategories(c, U_GC_LL_MASK); }, {}},
        {"digit", digitCharacterSetRep(), [](char16_t c) { return inCategories(c, U_GC_ND_MASK); }, {}},
        {"alphaNum",
         alphaNumCharacterSetRep(),
         [](char16_t c) { return inCategories(c, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK); },
         {}},
        {"alpha", alphaCharacterSetRep(), [](char16_t c) { return inCategories(c, U_GC_L_MASK); }, {}},
    };
    for (const Row& row : rows)
        for (unsigned code = 0; code <= 0xFFFF; ++code) {
            const auto unit = static_cast<char16_t>(code);
            ASSERT_EQ(unitIsInBitmap(row.rep, unit), row.isMember(unit) || row.besides.contains(unit))
                << row.name << ' ' << code;
        }
}

TEST(CharacterSetRepsTest, namedRepsAreMadeOnceAndBitmapIsTheSetsOwn) {
    EXPECT_EQ(whiteCharacterSetRep(), whiteCharacterSetRep());
    const NSCharacterSet& letters = NSCharacterSet::letterCharacterSet();
    EXPECT_EQ(bitmap(letters), letters.bitmapRepresentation().bytes().data());
    EXPECT_NE(bitmap(letters), alphaCharacterSetRep());
    EXPECT_EQ(firstAlphaCharacter(), u'A');
    EXPECT_EQ(lastAlphaCharacter(), 0xFFDC);
}

TEST(CharacterSetRepsTest, stringClasses) {
    // clang-format off
    const std::tuple<const char*, NSString, bool, bool, bool, bool, bool, bool, bool, bool, bool> rows[] = {
        //                                  contains                     is wholly
        //                                  digit  white  alpha  alNum   alNum  alpha  digit  white  space
        {"nil",          NSString(),        false, false, false, false,  false, false, false, false, false},
        {"empty",        NSString(u""),     false, false, false, false,  false, false, false, true,  true},
        {"letters",      NSString(u"abÄ"),  false, false, true,  true,   true,  true,  false, false, false},
        {"digits",       NSString(u"12٣"),  true,  false, false, true,   true,  false, true,  false, false},
        {"mixed",        NSString(u"a1 "),  true,  true,  true,  true,   false, false, false, false, false},
        {"mark",         NSString(u"\u0301"),false,false, false, true,   true,  false, false, false, false},
        {"roman number", NSString(u"\u2167"),false,false, false, true,   true,  false, false, false, false},
        {"no-break space", NSString(u"\u00A0"),false,true,false, false,  false, false, false, true,  false},
        {"attachment",   NSString(u"\uFFFC"),false,true,  false, false,  false, false, false, true,  false},
        {"tab",          NSString(u"\t"),   false, true,  false, false,  false, false, false, true,  true},
        {"line feed",    NSString(u"\n"),   false, true,  false, false,  false, false, false, true,  false},
        {"surrogate",    NSString(u"\xD835"),false,false, false, false,  false, false, false, false, false},
    };
    // clang-format on
    for (const auto& [name, string, hasDigit, hasWhite, hasAlpha, hasAlphaNum, alphaNum, alpha, digit, white,
                      space] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(containsDigitCharacter(string), hasDigit);
        EXPECT_EQ(containsWhiteCharacter(string), hasWhite);
        EXPECT_EQ(containsAlphaCharacter(string), hasAlpha);
        EXPECT_EQ(containsAlphaNumCharacter(string), hasAlphaNum);
        EXPECT_EQ(isAlphaNumString(string), alphaNum);
        EXPECT_EQ(isAlphaString(string), alpha);
        EXPECT_EQ(isDigitString(string), digit);
        EXPECT_EQ(isWhiteString(string), white);
        EXPECT_EQ(isSpaceString(string), space);
    }
    // A NUL inside counts, and as white.
    EXPECT_TRUE(isSpaceString(NSString(std::u16string_view(u" \0 ", 3))));
}

TEST(CharacterSetRepsTest, nullRepAndEmptyString) {
    EXPECT_FALSE(characterPartOfSet(u"a", nullptr));
    EXPECT_FALSE(containsCharacterPartOfCharacterSetRep(u"", alphaCharacterSetRep()));
    EXPECT_FALSE(charactersPartOfSet(u"a", nullptr, true));
    EXPECT_TRUE(charactersPartOfSet(u"", nullptr, true));
    EXPECT_FALSE(charactersPartOfSet(u"", alphaCharacterSetRep(), false));
    EXPECT_FALSE(charactersPartOfSet(u"a", emptyCharacterSetRep(), true));
}

} // namespace
} // namespace kelvo
