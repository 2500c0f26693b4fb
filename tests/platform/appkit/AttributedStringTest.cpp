#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSException.h"

#include <gtest/gtest.h>

#include <random>

namespace kelvo {
namespace {

using Attributes = NSAttributedString::Attributes;

Attributes sized(float points) {
    NSTextAttributes attributes;
    attributes.font.pointSize = points;
    return std::make_shared<const NSTextAttributes>(attributes);
}

/// One size a unit: the obvious form of attributed text.
struct Reference {
    std::u16string units;
    std::vector<float> sizes;
};

void expectSame(const NSAttributedString& text, const Reference& reference) {
    ASSERT_EQ(text.string(), NSString(std::u16string_view(reference.units)));
    std::size_t end = 0;
    const NSAttributedString::Run* previous = nullptr;
    for (const NSAttributedString::Run& run : text.runs()) {
        ASSERT_EQ(run.range.location, end);
        ASSERT_GT(run.range.length, 0U);
        ASSERT_TRUE(!previous || !(*previous->attributes == *run.attributes));
        end += run.range.length;
        for (std::size_t i = run.range.location; i < end; ++i)
            ASSERT_EQ(reference.sizes[i], run.attributes->font.pointSize) << i;
        previous = &run;
    }
    ASSERT_EQ(end, reference.units.size());
}

TEST(AttributedString, EditsGiveWhatOneAttributeAUnitWouldGive) {
    std::mt19937 random(1);
    const auto below = [&random](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    for (int round = 0; round < 200; ++round) {
        NSMutableAttributedString text;
        Reference reference;
        for (int edit = 0; edit < 30; ++edit) {
            const auto points = static_cast<float>(1 + below(3));
            const std::size_t length = reference.units.size();
            const std::size_t location = below(length + 1);
            const NSRange range{location, below(length - location + 1)};
            switch (below(4)) {
            case 0: {
                const std::u16string units(below(5), static_cast<char16_t>(u'a' + below(26)));
                text.append(units, sized(points));
                reference.units += units;
                reference.sizes.insert(reference.sizes.end(), units.size(), points);
                break;
            }
            case 1:
                text.setAttributes_range(sized(points), range);
                std::fill_n(reference.sizes.begin() + static_cast<std::ptrdiff_t>(range.location),
                            range.length, points);
                break;
            case 2:
                text.append(text.copy().attributedSubstringFromRange(range));
                reference.units += std::u16string(reference.units.substr(range.location, range.length));
                for (std::size_t i = 0; i < range.length; ++i)
                    reference.sizes.push_back(reference.sizes[range.location + i]);
                break;
            default:
                if (below(3) == 0) {
                    text.truncate(location);
                    reference.units.resize(location);
                    reference.sizes.resize(location);
                }
            }
            expectSame(text.copy(), reference);
        }
        const NSAttributedString copy = text.copy();
        for (std::size_t i = 0; i < copy.length(); ++i)
            ASSERT_EQ(copy.runAtIndex(i).attributes->font.pointSize, reference.sizes[i]);
        EXPECT_EQ(copy, std::move(text).copy());
    }
}

TEST(AttributedString, NilEmptyAndRangesPastTheEnd) {
    const NSAttributedString nil;
    const NSAttributedString empty(NSString::string());
    const NSAttributedString some(u"some");
    EXPECT_TRUE(nil.isNil() && NSAttributedString(NSString()).isNil() && nil.string().isNil());
    EXPECT_FALSE(nil == empty);
    EXPECT_TRUE(NSMutableAttributedString(nil).copy() == empty);
    EXPECT_THROW(empty.runAtIndex(0), NSException);
    EXPECT_THROW(some.runAtIndex(4), NSException);
    EXPECT_THROW(some.attributedSubstringFromRange({3, 2}), NSException);
    EXPECT_THROW(NSMutableAttributedString(some).setAttributes_range(sized(1), {5, 0}), NSException);
    EXPECT_TRUE(some.attributedSubstringFromRange({0, 4}).isIdenticalTo(some));
}

TEST(AttributedString, StylesAreComparedByWhatTheySay) {
    const auto styled = [](int column) {
        auto cell = std::make_shared<NSTextTableBlock>();
        cell->table = std::make_shared<const NSTextTable>(NSTextTable());
        cell->startingColumn = column;
        auto style = std::make_shared<NSParagraphStyle>();
        style->textBlocks.push_back(cell);
        style->textLists.push_back(std::make_shared<const NSTextList>());
        NSTextAttributes attributes;
        attributes.paragraphStyle = style;
        return attributes;
    };
    EXPECT_TRUE(styled(0) == styled(0));
    EXPECT_FALSE(styled(0) == styled(1));

    // Two cells of tables that look alike are not one.
    NSMutableAttributedString tables;
    const auto cell = std::make_shared<const NSTextAttributes>(styled(0));
    for (const auto& attributes : {cell, cell, std::make_shared<const NSTextAttributes>(styled(0))})
        tables.append(u"x\n", attributes);
    EXPECT_EQ(tables.runs().size(), 2U);

    NSTextAttributes plain;
    plain.paragraphStyle = std::make_shared<const NSParagraphStyle>();
    EXPECT_TRUE(plain == NSTextAttributes());
}

} // namespace
} // namespace kelvo
