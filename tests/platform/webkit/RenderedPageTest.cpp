#include "platform/webkit/RenderedPage.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

std::optional<RenderedPage> read(const std::vector<std::string>& fields) {
    std::string bytes;
    for (const std::string& field : fields)
        bytes += (&field == &fields.front() ? std::string() : std::string(1, '\0')) + field;
    return renderedPageWithFields(NSData::dataWithBytes(bytes));
}

std::vector<std::string> fieldsOf(const std::string& text) {
    std::vector<std::string> fields(1);
    for (const char letter : text)
        letter == '|' ? void(fields.emplace_back()) : fields.back().push_back(letter);
    return fields;
}

/// One style of each kind, one picture, and a text and the picture in a block.
const std::vector<std::string> page =
    fieldsOf("Title|1|1|1|Georgia, serif|13.33|700|1|rgb(255, 0, 51)|rgba(0, 0, 0, "
             "0)|6|-1|0.5|preserve-breaks|http://h/|-webkit-right|1|1|2|3|4|5|6|7|8|2|1|http://h/"
             "a.gif|alt|20|10||2|0|0|0|text|9|0|0|3");

constexpr std::size_t colorField = 8;
constexpr std::size_t blockField = 33;
constexpr std::size_t textStyleField = 35;
constexpr std::size_t pictureField = 39;

TEST(RenderedPageTest, FieldsAreInTheOrderOfTheWalk) {
    const auto rendered = read(page);
    ASSERT_TRUE(rendered);
    EXPECT_EQ(rendered->title, u"Title");
    const RenderedPage::TextStyle& text = rendered->textStyles.at(0);
    EXPECT_EQ(text.fontFamilies, u"Georgia, serif");
    EXPECT_EQ(text.fontSize, 10) << "points of 13.33 pixels";
    EXPECT_EQ(text.fontWeight, 700);
    EXPECT_TRUE(text.isItalic);
    EXPECT_EQ(text.color, (NSColor{1, 0, 0.2F, 1}));
    EXPECT_EQ(text.backgroundColor, std::nullopt);
    EXPECT_FALSE(text.isUnderlined);
    EXPECT_TRUE(text.isStruckThrough && text.isDoublyUnderlined);
    EXPECT_EQ(text.superscript, -1);
    EXPECT_EQ(text.letterSpacing, 0.38F) << "half a pixel";
    EXPECT_EQ(text.whiteSpace, RenderedPage::WhiteSpace::preserveBreaks);
    EXPECT_EQ(text.link, u"http://h/");
    const RenderedPage::BlockStyle& block = rendered->blockStyles.at(0);
    EXPECT_EQ(block.alignment, RenderedPage::Alignment::right);
    EXPECT_TRUE(block.isRightToLeft && block.keepsMargins);
    const float lengths[] = {block.indentLeft, block.indentRight,  block.textIndent,    block.marginTop,
                             block.paddingTop, block.marginBottom, block.paddingBottom, block.lineHeight};
    for (std::size_t at = 0; at < 8; ++at)
        EXPECT_EQ(lengths[at], static_cast<float>(at + 1) * 0.75F) << at;
    EXPECT_EQ(block.headingLevel, 2);
    EXPECT_EQ(rendered->images.at(0).alternative, u"alt");
    EXPECT_EQ(rendered->images.at(0).size, (NSSize{15, 7.5F}));
    EXPECT_EQ(rendered->events.size(), 4U);
    EXPECT_FALSE(rendered->isCut);
    EXPECT_EQ(rendered->events[1].text, u"text");
}

TEST(RenderedPageTest, WhatDoesNotFitIsNoPage) {
    for (std::size_t count = 0; count < page.size(); ++count) {
        // Between two events a page may end.
        const bool isWhole = count == 32 || count == 34 || count == 37 || count == 40;
        EXPECT_EQ(read({page.begin(), page.begin() + static_cast<std::ptrdiff_t>(count)}).has_value(),
                  isWhole)
            << count;
    }
    const std::tuple<const char*, std::size_t, const char*> rows[] = {
        {"style past the last", textStyleField, "1"},
        {"block past the last", blockField, "1"},
        {"picture past the last", pictureField, "1"},
        {"negative index", textStyleField, "-1"},
        {"unknown event", 32, "12"},
        {"number with more", 6, "700px"},
        {"length that is none", 5, "nan"},
        {"length without end", 5, "1e999"},
        {"negative count", 1, "-1"},
        {"more styles than there are", 1, "4000000"},
        {"more than any page has", 1, "4000001"},
        {"number beyond all", 6, "99999999999"},
    };
    for (const auto& [name, field, value] : rows) {
        std::vector<std::string> broken = page;
        broken[field] = value;
        EXPECT_FALSE(read(broken)) << name;
    }
    EXPECT_FALSE(renderedPageWithFields(nullptr));
}

TEST(RenderedPageTest, Colors) {
    const std::tuple<const char*, std::optional<NSColor>> rows[] = {
        {"rgb(0, 51, 255)", NSColor{0, 0.2F, 1, 1}},
        {"rgba(255, 0, 0, 0.5)", NSColor{1, 0, 0, 0.5F}},
        {"rgba(255, 0, 0, 0)", std::nullopt},
        {"color(srgb 1 0.5 0 / 0.25)", NSColor{1, 0.5F, 0, 0.25F}},
        {"color(srgb 1.5 -1 0)", NSColor{1, 0, 0, 1}},
        {"color(display-p3 1 0 0)", std::nullopt},
        {"rgb(1, 2)", std::nullopt},
        {"rgb(-, 2, 3)", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [written, color] : rows) {
        std::vector<std::string> colored = page;
        colored[colorField] = written;
        const auto rendered = read(colored);
        ASSERT_TRUE(rendered) << written;
        EXPECT_EQ(rendered->textStyles[0].color, color) << written;
    }
}

} // namespace
} // namespace kelvo
