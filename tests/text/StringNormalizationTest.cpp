#include "text/StringNormalization.h"

#include <gtest/gtest.h>

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

} // namespace
} // namespace kelvo
