#include "protocol/WireValues.h"
#include "protocol/WireAttributedText.h"

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSObject.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSConnection.h"

#include <capnp/message.h>
#include <gtest/gtest.h>

#include <limits>

namespace kelvo {
namespace {

NSDictionary thereAndBack(const NSDictionary& dictionary) {
    capnp::MallocMessageBuilder message;
    const auto root = message.initRoot<wire::Dictionary>();
    encodeDictionary(dictionary, root);
    return decodeDictionary(root.asReader());
}

NSDictionary holding(const Value& value) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys({{value, u"value"}});
}

/// Every attribute that travels, none at its default; plain text before and after it.
NSAttributedString attributedText() {
    NSParagraphStyle style;
    style.alignment = NSTextAlignment::justified;
    style.baseWritingDirection = NSWritingDirection::rightToLeft;
    float length = 0;
    for (float* each :
         {&style.firstLineHeadIndent, &style.headIndent, &style.tailIndent, &style.paragraphSpacingBefore,
          &style.paragraphSpacing, &style.lineHeightMultiple, &style.minimumLineHeight,
          &style.maximumLineHeight, &style.lineSpacing, &style.defaultTabInterval})
        *each = length += 1.5f;
    style.headerLevel = 6;
    style.tabStops = {{36, NSTextTabType::center}, {-1, NSTextTabType::decimal}};
    NSTextAttributes attributes;
    attributes.font = {u"Gill Sans", 9.5f, true, false, true};
    attributes.foregroundColor = NSColor{0.25f, 0.5f, 0.75f, 1};
    attributes.backgroundColor = NSColor{1, 0.5f, 0, 0.125f};
    attributes.underlineStyle = NSUnderlineStyleDouble;
    attributes.strikethroughStyle = NSUnderlineStyleThick;
    attributes.superscript = -2;
    attributes.baselineOffset = 3;
    attributes.kern = -0.5f;
    attributes.link = u"http://example.org/";
    attributes.paragraphStyle = std::make_shared<const NSParagraphStyle>(style);
    NSMutableAttributedString text;
    text.append(NSAttributedString(u"plain"));
    text.append(NSAttributedString(NSString(std::u16string_view(u"\xD800\0x", 3)), attributes));
    NSTextAttributes italic;
    italic.font.isItalic = true;
    text.append(NSAttributedString(u"plain", italic));
    return std::move(text).copy();
}

TEST(WireValues, EveryKindComesBackEqual) {
    const NSURL base = NSURL::URLWithString(u"http://example.org/a/");
    const std::tuple<const char*, Value> rows[] = {
        {"null", NSNull()},
        {"true", NSNumber::numberWithBool(true)},
        {"false", NSNumber::numberWithBool(false)},
        {"int32", NSNumber::numberWithInt(std::numeric_limits<std::int32_t>::min())},
        {"int64", NSNumber::numberWithLongLong(std::numeric_limits<std::int64_t>::max())},
        {"float", NSNumber::numberWithFloat(0.1f)},
        {"double", NSNumber::numberWithDouble(-1e300)},
        {"empty text", NSString::string()},
        {"units", NSString(std::u16string_view(u"\0\xD800x\xDC80\xFFFF", 5))},
        {"data", NSData::dataWithBytes("\0\1\377", 3)},
        {"no data", NSData::data()},
        {"date", NSDate::dateWithTimeIntervalSinceReferenceDate(-0.25)},
        {"url with a base", NSURL::URLWithString_relativeToURL(u"b?c#d", base)},
        {"reference to the base", NSURL::URLWithString_relativeToURL(u"", base)},
        {"array", NSArray::arrayWithObjects({NSArray::array(), NSNull(), u"x"})},
        {"size", NSSize{612, 0.5f}},
        {"attributed text", attributedText()},
        {"attributed text without text", NSAttributedString(u"")},
        {"color", NSColor{0.125f, 0.25f, 0.75f, 0.5f}},
        {"key that is a number",
         NSMutableDictionary::dictionaryWithObjectsAndKeys({{u"x", NSNumber::numberWithInt(7)}})},
    };
    NSMutableDictionary all = NSMutableDictionary::dictionary();
    for (const auto& [name, value] : rows) {
        const Value back = thereAndBack(holding(value)).objectForKey(u"value");
        EXPECT_EQ(back, value) << name;
        EXPECT_EQ(back.kind(), value.kind()) << name;
        if (const NSNumber* number = value.numberIfAny()) {
            EXPECT_EQ(back.numberIfAny()->kind(), number->kind()) << name;
        }
        all.setObject_forKey(value, NSString::stringWithUTF8String(name));
    }
    EXPECT_EQ(thereAndBack(all).allKeys(), all.allKeys()) << "in its order";
}

TEST(WireValues, WhatCannotBeSentIsRefused) {
    const auto nested = [](std::size_t levels) {
        Value value = u"bottom";
        for (std::size_t level = 1; level < levels; ++level)
            value = level % 2 == 0 ? Value(NSArray::arrayWithObjects({value})) : Value(holding(value));
        return holding(value);
    };
    EXPECT_EQ(thereAndBack(nested(Value::maximumDepth)), nested(Value::maximumDepth));
    EXPECT_THROW(thereAndBack(nested(Value::maximumDepth + 1)), NSException);
    EXPECT_THROW(thereAndBack(holding(std::make_shared<NSObject>())), NSException);
    NSTextAttributes listed;
    NSParagraphStyle style;
    style.textLists = {std::make_shared<const NSTextList>()};
    listed.paragraphStyle = std::make_shared<const NSParagraphStyle>(style);
    EXPECT_THROW(thereAndBack(holding(NSAttributedString(u"item", listed))), NSException);
    NSTextAttributes picture;
    picture.attachment = std::make_shared<const NSTextAttachment>();
    EXPECT_THROW(thereAndBack(holding(NSAttributedString(u"\uFFFC", picture))), NSException);
    // The length alone is looked at.
    const std::uint8_t byte = 0;
    const auto dataOf = [&](std::size_t length) {
        return NSData::dataWithBytesNoCopy(std::span(&byte, length), nullptr);
    };
    EXPECT_EQ(wireData(dataOf(NSConnection::fieldLimitInBytes - 1)).size(),
              NSConnection::fieldLimitInBytes - 1);
    EXPECT_THROW(wireData(dataOf(NSConnection::fieldLimitInBytes)), NSException);
}

TEST(WireValues, WhatNoEncoderMakesIsRefused) {
    capnp::MallocMessageBuilder message;
    const auto unitsOf = [&](std::size_t length) {
        auto text = message.getOrphanage().newOrphan<capnp::Data>(static_cast<unsigned>(length));
        const NSString decoded = decodeString(text.getReader());
        return decoded.length();
    };
    EXPECT_EQ(unitsOf(0), 0U);
    EXPECT_EQ(unitsOf(4), 2U);
    EXPECT_THROW(unitsOf(1), NSException);
    EXPECT_THROW(unitsOf(5), NSException);

    auto dictionary = message.initRoot<wire::Dictionary>();
    auto value = dictionary.initEntries(1)[0].initValue();
    for (std::size_t level = 0; level <= Value::maximumDepth; ++level)
        value = value.initArray(1)[0];
    EXPECT_THROW(decodeDictionary(dictionary.asReader()), NSException);
    auto url = dictionary.initEntries(1)[0].initValue().initUrl();
    for (std::size_t level = 0; level <= Value::maximumDepth; ++level)
        url = url.initBase();
    EXPECT_THROW(decodeDictionary(dictionary.asReader()), NSException);

    auto twice = dictionary.initEntries(2);
    for (unsigned index = 0; index < 2; ++index) {
        twice[index].initKey().setBoolean(true);
        twice[index].initValue().setInt32(static_cast<std::int32_t>(index));
    }
    const NSDictionary last = decodeDictionary(dictionary.asReader());
    EXPECT_EQ(last.count(), 1U);
    EXPECT_EQ(last.objectForKey(NSNumber::numberWithBool(true)), Value(NSNumber::numberWithInt(1)));
}

TEST(WireValues, RunsThatDoNotFitTheTextAreRefused) {
    struct Row {
        const char* name;
        std::vector<std::pair<unsigned, unsigned>> runs;
        bool isRead;
    };
    const Row rows[] = {
        {"two that fit", {{1, 0}, {3, 1}}, true},
        {"too short", {{3, 0}}, false},
        {"too long", {{2, 0}, {3, 0}}, false},
        {"without length", {{4, 0}, {0, 0}}, false},
        {"a sum that overflows", {{1, 0}, {0xFFFFFFFFu, 0}, {4, 0}}, false},
        {"attributes that are missing", {{4, 2}}, false},
        {"none", {}, false},
    };
    for (const Row& row : rows) {
        capnp::MallocMessageBuilder message;
        auto text = message.initRoot<wire::AttributedString>();
        text.setString(wireString(u"text"));
        text.initAttributes(2)[1].setIsBold(true);
        auto runs = text.initRuns(static_cast<unsigned>(row.runs.size()));
        for (unsigned index = 0; index < runs.size(); ++index) {
            runs[index].setLength(row.runs[index].first);
            runs[index].setAttributes(row.runs[index].second);
        }
        if (row.isRead)
            EXPECT_EQ(decodeAttributedString(text.asReader()).runs().size(), 2U) << row.name;
        else
            EXPECT_THROW(decodeAttributedString(text.asReader()), NSException) << row.name;
    }
    capnp::MallocMessageBuilder message;
    auto text = message.initRoot<wire::AttributedString>();
    text.initAttributes(1)[0].setUnderlineStyle(3);
    EXPECT_THROW(decodeAttributedString(text.asReader()), NSException);
}

} // namespace
} // namespace kelvo
