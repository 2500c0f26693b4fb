#include "platform/foundation/Value.h"

#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>

namespace kelvo {
namespace {

NSNumber integer(std::int64_t value) {
    return NSNumber::numberWithLongLong(value);
}

TEST(NumberTest, ComparesByValueAcrossKinds) {
    constexpr std::int64_t pastExactDoubles = (std::int64_t{1} << 53) + 1;
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const NSNumber ascending[] = {NSNumber::numberWithDouble(std::nan("")),
                                  NSNumber::numberWithDouble(-infinity),
                                  integer(INT64_MIN),
                                  NSNumber::numberWithFloat(-0.5f),
                                  NSNumber::numberWithBool(false),
                                  NSNumber::numberWithDouble(0.1),
                                  NSNumber::numberWithFloat(0.1f),
                                  NSNumber::numberWithBool(true),
                                  NSNumber::numberWithDouble(0x1p53),
                                  integer(pastExactDoubles),
                                  integer(INT64_MAX),
                                  NSNumber::numberWithDouble(0x1p63)};
    for (std::size_t left = 0; left < std::size(ascending); ++left) {
        for (std::size_t right = 0; right < std::size(ascending); ++right)
            EXPECT_EQ(ascending[left].compare(ascending[right]), left <=> right) << left << " " << right;
    }
    EXPECT_EQ(NSNumber::numberWithBool(true), NSNumber::numberWithDouble(1.0));
    EXPECT_EQ(NSNumber::numberWithBool(true).hash(), NSNumber::numberWithDouble(1.0).hash());
}

TEST(NumberTest, ConvertsWithoutLeavingTheRange) {
    EXPECT_EQ(NSNumber::numberWithDouble(1e300).intValue(), INT32_MAX);
    EXPECT_EQ(NSNumber::numberWithDouble(-1e300).longLongValue(), INT64_MIN);
    EXPECT_EQ(NSNumber::numberWithFloat(-1.9f).intValue(), -1);
    EXPECT_EQ(NSNumber::numberWithDouble(std::nan("")).longLongValue(), 0);
    EXPECT_EQ(integer(0x1'0000'0005).intValue(), 5);
    EXPECT_EQ(NSNumber::numberWithUnsignedInt(UINT32_MAX).longLongValue(), 4294967295);
    EXPECT_EQ(NSNumber::numberWithFloat(0.1f).stringValue(), u"0.1");
    EXPECT_EQ(NSNumber::numberWithDouble(static_cast<double>(0.1f)).stringValue(), u"0.10000000149011612");
    EXPECT_EQ(integer(INT64_MIN).stringValue(), u"-9223372036854775808");
}

TEST(DateTest, DescribesInWholeSeconds) {
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(0.9).description(),
              u"2001-01-01 00:00:00 +0000");
    EXPECT_EQ(NSDate::dateWithTimeIntervalSince1970(-0.1).description(), u"1969-12-31 23:59:59 +0000");
    EXPECT_EQ(NSDate::dateWithTimeIntervalSinceReferenceDate(1e300).description(), u"1e+300");
}

TEST(ArrayTest, CopiesAreIndependentUntilChanged) {
    NSMutableArray first = NSMutableArray::array();
    first.addObject(u"a");
    first.addObject(integer(1));
    const NSArray snapshot = first;
    NSMutableArray second = first;
    second.replaceObjectAtIndex_withObject(0, u"b");
    first.insertObject_atIndex(NSNull(), 2);
    first.removeObjectAtIndex(0);
    EXPECT_EQ(snapshot, NSArray::arrayWithObjects({u"a", integer(1)}));
    EXPECT_EQ(second.copy(), NSArray::arrayWithObjects({u"b", NSNumber::numberWithBool(true)}));
    EXPECT_EQ(first.copy(), NSArray::arrayWithObjects({integer(1), NSNull()}));
    EXPECT_EQ(snapshot.indexOfObject(NSNumber::numberWithDouble(1)), 1u);
    EXPECT_EQ(snapshot.indexOfObject(u"z"), NSNotFound);
    EXPECT_EQ(NSArray::arrayWithObjects({u"a", NSString(), u"b"}).count(), 1u)
        << "the first nil ends the list";
}

TEST(ArrayTest, RefusesNilAndPlacesOutside) {
    NSMutableArray array = NSMutableArray::array();
    EXPECT_THROW(array.addObject(nullptr), NSException);
    EXPECT_THROW(array.insertObject_atIndex(u"x", 1), NSException);
    EXPECT_THROW(array.removeObjectAtIndex(0), NSException);
    EXPECT_THROW(array.copy().objectAtIndex(0), NSException);
    NSMutableArray nil;
    nil.addObject(u"x");
    nil.removeObjectAtIndex(7);
    EXPECT_TRUE(nil.isNil());
    EXPECT_NE(nil, NSMutableArray::array());
}

TEST(DictionaryTest, KeepsOrderThroughGrowthAndRemoval) {
    NSMutableDictionary dictionary = NSMutableDictionary::dictionary();
    std::vector<std::pair<int, int>> reference;
    for (int turn = 0; turn < 400; ++turn) {
        const int key = turn * 7 % 60;
        dictionary.setObject_forKey(integer(turn), integer(key));
        const auto place = std::ranges::find(reference, key, &std::pair<int, int>::first);
        if (place == reference.end())
            reference.emplace_back(key, turn);
        else
            place->second = turn;
        if (turn % 3 == 0) {
            const int gone = turn * 5 % 60;
            dictionary.removeObjectForKey(NSNumber::numberWithDouble(gone));
            std::erase_if(reference, [gone](const auto& entry) { return entry.first == gone; });
        }
        std::vector<std::pair<int, int>> seen;
        for (const auto& [held, object] : dictionary)
            seen.emplace_back(held.numberIfAny()->intValue(), object.numberIfAny()->intValue());
        ASSERT_EQ(seen, reference);
        for (const auto& [held, object] : reference)
            ASSERT_EQ(dictionary.objectForKey(NSNumber::numberWithInt(held)), Value(integer(object)));
    }
}

TEST(DictionaryTest, FindsByTextAndComparesWithoutOrder) {
    NSMutableDictionary forward = NSMutableDictionary::dictionary();
    NSMutableDictionary backward = NSMutableDictionary::dictionary();
    const auto key = [](int number) {
        return NSString::stringWithUTF8String("key " + std::to_string(number));
    };
    for (int number = 0; number < 40; ++number) {
        forward.setObject_forKey(integer(number), key(number));
        backward.setObject_forKey(integer(39 - number), key(39 - number));
    }
    EXPECT_EQ(forward, backward);
    EXPECT_EQ(Value(forward).hash(), Value(backward).hash());
    EXPECT_EQ(forward.objectForKey(u"key 31"), Value(integer(31)));
    EXPECT_TRUE(forward.objectForKey(u"key 40").isNil());
    const NSDictionary snapshot = forward;
    forward.setObject_forKey(NSNull(), u"key 0");
    EXPECT_EQ(snapshot.objectForKey(u"key 0"), Value(integer(0)));
    EXPECT_NE(forward, backward);
    EXPECT_THROW(forward.setObject_forKey(nullptr, u"k"), NSException);
    EXPECT_EQ(
        NSMutableDictionary::dictionaryWithObjectsAndKeys({{u"1", u"a"}, {NSString(), u"b"}, {u"3", u"c"}})
            .count(),
        1u)
        << "the first nil object ends the list";
}

TEST(ValueTest, NilHandlesAreNilAndIdentityIsSharedStorage) {
    EXPECT_TRUE(Value(NSString()).isNil() && Value(NSArray()).isNil());
    EXPECT_TRUE(Value(std::shared_ptr<NSObject>()).isNil());
    EXPECT_FALSE(Value(NSNull()).isNil());
    EXPECT_TRUE(Value(integer(1)).string().isNil()) << "another kind is answered with nil";
    const NSString text(std::u16string_view(u"text"));
    EXPECT_TRUE(Value(text).isIdenticalTo(text));
    EXPECT_FALSE(Value(text).isIdenticalTo(u"text"));
    EXPECT_EQ(Value(text), Value(u"text"));
    EXPECT_NE(Value(u"1"), Value(integer(1)));
    EXPECT_LE(sizeof(Value), 32u);
    EXPECT_EQ(sizeof(NSString), sizeof(void*));
}

TEST(ObjectTest, BaseKnowsNeitherKeysNorMessages) {
    NSObject object;
    EXPECT_THROW(object.valueForKey(u"k"), NSException);
    EXPECT_THROW(object.setValue_forKey(u"v", u"k"), NSException);
    EXPECT_THROW(object.performSelector_withObject(u"s", nullptr), NSException);
}

} // namespace
} // namespace kelvo
