#include "text/UnicharCompare.h"

#include "text/FoldingTables.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

using Bytes = std::string;
using Units = std::u16string;

template <class Text>
int unitAt(const Text& text, std::size_t index, bool fold) {
    std::uint16_t unit;
    if constexpr (std::is_same_v<Text, Bytes>)
        unit = static_cast<std::uint16_t>(static_cast<std::int16_t>(static_cast<signed char>(text[index])));
    else
        unit = text[index];
    return fold ? static_cast<int>(toUpper(unit)) : unit;
}

template <class First, class Second>
int expected(const First& first, const Second& second, bool fold) {
    for (std::size_t index = 0; index < first.size() && index < second.size(); ++index)
        if (const int difference = unitAt(first, index, fold) - unitAt(second, index, fold))
            return difference;
    return static_cast<int>(first.size()) - static_cast<int>(second.size());
}

void expectAllSix(const Units& a, const Units& b, const Bytes& c, const Bytes& d) {
    ASSERT_EQ(fastCompareUnichars(a.data(), a.size(), b.data(), b.size()), expected(a, b, false));
    ASSERT_EQ(fastCompareUnicharsWithChars(a.data(), a.size(), c.data(), c.size()), expected(a, c, false));
    ASSERT_EQ(fastCompareChars(c.data(), c.size(), d.data(), d.size()), expected(c, d, false));
    ASSERT_EQ(fastCaseInsensitiveCompareUnichars(a.data(), a.size(), b.data(), b.size()),
              expected(a, b, true));
    ASSERT_EQ(fastCaseInsensitiveCompareUnicharsWithChars(a.data(), a.size(), c.data(), c.size()),
              expected(a, c, true));
    ASSERT_EQ(fastCaseInsensitiveCompareChars(c.data(), c.size(), d.data(), d.size()), expected(c, d, true));
}

TEST(UnicharCompareTest, namedCases) {
    const std::tuple<const char*, Bytes, Bytes, int, int> rows[] = {
        {"both empty", "", "", 0, 0},
        {"between the cases", "_", "a", '_' - 'a', '_' - 'A'},
        {"high byte is widened as signed", "\x80", "a", 0xFF80 - 'a', 0xFF80 - 'A'},
    };
    for (const auto& [name, first, second, compare, noCase] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(fastCompareChars(first.data(), first.size(), second.data(), second.size()), compare);
        EXPECT_EQ(fastCaseInsensitiveCompareChars(first.data(), first.size(), second.data(), second.size()),
                  noCase);
    }
    const Units high = u"\x00E9", widened = u"\xFFE9";
    EXPECT_EQ(fastCompareUnicharsWithChars(high.data(), 1, "\xE9", 1), 0xE9 - 0xFFE9);
    EXPECT_EQ(fastCompareUnicharsWithChars(widened.data(), 1, "\xE9", 1), 0);
    EXPECT_EQ(fastCaseInsensitiveCompareUnichars(u"\u017F\u00E9", 2, u"S\u00C9", 2), 0);
    EXPECT_EQ(fastCaseInsensitiveCompareUnichars(u"\u00DF", 1, u"SS", 2), 0xDF - 'S');
    EXPECT_EQ(fastCompareUnichars(nullptr, 0, u"\xD800", 1), -1);
    EXPECT_EQ(fastCompareUnichars(u"\xD800", 1, u"\xE000", 1), 0xD800 - 0xE000);
}

TEST(UnicharCompareTest, randomStrings) {
    std::mt19937 random(3);
    const Units alphabet = u"aAbB\u017FsS\u00E9\u00C9\uFF80";
    for (std::size_t count = 0; count <= 300; ++count)
        for (int round = 0; round < 4; ++round) {
            Units a, b;
            Bytes c, d;
            for (std::size_t index = 0; index < count; ++index) {
                const char16_t unit = alphabet[random() % alphabet.size()];
                a += unit;
                b += round % 2 ? static_cast<char16_t>(toUpper(unit)) : unit;
                c += static_cast<char>(round == 3 ? random() % 256 : unit & 0x7F);
                d += round % 2 ? c.back() : static_cast<char>(toUpper(static_cast<unsigned char>(c.back())));
            }
            if (count && round) {
                b[random() % count] = u'B';
                d[random() % count] = static_cast<char>(random());
                b.resize(count - random() % 2);
            }
            SCOPED_TRACE(count);
            expectAllSix(a, b, c, d);
            expectAllSix(Units(c.begin(), c.end()), a, c, c);
        }
}

} // namespace
} // namespace kelvo
