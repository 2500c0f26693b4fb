#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSString.h"

#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace kelvo {
namespace {

TEST(StringTest, NilIsNotEmptyAndBothHaveNoLength) {
    const NSString nil;
    const NSString empty = NSString::string();
    EXPECT_TRUE(nil.isNil());
    EXPECT_FALSE(empty.isNil());
    EXPECT_EQ(nil.length(), 0u);
    EXPECT_EQ(empty.length(), 0u);
    EXPECT_NE(nil, empty);
    EXPECT_EQ(nil, NSString(static_cast<const char16_t*>(nullptr)));
    EXPECT_EQ(empty, u"");
    EXPECT_TRUE(nil.isIdenticalTo(NSString()));
    EXPECT_FALSE(NSString(u"a").isIdenticalTo(NSString(u"a")));
    EXPECT_TRUE(nil.stringByAppendingString(u"x").isNil());
}

TEST(StringTest, SharesStorageAmongCopiesAndWholeSubstrings) {
    const NSString text(std::u16string_view(u"a\0b\xD800", 4));
    const NSString copy = text;
    EXPECT_TRUE(copy.isIdenticalTo(text) && text.substringWithRange({0, 4}).isIdenticalTo(text));
    EXPECT_EQ(text.substringFromIndex(1).characters(), std::u16string_view(u"\0b\xD800", 3));
    EXPECT_EQ(text.substringToIndex(0), u"");
    EXPECT_THROW(text.substringWithRange({3, 2}), NSException);
    EXPECT_THROW(text.substringWithRange({1, SIZE_MAX}), NSException);
    EXPECT_THROW(text.substringFromIndex(5), NSException);
    EXPECT_THROW(text.characterAtIndex(4), NSException);
    NSString moved = copy;
    const NSString taken = std::move(moved);
    EXPECT_TRUE(taken.isIdenticalTo(text));
}

TEST(StringTest, ConvertsUTF8StrictlyOrByRepair) {
    const std::tuple<const char*, std::string, const char16_t*, bool> rows[] = {
        {"ASCII", "abc", u"abc", true},
        {"empty", "", u"", true},
        {"beyond the basic plane", "\xF0\x9F\x98\x80", u"\U0001F600", true},
        {"stray byte", "a\xFFz", u"a\xFFFDz", false},
        {"overlong", "\xC0\x80", u"\xFFFD\xFFFD", false},
        {"long, broken at its end", std::string(300, 'x') + "\xC3", nullptr, false},
    };
    for (const auto& [name, bytes, expected, isWellFormed] : rows) {
        EXPECT_EQ(!NSString::stringWithUTF8String(bytes).isNil(), isWellFormed) << name;
        const NSString repaired = NSString::stringByRepairingUTF8String(bytes);
        EXPECT_TRUE(expected ? repaired == expected : repaired.characters().back() == 0xFFFD) << name;
        EXPECT_TRUE(!isWellFormed || repaired.UTF8String() == bytes) << name;
    }
    EXPECT_EQ(NSString(std::u16string_view(u"\xDC00x\xD800")).UTF8String(), "\xEF\xBF\xBDx\xEF\xBF\xBD");
    EXPECT_EQ(NSString::stringWithLatin1Bytes("\x80\xFF").characters(), std::u16string_view(u"\x80\xFF"));
}

TEST(StringTest, RefusesSizesBeforeAllocatingThem) {
    EXPECT_EQ(checkedSizeInBytes(maximumSizeInBytes / 2, 2), maximumSizeInBytes);
    EXPECT_THROW(checkedSizeInBytes(maximumSizeInBytes / 2 + 1, 2), NSException);
    EXPECT_THROW(checkedSizeInBytes(SIZE_MAX, 2), NSException);
    EXPECT_THROW(NSMutableString::stringWithCapacity(SIZE_MAX / 2), NSException);
    // The lengths alone are looked at.
    const std::u16string_view huge(u"x", maximumSizeInBytes / 2 + 1);
    EXPECT_THROW(NSString{huge}, NSException);
    EXPECT_THROW(NSMutableString::string().appendString(huge), NSException);
    EXPECT_THROW(NSString(u"a").stringByAppendingString(huge), NSException);
    EXPECT_THROW(NSString::stringWithCharactersNoCopy(static_cast<char16_t*>(std::malloc(2)), SIZE_MAX),
                 NSException);
}

TEST(MutableStringTest, EditsInPlaceLikeAPlainString) {
    std::u16string plain;
    NSMutableString text = NSMutableString::string();
    std::uint32_t random = 1;
    const auto next = [&random](std::size_t limit) {
        random = random * 1664525 + 1013904223;
        return static_cast<std::size_t>(random >> 8) % limit;
    };
    for (int turn = 0; turn < 3000; ++turn) {
        const std::size_t location = next(plain.size() + 1);
        const std::size_t length = next(std::min<std::size_t>(plain.size() - location, 9) + 1);
        const std::u16string fresh(next(12), static_cast<char16_t>(u'a' + next(26)));
        text.replaceCharactersInRange_withString({location, length}, fresh);
        plain.replace(location, length, fresh);
        ASSERT_EQ(text.characters(), plain);
    }
    text.appendString(text.characters().substr(1));
    plain += plain.substr(1);
    text.insertString_atIndex(text.characters(), 2);
    plain.insert(2, std::u16string(plain));
    EXPECT_EQ(text.characters(), plain) << "a string may be given parts of itself";
    EXPECT_THROW(text.deleteCharactersInRange({text.length(), 1}), NSException);
    const NSMutableString copy = text;
    text.setString(u"");
    EXPECT_EQ(copy.characters(), plain);
    EXPECT_EQ(NSMutableString(copy).takeString().characters(), plain);
}

TEST(MutableStringTest, ChangingNilDoesNothing) {
    NSMutableString nil;
    nil.appendString(u"x");
    nil.appendCharacter(u'x');
    nil.setLength(5);
    nil.deleteCharactersInRange({3, 4});
    EXPECT_TRUE(nil.isNil() && nil.copy().isNil() && nil.takeString().isNil());
    EXPECT_TRUE(NSMutableString(NSString()).isNil());
    EXPECT_FALSE(NSMutableString::string().takeString().isNil());
}

} // namespace
} // namespace kelvo
