#include "platform/foundation/units/UnitScan.h"
#include "platform/foundation/units/Vectors.h"

#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <random>

namespace kelvo {
namespace {

/// Each test with each kind of vector that this machine has.
class UnitScanTest : public testing::TestWithParam<std::int64_t> {
protected:
    void SetUp() override { hwy::GetChosenTarget().Update(GetParam()); }
    void TearDown() override { hwy::GetChosenTarget().DeInit(); }
};
std::vector<std::int64_t> kindsOfVectors() {
    std::vector<std::int64_t> kinds;
    for (std::uint64_t left = hwy::SupportedTargets() & HWY_TARGETS; left != 0; left &= left - 1)
        kinds.push_back(static_cast<std::int64_t>(left & (~left + 1)));
    return kinds;
}
INSTANTIATE_TEST_SUITE_P(Vectors, UnitScanTest, testing::ValuesIn(kindsOfVectors()),
                         [](const auto& row) { return hwy::TargetName(row.param); });

constexpr std::size_t longestText = 300;

// Every text ends where its block of memory ends, so that a sanitizer sees a read past it, and begins at each
// offset within a vector in turn.
class ExactText {
public:
    ExactText(std::size_t count, std::size_t offset, char16_t filling)
        : storage_(std::make_unique<char16_t[]>(offset + count)),
          units_(storage_.get() + offset),
          count_(count) {
        std::fill_n(storage_.get(), offset, u'#');
        std::fill_n(units_, count, filling);
    }
    char16_t& operator[](std::size_t index) { return units_[index]; }
    const char16_t* data() const { return units_; }
    std::size_t size() const { return count_; }

private:
    std::unique_ptr<char16_t[]> storage_;
    char16_t* units_;
    std::size_t count_;
};

std::vector<std::uint8_t> bitmapOf(std::u16string_view members) {
    std::vector<std::uint8_t> bitmap(8192);
    for (const char16_t unit : members)
        bitmap[unit >> 3] |= static_cast<std::uint8_t>(1u << (unit & 7));
    return bitmap;
}

void expectAsPlain(const ExactText& text, const UnitsToFind& wanted, const std::uint8_t* bitmap) {
    const char16_t* units = text.data();
    const std::size_t count = text.size();
    ASSERT_EQ(unitScanVector::firstUnitEqualTo(units, count, wanted),
              unitScanPlain::firstUnitEqualTo(units, count, wanted));
    const char16_t second = count > 0 ? units[count - 1] : u'x';
    ASSERT_EQ(unitScanVector::firstPairOfUnits(units, count, wanted.units[0], second),
              unitScanPlain::firstPairOfUnits(units, count, wanted.units[0], second));
    ASSERT_EQ(unitScanVector::countUnitsEqualTo(units, count, wanted),
              unitScanPlain::countUnitsEqualTo(units, count, wanted));
    ASSERT_EQ(unitScanVector::firstNonAsciiUnit(units, count),
              unitScanPlain::firstNonAsciiUnit(units, count));
    for (const bool member : {true, false})
        ASSERT_EQ(unitScanVector::firstUnitByMembership(units, count, bitmap, member),
                  unitScanPlain::firstUnitByMembership(units, count, bitmap, member));
}

// A single hit at each position of each length, in text that is otherwise all of one kind; the hit is the
// lowest or highest unit of its kind. Filling from inside and from outside the bitmap gives both senses of
// membership a lonely exception.
TEST_P(UnitScanTest, oneHitAnywhere) {
    const auto bitmap = bitmapOf(u"\x007F\x0080\x0400\xD800\xFFFF");
    const char16_t rows[][2] = {{u'a', 0x7F},     {u'a', 0x80},     {0x7F, u'a'},   {0x0401, 0x0400},
                                {0x0400, 0x0401}, {0xFFFF, 0xFF7F}, {u'a', 0xFFFF}, {0x8000, 0xD800},
                                {0x00FF, 0x007F}, {0x0000, 0xFFFF}};
    for (std::size_t count = 0; count <= 130; ++count)
        for (const auto& [filling, hit] : rows) {
            ExactText text(count, count % 32, filling);
            const UnitsToFind wanted[] = {{{hit, hit, hit, hit}, 1},
                                          {{0x1234, hit, 0x1234, 0x1234}, 2},
                                          {{static_cast<char16_t>(hit ^ 0x20), hit, hit, hit}, 2},
                                          {{0x1234, 0x4321, 0x1111, hit}, 4}};
            for (std::size_t position = 0; position <= count; position += 1 + count / 70) {
                if (position < count)
                    text[position] = hit;
                SCOPED_TRACE(count * 1000 + position);
                expectAsPlain(text, wanted[position % 4], bitmap.data());
                if (position < count)
                    text[position] = filling;
            }
        }
}

TEST_P(UnitScanTest, randomTextAtEveryAlignment) {
    std::mt19937 random(20240611);
    const auto bitmap = bitmapOf(u"aeiou \x00E4\x0416\x4E00\xD83D");
    const std::u16string_view alphabets[] = {u"xyzw", u"abcdefghijklmnop \x7F", u"\x0416\x0417 \x0418",
                                             u"\x4E00\x4E01\xD83D\xDE00", u"a\x00E4\xFFFF\x0080"};
    for (std::size_t count = 0; count <= longestText; ++count)
        for (std::size_t offset = 0; offset < 32; offset += 1 + count % 3)
            for (const std::u16string_view alphabet : alphabets) {
                ExactText text(count, offset, u' '), twin(count, (offset * 7) % 32, u' ');
                for (std::size_t index = 0; index < count; ++index)
                    twin[index] = text[index] = alphabet[random() % alphabet.size()];
                const char16_t a = alphabet[random() % alphabet.size()], b = alphabet[0];
                const UnitsToFind wanted =
                    random() % 2 ? UnitsToFind{{a, a, a, a}, 1} : UnitsToFind{{a, b, a, a}, 2};
                SCOPED_TRACE(count * 100 + offset);
                expectAsPlain(text, wanted, bitmap.data());
                for (unsigned change = 0; change < 2; ++change) {
                    const std::size_t difference =
                        unitScanPlain::firstDifference(text.data(), twin.data(), count);
                    ASSERT_EQ(unitScanVector::firstDifference(text.data(), twin.data(), count), difference);
                    ASSERT_EQ(firstDifference(text.data(), twin.data(), count), difference);
                    if (count > 0)
                        twin[random() % count] ^= static_cast<char16_t>(1u << random() % 16);
                }
            }
}

TEST_P(UnitScanTest, bytes) {
    for (std::size_t count = 0; count <= 160; ++count) {
        const auto bytes = std::make_unique<std::uint8_t[]>(count);
        std::fill_n(bytes.get(), count, 0x7F);
        ASSERT_EQ(unitScanVector::firstNonAsciiByte(bytes.get(), count), count);
        for (std::size_t position = count; position-- > 0;) {
            bytes[position] = position % 2 ? 0x80 : 0xFF;
            ASSERT_EQ(unitScanVector::firstNonAsciiByte(bytes.get(), count), position);
        }
    }
}

// The lanes of the counting vectors hold 16 bits.
TEST_P(UnitScanTest, countsPastSixteenBits) {
    const std::u16string text(16 * 65536 * 4 + 5, u'a');
    EXPECT_EQ(countUnitsEqualTo(text.data(), text.size(), {{u'a', u'b', u'a', u'a'}, 2}), text.size());
}

} // namespace
} // namespace kelvo
