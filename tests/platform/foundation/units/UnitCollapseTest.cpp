#include "platform/foundation/units/UnitCollapse.h"

#include <gtest/gtest.h>

#include <array>
#include <random>

using namespace kelvo;

namespace {

// Few kinds of units, so that stretches, single members, "&" and blocks with and without ASCII all occur at
// every place around the edges of blocks.
TEST(UnitCollapse, VectorFormMatchesPlainLoop) {
    std::array<std::uint8_t, 8192> white{};
    for (const char16_t unit : {u' ', u'\n', u'\t', u'\0', char16_t(0xA0), char16_t(0x2028)})
        white[unit >> 3] |= static_cast<std::uint8_t>(1u << (unit & 7));
    const std::u16string alphabets[] = {u"abc ", u"ab \n\t", u"ab\u0436\u4E00 \u00A0\u2028", u"abcdefghijk&"};
    std::mt19937 random(7);
    for (int round = 0; round < 8000; ++round) {
        const std::u16string& alphabet = alphabets[round % 4];
        const std::size_t count = random() % 80, readable = count + random() % 20;
        std::u16string text(readable, u'\0');
        for (char16_t& unit : text)
            unit = alphabet[random() % alphabet.size()];
        const bool stops = random() % 2;
        std::u16string expected(count, u'\0');
        char16_t* end = unitCollapsePlain::collapse(text.data(), count, expected.data(), white.data(), stops);
        std::u16string apart(count + unitCollapseSlack, u'\0');
        char16_t* apartEnd = collapseUnits(text.data(), count, readable, apart.data(), white.data(), stops);
        ASSERT_EQ(end == nullptr, apartEnd == nullptr);
        const std::size_t gap = random() % 4;
        std::u16string inPlace = std::u16string(gap, u'#') + text;
        const std::u16string rest = inPlace.substr(gap + count);
        char16_t* inPlaceEnd =
            collapseUnits(inPlace.data() + gap, count, readable, inPlace.data(), white.data(), stops);
        ASSERT_EQ(end == nullptr, inPlaceEnd == nullptr);
        ASSERT_EQ(inPlace.substr(gap + count), rest);
        if (!end)
            continue;
        expected.resize(static_cast<std::size_t>(end - expected.data()));
        apart.resize(static_cast<std::size_t>(apartEnd - apart.data()));
        inPlace.resize(static_cast<std::size_t>(inPlaceEnd - inPlace.data()));
        ASSERT_EQ(apart, expected);
        ASSERT_EQ(inPlace, expected);
    }
}

} // namespace
