#include "platform/appkit/rtfreader/RTFField.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

std::string shown(const RTFField& field) {
    std::string result = field.link.isNil() ? "" : "to " + field.link.UTF8String();
    if (field.symbol)
        result += "sign " + std::to_string(*field.symbol) + (field.isSymbolUnicode ? " of Unicode" : "");
    return result + (field.symbolFont.isNil() ? "" : " in " + field.symbolFont.UTF8String());
}

TEST(RTFFieldTest, Instructions) {
    const std::tuple<const char16_t*, const char*> rows[] = {
        {u"", ""},
        {u" PAGE ", ""},
        {u"HYPERLINK", ""},
        {u" hyperlink\ta b ", "to a"},
        {u"HYPERLINK \"a b\" \"c\"", "to a b"},
        {u"HYPERLINK \u201Ca\u201D", "to a"},
        {u"HYPERLINK \"a\\\"b\\\\c\\d\"", "to a\"b\\c\\d"},
        {u"HYPERLINK \"\\\\\\\\host\\\\x\"", "to \\\\host\\x"},
        {u"HYPERLINK \"open", "to open"},
        {u"HYPERLINK \\o \"tip\" \\t _top \\h a", "to a"},
        {u"HYPERLINK \"\\l\" \\L \"b\"", "to \\l#b"},
        {u"HYPERLINK \\l", ""},
        {u"SYMBOL", ""},
        {u"Symbol 183 \\f \"Wing dings\" \\s 10", "sign 183 in Wing dings"},
        {u"SYMBOL 0xF0a7 \\U", "sign 61607 of Unicode"},
        {u"SYMBOL 999999", "sign 999999"},
        {u"SYMBOL 1000000", ""},
        {u"SYMBOL 0x", ""},
        {u"SYMBOL 1a", ""},
        {u"SYMBOL 0x1g", ""},
    };
    for (const auto& [instruction, expected] : rows)
        EXPECT_EQ(shown(RTFField::parse(instruction)), expected) << NSString(instruction).UTF8String();
}

} // namespace
} // namespace kelvo
