#include "text/StringNormalization.h"

#include <gtest/gtest.h>
#include <unicode/unorm2.h>

#include <random>
#include <string>

namespace kelvo {
namespace {

TEST(StringNormalizationTest, forms) {
    const std::tuple<const char*, NSString, NSString, NSString, NSString> rows[] = {
        {"composed", u"\u00C9", u"\u00C9", u"\u00E9", u"\u00C9"},
        {"decomposed", u"e\u0301", u"\u00E9", u"\u00E9", u"\u00E9"},
        {"both case variants end in lower case", u"ABC", u"ABC", u"abc", u"ABC"},
        {"outside the basic plane", u"\U0001F600", u"\U0001F600", u"\U0001F600", u"  "},
        {"unpaired surrogates", u"\xDC00x\xD800", u"\xDC00x\xD800", u"\xDC00x\xD800", u" x "},
        {"private use", u"\uF3FF\uF400\uF8FF\uF900", u"\uF3FF\uF400\uF8FF\u8C48", u"\uF3FF\uF400\uF8FF\u8C48",
         u"\uF3FF  \u8C48"},
        {"no mark joins a space", u"\xD800\u0301", u"\xD800\u0301", u"\xD800\u0301", u" \u0301"},
        {"a form that is longer", u"\u0958", u"\u0915\u093C", u"\u0915\u093C", u"\u0915\u093C"},
    };
    for (const auto& [name, text, formC, lowercase, fixed] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(normalizedString(text), formC);
        EXPECT_EQ(normalizedLowercaseString(text), lowercase);
        EXPECT_EQ(normalizedUppercaseString(text), lowercase);
        EXPECT_EQ(fixedAndNormalizedString(text), fixed);
    }
    EXPECT_EQ(normalizedString(u"\uFB01\u00C9", CFStringNormalizationForm::D), u"\uFB01E\u0301");
    EXPECT_EQ(normalizedString(u"\uFB01\u00C9", CFStringNormalizationForm::KD), u"fiE\u0301");
    EXPECT_EQ(normalizedString(u"\uFB01E\u0301", CFStringNormalizationForm::C), u"\uFB01\u00C9");
    EXPECT_EQ(normalizedString(u"\uFB01E\u0301", CFStringNormalizationForm::KC), u"fi\u00C9");
    for (const unsigned number : {4u, 255u}) {
        const auto none = static_cast<CFStringNormalizationForm>(number);
        const NSString text = u"\uFB01E\u0301\u00C9";
        NSMutableString changed(text);
        normalizeString(changed, none);
        EXPECT_TRUE(changed.takeString() == text && normalizedString(text, none).isIdenticalTo(text))
            << number;
    }
}

TEST(StringNormalizationTest, fullCaseMappings) {
    const auto changed = [](void (*change)(NSMutableString&), const NSString& text) {
        NSMutableString copy(text);
        change(copy);
        return copy.takeString();
    };
    EXPECT_EQ(changed(uppercase, u"stra\u00DFe"), u"STRASSE");
    EXPECT_EQ(changed(lowercase, u"\u0130X"), u"i\u0307x");
    EXPECT_EQ(changed(capitalize, u"hello WORLD, it's"), u"Hello World, It's");
}

std::u16string fixedByICU(std::u16string text) {
    for (char16_t& unit : text)
        if ((unit >= 0xD800 && unit <= 0xDFFF) || (unit >= 0xF400 && unit <= 0xF8FF))
            unit = u' ';
    UErrorCode status = U_ZERO_ERROR;
    std::u16string result(4 * text.size() + 16, u'\0');
    const auto length =
        unorm2_normalize(unorm2_getNFCInstance(&status), text.data(), static_cast<int>(text.size()),
                         result.data(), static_cast<int>(result.size()), &status);
    EXPECT_TRUE(U_SUCCESS(status));
    result.resize(static_cast<std::size_t>(length));
    return result;
}

void expectAsByICU(const std::u16string& text) {
    const NSString string(text), fixed = fixedAndNormalizedString(string);
    const std::u16string expected = fixedByICU(text);
    ASSERT_EQ(fixed, NSString(expected));
    ASSERT_EQ(fixed.isIdenticalTo(string), expected == text);
}

TEST(StringNormalizationTest, everyUnitBesideOthersAsByICU) {
    const std::u16string padding(70, u'\u0E01');
    for (unsigned number = 0; number <= 0xFFFF; ++number) {
        const auto unit = static_cast<char16_t>(number);
        // Behind a letter, a mark that is put in order, one that hides the letter, and itself.
        for (const std::u16string_view before :
             {u"", u"e", u"\u0E33\u0327", u"\u0928\u094D", u"\u0E01\u0E48", u"\u0BC6"}) {
            SCOPED_TRACE(number);
            expectAsByICU((number % 7 ? padding : u"") + std::u16string(before) + unit + u"a");
            if (testing::Test::HasFatalFailure())
                return;
        }
        expectAsByICU({unit, unit});
    }
}

// Letters of scripts, and marks of theirs in any order, some of them wrong, at all lengths around the steps of a scan.
TEST(StringNormalizationTest, scriptsAsByICU) {
    const std::u16string_view alphabets[] = {
        u"abc \u00E9\u0301\u0327\u1EA1\u1EBF\u01B0",
        u"\u0915\u092C \u093C\u093F\u0940\u094D\u0921\u0922\u0964\u0951\u0952",
        u"\u0E01\u0E2D\u0E38\u0E39\u0E48\u0E49\u0E3A\u0E32 ",
        u"\u03B1\u03AC \u1F00\u1F76\u1FB6\u1F71\u0342\u0345\u2019",
        u"\u0627\u0644 \u0651\u064B\u0653\u06CC\u060C\u067E",
        u"\u05D0\u05E9 \u05B8\u05BC\u05C1\u05BE\uFB2A",
        u"\u304B\u3099\u30AB\u309A\u4E00\u3001\uFF01\u302A\U00020BB7",
        u"\u0B95\u0BC6\u0BBE\u0BD7\u0B92 \u09C7\u09BE\u1025\u102E\u1100\u1161\u11A8",
        u"a\u0100\u0416\u0531\u05D0\u0628\u0710\u0785\u0905\u0995\u0E01\u10D0\u13A0\u1780\u2C00\uF500"};
    std::mt19937 random(5);
    for (const std::u16string_view alphabet : alphabets)
        for (std::size_t length = 0; length < 420; length += 1 + length / 60)
            for (const unsigned rare : {2u, 40u, 4000u}) {
                std::u16string text;
                while (text.size() < length)
                    text += alphabet[random() % rare == 0 ? random() % alphabet.size() : random() % 3];
                SCOPED_TRACE(length);
                expectAsByICU(text);
                expectAsByICU(fixedByICU(text));
                if (testing::Test::HasFatalFailure())
                    return;
            }
}

} // namespace
} // namespace kelvo
