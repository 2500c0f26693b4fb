#include "platform/foundation/encodings/NSCharacterSet.h"

#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <functional>

namespace kelvo {
namespace {

struct NamedSet {
    const char* name;
    const NSCharacterSet& (*set)();
    std::function<bool(UChar32)> contains;
};

TEST(CharacterSet, EveryUnitAgreesWithItsProperties) {
    const auto category = [](std::uint32_t mask) {
        return [mask](UChar32 unit) { return (U_GET_GC_MASK(unit) & mask) != 0; };
    };
    const NamedSet sets[] = {
        {"white and newline", NSCharacterSet::whitespaceAndNewlineCharacterSet,
         [](UChar32 unit) { return u_hasBinaryProperty(unit, UCHAR_WHITE_SPACE) != 0; }},
        {"white", NSCharacterSet::whitespaceCharacterSet,
         [](UChar32 unit) { return unit == 9 || (u_charType(unit) == U_SPACE_SEPARATOR && unit != 0xA0); }},
        {"upper", NSCharacterSet::uppercaseLetterCharacterSet, category(U_GC_LU_MASK)},
        {"lower", NSCharacterSet::lowercaseLetterCharacterSet, category(U_GC_LL_MASK)},
        {"digit", NSCharacterSet::decimalDigitCharacterSet, category(U_GC_ND_MASK)},
        {"alphanumeric", NSCharacterSet::alphanumericCharacterSet,
         category(U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK)},
        {"letter", NSCharacterSet::letterCharacterSet, category(U_GC_L_MASK)},
    };
    for (const NamedSet& row : sets) {
        SCOPED_TRACE(row.name);
        const NSData bitmap = row.set().bitmapRepresentation();
        ASSERT_EQ(bitmap.length(), 8192u);
        for (std::uint32_t unit = 0; unit <= 0xFFFF; ++unit) {
            const bool expected = row.contains(static_cast<UChar32>(unit));
            ASSERT_EQ(row.set().characterIsMember(static_cast<char16_t>(unit)), expected) << unit;
            ASSERT_EQ((bitmap.bytes()[unit / 8] & (1 << unit % 8)) != 0, expected) << unit;
        }
        EXPECT_TRUE(row.set().bitmapRepresentation().isIdenticalTo(bitmap));
    }
}

} // namespace
} // namespace kelvo
