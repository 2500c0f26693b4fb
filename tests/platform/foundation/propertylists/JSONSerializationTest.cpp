#include "platform/foundation/propertylists/NSJSONSerialization.h"

#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvo {
namespace {

std::string json(const Value& value, NSJSONWritingOptions options = NSJSONWritingOptions::compact) {
    return std::string(NSJSONSerialization::dataWithJSONObject_options(value, options).characters());
}

Value dictionary(std::initializer_list<NSMutableDictionary::Pair> pairs) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(pairs);
}

TEST(JSONSerialization, WritesEachKind) {
    const std::tuple<Value, const char*> rows[] = {
        {nullptr, "null"},
        {NSNull(), "null"},
        {NSNumber::numberWithBool(true), "true"},
        {NSNumber::numberWithInt(1), "1"},
        {NSNumber::numberWithLongLong(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808"},
        {NSNumber::numberWithFloat(0.1f), "0.1"},
        {NSNumber::numberWithDouble(0.1f), "0.10000000149011612"},
        {NSNumber::numberWithDouble(0.1), "0.1"},
        {NSNumber::numberWithDouble(std::numeric_limits<double>::quiet_NaN()), "null"},
        {NSNumber::numberWithFloat(-std::numeric_limits<float>::infinity()), "null"},
        {u"\"\\\n\x01\u20AC\xD83D\xDE00", "\"\\\"\\\\\\n\\u0001\xE2\x82\xAC\xF0\x9F\x98\x80\""},
        {u"a\xD83D"
         u"b",
         "\"a\xEF\xBF\275b\""},
        {NSString(std::u16string_view(u"\0", 1)), "\"\\u0000\""},
        {NSArray::array(), "[]"},
        {NSDictionary::dictionary(), "{}"},
        {dictionary({{u"1", u"z"}, {NSArray::arrayWithObjects({NSNull(), u"x"}), u"a"}, {u"2", u""}}),
         R"({"z":"1","a":[null,"x"],"":"2"})"},
    };
    for (const auto& [value, expected] : rows)
        EXPECT_EQ(json(value), expected);
    EXPECT_EQ(json(dictionary({{NSArray::arrayWithObjects({u"x"}), u"a"}, {NSArray::array(), u"b"}}),
                   NSJSONWritingOptions::prettyPrinted),
              "{\n  \"a\": [\n    \"x\"\n  ],\n  \"b\": []\n}");
}

TEST(JSONSerialization, RefusesWhatJSONHasNot) {
    const Value one = NSNumber::numberWithInt(1);
    Value deep = one;
    for (int level = 0; level < 513; ++level)
        deep = NSArray::arrayWithObjects({deep});
    EXPECT_NO_THROW(json(deep.array().objectAtIndex(0)));
    const Value row = NSArray::arrayWithValues(std::vector<Value>(2000, one));
    const Value large = NSArray::arrayWithValues(std::vector<Value>(2100, row));
    for (const Value& value :
         {Value(NSData::data()), Value(NSDate::date()), Value(NSURL::URLWithString(u"a")), Value(NSSize()),
          Value(NSColor()), dictionary({{u"a", one}}), deep, large}) {
        try {
            json(NSArray::arrayWithObjects({value}));
            ADD_FAILURE() << static_cast<int>(value.kind());
        } catch (const NSException& error) {
            EXPECT_EQ(error.name(), NSInvalidArgumentException);
        }
    }
}

} // namespace
} // namespace kelvo
