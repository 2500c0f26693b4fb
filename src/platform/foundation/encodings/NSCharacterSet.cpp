#include "platform/foundation/encodings/NSCharacterSet.h"

#include <unicode/uchar.h>

#include <array>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

enum SetIndex : std::size_t {
    WhitespaceAndNewline,
    Whitespace,
    UppercaseLetter,
    LowercaseLetter,
    DecimalDigit,
    Alphanumeric,
    Letter,
    SetCount
};

constexpr std::size_t bitmapSizeInBytes = 8192;

using Bitmaps = std::array<std::vector<std::uint8_t>, SetCount>;

void addRange(std::vector<std::uint8_t>& bitmap, std::uint32_t first, std::uint32_t limit) {
    for (; first < limit && (first & 7) != 0; ++first)
        bitmap[first >> 3] |= static_cast<std::uint8_t>(1u << (first & 7));
    for (; first + 8 <= limit; first += 8)
        bitmap[first >> 3] = 0xFF;
    for (; first < limit; ++first)
        bitmap[first >> 3] |= static_cast<std::uint8_t>(1u << (first & 7));
}

// One walk over the ranges of equal general category fills every bitmap; asking for each unit and each set
// would take some twenty times as long.
UBool addCategoryRange(const void* context, UChar32 first, UChar32 limit, UCharCategory category) {
    auto& bitmaps = *static_cast<Bitmaps*>(const_cast<void*>(context));
    if (first > 0xFFFF)
        return false;
    const auto begin = static_cast<std::uint32_t>(first);
    const auto end = static_cast<std::uint32_t>(limit > 0x10000 ? 0x10000 : limit);
    const std::uint32_t mask = U_MASK(category);
    const auto addWhen = [&](std::uint32_t categories, SetIndex set) {
        if (mask & categories)
            addRange(bitmaps[set], begin, end);
    };
    addWhen(U_GC_LU_MASK, UppercaseLetter);
    addWhen(U_GC_LL_MASK, LowercaseLetter);
    addWhen(U_GC_ND_MASK, DecimalDigit);
    addWhen(U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK, Alphanumeric);
    addWhen(U_GC_L_MASK, Letter);
    addWhen(U_GC_ZS_MASK, Whitespace);
    // White_Space has members in these categories only, and by no means all controls are among them.
    if (mask & (U_GC_Z_MASK | U_GC_CC_MASK))
        for (std::uint32_t unit = begin; unit < end; ++unit)
            if (u_isUWhiteSpace(static_cast<UChar32>(unit)))
                addRange(bitmaps[WhitespaceAndNewline], unit, unit + 1);
    return true;
}

Bitmaps makeBitmaps() {
    Bitmaps bitmaps;
    bitmaps.fill(std::vector<std::uint8_t>(bitmapSizeInBytes));
    u_enumCharTypes(addCategoryRange, &bitmaps);
    auto& whitespace = bitmaps[Whitespace];
    addRange(whitespace, 0x0009, 0x000A);
    whitespace[0x00A0 >> 3] &= static_cast<std::uint8_t>(~(1u << (0x00A0 & 7)));
    return bitmaps;
}

NSData bitmapOfSet(SetIndex set) {
    static Bitmaps bitmaps = makeBitmaps();
    return NSData::dataWithBytesNoCopy(std::move(bitmaps[set]));
}

} // namespace

const NSCharacterSet& NSCharacterSet::whitespaceAndNewlineCharacterSet() {
    static const NSCharacterSet set(bitmapOfSet(WhitespaceAndNewline));
    return set;
}

const NSCharacterSet& NSCharacterSet::whitespaceCharacterSet() {
    static const NSCharacterSet set(bitmapOfSet(Whitespace));
    return set;
}

const NSCharacterSet& NSCharacterSet::uppercaseLetterCharacterSet() {
    static const NSCharacterSet set(bitmapOfSet(UppercaseLetter));
    return set;
}

const NSCharacterSet& NSCharacterSet::lowercaseLetterCharacterSet() {
    static const NSCharacterSet set(bitmapOfSet(LowercaseLetter));
    return set;
}

const NSCharacterSet& NSCharacterSet::decimalDigitCharacterSet() {
    static const NSCharacterSet set(bitmapOfSet(DecimalDigit));
    return set;
}

const NSCharacterSet& NSCharacterSet::alphanumericCharacterSet() {
    static const NSCharacterSet set(bitmapOfSet(Alphanumeric));
    return set;
}

const NSCharacterSet& NSCharacterSet::letterCharacterSet() {
    static const NSCharacterSet set(bitmapOfSet(Letter));
    return set;
}

} // namespace kelvo
