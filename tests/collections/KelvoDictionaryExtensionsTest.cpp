#include "collections/KelvoDictionaryExtensions.h"

#include "platform/foundation/NSException.h"
#include "support/ScopedVariable.h"

#include <gtest/gtest.h>

#include <cmath>

namespace kelvo {
namespace {

TEST(KelvoDictionaryExtensionsTest, GivesNumbersOfAnyWidth) {
    const struct {
        const char* name;
        Value object;
        std::int32_t integer;
        std::uint32_t unsignedInt;
        std::uint64_t unsignedLong;
        double real;
        bool answer;
    } rows[] = {
        {"none", nullptr, 7, 7, 7, 7, true},
        {"integer", NSNumber::numberWithInt(-2), -2, 0xFFFFFFFE, ~std::uint64_t{1}, -2, true},
        {"past 32 bits", NSNumber::numberWithLongLong(0x1'0000'0003), 3, 3, 0x1'0000'0003, 0x1'0000'0003,
         true},
        {"real", NSNumber::numberWithDouble(2.75), 2, 2, 2, 2.75, true},
        {"false", NSNumber::numberWithBool(false), 0, 0, 0, 0, false},
        {"text of a number", u" -12.5e1x", -12, 0xFFFFFFF4, ~std::uint64_t{11}, -125, true},
        {"text past 32 bits", u"4294967297", INT32_MAX, 1, 4294967297, 4294967297, true},
        {"text just past 64 bits", u"9223372036854775808", INT32_MAX, UINT32_MAX, INT64_MAX, 0x1p63, true},
        {"text past 64 bits", u"-9999999999999999999", INT32_MIN, 0, std::uint64_t{1} << 63, -1e19, true},
        {"hexadecimal", u"0x10", 0, 0, 0, 0, false},
        {"not finite", u"inf", 0, 0, 0, 0, false},
        {"yes", u"Yes", 0, 0, 0, 0, true},
        {"no", u"y", 0, 0, 0, 0, false},
    };
    for (const auto& [name, object, integer, unsignedInt, unsignedLong, real, answer] : rows) {
        SCOPED_TRACE(name);
        NSMutableDictionary dictionary = NSMutableDictionary::dictionary();
        setOrRemoveObject_forKey(dictionary, object, u"k");
        EXPECT_EQ(integerForKey_default(dictionary, u"k", 7), integer);
        EXPECT_EQ(unsignedIntForKey_default(dictionary, u"k", 7), unsignedInt);
        EXPECT_EQ(unsignedLongForKey_default(dictionary, u"k", 7), unsignedLong);
        EXPECT_EQ(longLongForKey_default(dictionary, u"k", 7), static_cast<std::int64_t>(unsignedLong));
        EXPECT_EQ(doubleForKey_default(dictionary, u"k", 7), real);
        EXPECT_EQ(floatForKey_default(dictionary, u"k", 7), static_cast<float>(real));
        EXPECT_EQ(boolForKey_default(dictionary, u"k", true), answer);
        const std::int32_t plain = object.isNil() ? 0 : 1;
        EXPECT_EQ(integerForKey(dictionary, u"k"), plain * integer);
        EXPECT_EQ(unsignedLongForKey(dictionary, u"k"), static_cast<std::uint64_t>(plain) * unsignedLong);
        EXPECT_EQ(doubleForKey(dictionary, u"k"), plain * real);
        EXPECT_EQ(boolForKey(dictionary, u"k"), plain == 1 && answer);
    }
    for (const Value& other : {Value(NSNull()), Value(NSArray::array())}) {
        const NSDictionary dictionary = NSMutableDictionary::dictionaryWithObjectsAndKeys({{other, u"k"}});
        EXPECT_THROW(integerForKey(dictionary, u"k"), NSException);
        EXPECT_THROW(boolForKey_default(dictionary, u"k", true), NSException);
        EXPECT_EQ(stringForKey_default(dictionary, u"k", u"d"), other);
    }
}

TEST(KelvoDictionaryExtensionsTest, StoresAndRemoves) {
    NSMutableDictionary dictionary = NSMutableDictionary::dictionary();
    setString_forKey(dictionary, u"", u"string");
    setOrRemoveString_forKey(dictionary, u"kept", u"or");
    setBool_forKey(dictionary, true, u"bool");
    setInteger_forKey(dictionary, -5, NSNumber::numberWithInt(4));
    setUnsignedInt_forKey(dictionary, UINT32_MAX, u"unsigned");
    setUnsignedLong_forKey(dictionary, UINT64_MAX, u"long");
    setLongLong_forKey(dictionary, INT64_MIN, u"long long");
    setFloat_forKey(dictionary, 0.1F, u"float");
    setDouble_forKey(dictionary, 0.1, u"double");
    std::string shown;
    for (const auto& [key, object] : dictionary)
        shown += object.description().UTF8String() + " ";
    EXPECT_EQ(shown, " kept 1 -5 4294967295 -1 -9223372036854775808 0.1 0.1 ");
    EXPECT_TRUE(dictionary.objectForKey(u"bool").numberIfAny()->isBoolean());
    EXPECT_EQ(unsignedLongForKey(dictionary, u"long"), UINT64_MAX);
    EXPECT_EQ(objectForCode(dictionary, 4), Value(NSNumber::numberWithInt(-5)));
    EXPECT_EQ(objectForCode_default(dictionary, 5, u"d"), Value(u"d"));
    setOrRemoveString_forKey(dictionary, u"", u"or");
    setOrRemoveString_forKey(dictionary, nullptr, u"string");
    EXPECT_EQ(dictionary.count(), 7U);
    EXPECT_THROW(setString_forKey(dictionary, nullptr, u"k"), NSException);
    EXPECT_THROW(setBool_forKey(dictionary, true, nullptr), NSException);
}

TEST(KelvoDictionaryExtensionsTest, GivesTextsInTheUsersLanguage) {
    using Dictionary = NSMutableDictionary;
    const NSDictionary texts = Dictionary::dictionaryWithObjectsAndKeys({{u"Pfiat di", u"de_AT"},
                                                                         {u"Ade", u"German"},
                                                                         {NSNull(), u"fr"},
                                                                         {u"Adieu", u"French"},
                                                                         {u"Bye", u"English"}});
    const NSDictionary one =
        Dictionary::dictionaryWithObjectsAndKeys({{u"Hej", u"sv"}, {NSNull(), u"English"}});
    const NSDictionary dictionary = Dictionary::dictionaryWithObjectsAndKeys(
        {{u"text", u"plain"}, {texts, u"texts"}, {NSNumber::numberWithInt(1), u"number"}, {one, u"one"}});
    const struct {
        const char *all, *lang, *language;
        NSString text, swedish;
    } rows[] = {
        {"de_DE.UTF-8", "fr_FR", nullptr, u"Ade", u"d"},
        {nullptr, "de_AT@euro", nullptr, u"Pfiat di", u"d"},
        {nullptr, "de_DE", "sv:fr_CA.UTF-8:de", u"Adieu", u"Hej"},
        {"", "sv_SE", "", u"Bye", u"Hej"},
        {"C.UTF-8", "de_DE", "de", u"Bye", u"d"},
        {nullptr, nullptr, "de", u"Bye", u"d"},
    };
    const tests::ScopedVariable messages("LC_MESSAGES", nullptr);
    for (const auto& [all, lang, language, text, swedish] : rows) {
        const tests::ScopedVariable first("LC_ALL", all), second("LANG", lang), third("LANGUAGE", language);
        EXPECT_EQ(localizedStringForKey_default(dictionary, u"texts", u"d"), text) << text.UTF8String();
        EXPECT_EQ(localizedStringForKey(dictionary, u"plain"), u"text");
        for (const char16_t* key : {u"number", u"none"})
            EXPECT_EQ(localizedStringForKey_default(dictionary, key, u"d"), u"d");
        EXPECT_EQ(localizedStringForKey_default(dictionary, u"one", u"d"), swedish);
    }
    EXPECT_TRUE(localizedStringForKey(dictionary, u"none").isNil());
}

} // namespace
} // namespace kelvo
