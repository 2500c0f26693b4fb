#include "text/FoldingTables.h"

#include <gtest/gtest.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <array>
#include <thread>

namespace kelvo {
namespace {

// The reference works on whole ICU strings and general categories, apart from the tables' own way through the
// text services.
bool isLetter(char16_t unit) {
    return u_charType(unit) >= U_UPPERCASE_LETTER && u_charType(unit) <= U_OTHER_LETTER;
}

char16_t soleUnit(const icu::UnicodeString& text, char16_t otherwise) {
    return text.length() == 1 ? text[0] : otherwise;
}

char16_t expectedFolded(char16_t unit) {
    if (!isLetter(unit))
        return unit;
    UErrorCode status = U_ZERO_ERROR;
    const auto* decomposer = icu::Normalizer2::getNFDInstance(status);
    icu::UnicodeString kept;
    const icu::UnicodeString parts = decomposer->normalize(icu::UnicodeString(unit), status);
    for (int index = 0; index < parts.length(); index = parts.moveIndex32(index, 1))
        if (u_charType(parts.char32At(index)) != U_NON_SPACING_MARK)
            kept.append(parts.char32At(index));
    return soleUnit(icu::Normalizer2::getNFCInstance(status)->normalize(kept, status), unit);
}

char16_t expectedUpper(char16_t unit) {
    return u_charType(unit) == U_LOWERCASE_LETTER
               ? soleUnit(icu::UnicodeString(unit).toUpper(icu::Locale::getRoot()), unit)
               : unit;
}

char16_t expectedLower(char16_t unit) {
    return u_charType(unit) == U_UPPERCASE_LETTER
               ? soleUnit(icu::UnicodeString(unit).toLower(icu::Locale::getRoot()), unit)
               : unit;
}

TEST(FoldingTablesTest, everyEntryFollowsUnicode) {
    std::size_t unlikeSimpleMapping = 0;
    for (unsigned code = 0; code <= 0xFFFF; ++code) {
        const auto unit = static_cast<char16_t>(code);
        SCOPED_TRACE(code);
        const char16_t folded = expectedFolded(unit);
        ASSERT_EQ(initUmlautsCharsTable()[unit], folded);
        ASSERT_EQ(initUpperCharsTable()[unit], expectedUpper(unit));
        ASSERT_EQ(initLowerCharsTable()[unit], expectedLower(unit));
        ASSERT_EQ(initUpperUmlautsCharsTable()[unit], expectedUpper(folded));
        ASSERT_EQ(initLowerUmlautsCharsTable()[unit], expectedLower(folded));
        if (u_charType(unit) == U_LOWERCASE_LETTER)
            unlikeSimpleMapping += toUpper(unit) != static_cast<unsigned>(u_toupper(unit));
        if (u_charType(unit) == U_UPPERCASE_LETTER)
            unlikeSimpleMapping += toLower(unit) != static_cast<unsigned>(u_tolower(unit));
    }
    EXPECT_EQ(unlikeSimpleMapping, 28u);
}

TEST(FoldingTablesTest, lookUpsFollowTheirTables) {
    // clang-format off
    const unsigned rows[][9] = {
        {u'a',   'a',    'a', 'a', 'A', 'A',    'a',    'A',    'a'},
        {u'Z',   'Z',    'Z', 'z', 'Z', 'Z',    'z',    'Z',    'z'},
        {u'[',   '[',    '[', '[', '[', '[',    '[',    '[',    '['},
        {u'`',   '`',    '`', '`', '`', '`',    '`',    '`',    '`'},
        {0x007F, 0x7F,   127, 127, 127, 0x7F,   0x7F,   0x7F,   0x7F},
        {0x0080, 0x80,   32,  32,  32,  0x80,   0x80,   0x80,   0x80},
        {0x00A0, 0xA0,   32,  32,  32,  0xA0,   0xA0,   0xA0,   0xA0},
        {0x00C9, 'E',    'E', 'e', 'E', 0xC9,   0xE9,   'E',    'e'},
        {0x00E4, 'a',    'a', 'a', 'A', 0xC4,   0xE4,   'A',    'a'},
        {0x00DF, 0xDF,   32,  32,  32,  0xDF,   0xDF,   0xDF,   0xDF},
        {0x0130, 'I',    'I', 'i', 'I', 0x130,  0x130,  'I',    'i'},
        {0x0301, 0x301,  32,  32,  32,  0x301,  0x301,  0x301,  0x301},
        {0x4E00, 0x4E00, 32,  32,  32,  0x4E00, 0x4E00, 0x4E00, 0x4E00},
        {0xD800, 0xD800, 32,  32,  32,  0xD800, 0xD800, 0xD800, 0xD800},
        {0xFFFF, 0xFFFF, 32,  32,  32,  0xFFFF, 0xFFFF, 0xFFFF, 0xFFFF},
    };
    // clang-format on
    for (const auto& [code, folded, ascii, lowerAscii, upperAscii, upper, lower, upperFolded, lowerFolded] :
         rows) {
        SCOPED_TRACE(code);
        const auto unit = static_cast<char16_t>(code);
        EXPECT_EQ(umlautsToAscii(unit), folded);
        EXPECT_EQ(toAscii(unit), ascii);
        EXPECT_EQ(toLowerAscii(unit), lowerAscii);
        EXPECT_EQ(toUpperAscii(unit), upperAscii);
        EXPECT_EQ(toUpper(unit), upper);
        EXPECT_EQ(toLower(unit), lower);
        EXPECT_EQ(umlautsToUpperAscii(unit), upperFolded);
        EXPECT_EQ(umlautsToLowerAscii(unit), lowerFolded);
    }
}

TEST(FoldingTablesTest, everyCallerGetsTheOneTable) {
    std::array<std::array<const char16_t*, 2>, 8> seen{};
    {
        std::array<std::jthread, 8> threads;
        for (std::size_t index = 0; index < threads.size(); ++index)
            threads[index] = std::jthread([&seen, index] {
                seen[index] = {initLowerUmlautsCharsTable(), initUpperUmlautsCharsTable()};
            });
    }
    for (const auto& pointers : seen) {
        EXPECT_EQ(pointers[0], NSStringKelvoExtensions::lowerUmlautsCharsTable());
        EXPECT_EQ(pointers[1], NSStringKelvoExtensions::upperUmlautsCharsTable());
    }
    EXPECT_EQ(_umlautsCharsTable.load(), NSStringKelvoExtensions::umlautsCharsTable());
    EXPECT_EQ(_upperCharsTable.load(), NSStringKelvoExtensions::upperCharsTable());
    EXPECT_EQ(_lowerCharsTable.load(), NSStringKelvoExtensions::lowerCharsTable());
}

} // namespace
} // namespace kelvo
