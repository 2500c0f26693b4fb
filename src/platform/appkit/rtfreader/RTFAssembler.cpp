#include "platform/appkit/rtfreader/RTFAssembler.h"

#include <utility>

namespace kelvo {
namespace {

/// Objects of each kind. No document comes near it; past it, formats are simplified so that the memory stays
/// in bounds.
constexpr std::size_t maximumObjects = 1 << 18;

constexpr std::uint64_t pairOf(std::uint32_t first, std::uint32_t second) {
    return static_cast<std::uint64_t>(first) << 32 | second;
}

/// Whether text could not be read without what is behind it. Attributed text stands on white and has no grounds
/// of paragraphs, so that these come along only where they are needed, as they do from pages.
bool needsGround(const std::optional<NSColor>& color, const NSColor& ground) {
    constexpr float middle = 0.6F;
    const auto luminance = [](const NSColor& rgb) {
        return 0.3F * rgb.red + 0.59F * rgb.green + 0.11F * rgb.blue;
    };
    return color && luminance(*color) > middle && luminance(ground) < middle;
}

} // namespace

NSTextAttributes RTFAssembler::makeAttributes(const RTFCharacterFormat& format) const {
    NSTextAttributes attributes;
    attributes.font = definitions_.fonts.fontOf(format.font);
    attributes.font.pointSize = static_cast<float>(format.size) / 1000;
    attributes.font.isBold = attributes.font.isBold || format.isBold;
    attributes.font.isItalic = attributes.font.isItalic || format.isItalic;
    attributes.foregroundColor = definitions_.colors.colorOf(format.foreground);
    attributes.backgroundColor = definitions_.colors.colorOf(format.background);
    attributes.underlineStyle = format.underline;
    attributes.strikethroughStyle = format.strikethrough;
    attributes.superscript = format.superscript;
    attributes.baselineOffset = static_cast<float>(format.baselineHalfPoints) / 2;
    attributes.kern = pointsFromTwips(format.kernTwips);
    if (format.link >= 0)
        attributes.link = definitions_.links[static_cast<std::size_t>(format.link)];
    if (format.attachment >= 0)
        attributes.attachment = definitions_.attachments[static_cast<std::size_t>(format.attachment)];
    return attributes;
}

RTFAssembler::Style RTFAssembler::makeStyle(std::uint32_t index, RTFCellIndex cell, Spaces spaces) {
    const RTFParagraphFormat& format = definitions_.paragraphFormats[index];
    NSParagraphStyle style = format.paragraphStyle();
    if (!spaces.hasBefore)
        style.paragraphSpacingBefore = 0;
    if (!spaces.hasAfter)
        style.paragraphSpacing = 0;
    if (format.borders)
        for (std::size_t edge = 0; edge < style.borders.size(); ++edge) {
            const RTFBorder& border = (*format.borders)[edge];
            style.borders[edge] = border.border(definitions_.colors);
            style.borderSpacing[edge] = style.borders[edge].width > 0 ? pointsFromTwips(border.space) : 0;
        }
    if (format.list > 0)
        style.textLists = definitions_.lists.listsOf(format.list, format.listLevel);
    else if (format.oldList >= 0)
        style.textLists = {definitions_.oldLists[static_cast<std::size_t>(format.oldList)]};
    style.textBlocks = definitions_.cells.blocksOf(cell);
    return style == NSParagraphStyle::defaultParagraphStyle()
               ? nullptr
               : std::make_shared<const NSParagraphStyle>(std::move(style));
}

bool RTFAssembler::areSpacedByContext(const RTFParagraph& paragraph, const RTFParagraph* neighbour) const {
    const RTFParagraphFormat& format = definitions_.paragraphFormats[paragraph.format];
    return format.isSpacingContextual && neighbour && neighbour->cell == paragraph.cell &&
           definitions_.paragraphFormats[neighbour->format].style == format.style;
}

std::uint32_t RTFAssembler::styleOf(const RTFParagraph& paragraph, Spaces spaces) {
    const std::uint32_t format = styles_.size() < maximumObjects ? paragraph.format : 0;
    // Formats are fewer than these bits could count.
    const std::uint32_t key = format | (spaces.hasBefore ? 0U : std::uint32_t{1} << 30) |
                              (spaces.hasAfter ? 0U : std::uint32_t{1} << 31);
    const auto [entry, isNew] = styleIndices_.try_emplace(
        pairOf(key, static_cast<std::uint32_t>(paragraph.cell)), static_cast<std::uint32_t>(styles_.size()));
    if (isNew)
        styles_.push_back({makeStyle(format, paragraph.cell, spaces),
                           definitions_.colors.colorOf(definitions_.paragraphFormats[format].background)});
    return entry->second;
}

const NSAttributedString::Attributes& RTFAssembler::attributesOf(std::uint32_t format, std::uint32_t style) {
    const bool isSimplified =
        attributes_.size() >= maximumObjects && definitions_.characterFormats[format].attachment < 0;
    auto& attributes = attributes_[pairOf(isSimplified ? 0 : format, style)];
    if (!attributes) {
        NSTextAttributes made =
            isSimplified ? NSTextAttributes() : makeAttributes(definitions_.characterFormats[format]);
        made.paragraphStyle = styles_[style].style;
        const std::optional<NSColor>& ground = styles_[style].ground;
        if (ground && !made.backgroundColor && needsGround(made.foregroundColor, *ground))
            made.backgroundColor = ground;
        attributes = std::make_shared<const NSTextAttributes>(std::move(made));
    }
    return attributes;
}

NSAttributedString RTFAssembler::textOf(const RTFStory& story) {
    NSMutableAttributedString text;
    text.reserve(story.units().size());
    std::size_t unit = 0;
    std::size_t run = 0;
    const std::vector<RTFParagraph>& paragraphs = story.paragraphs();
    for (std::size_t index = 0; index < paragraphs.size(); ++index) {
        const RTFParagraph& paragraph = paragraphs[index];
        if (paragraph.isDropped) {
            unit = paragraph.endUnit;
            run = paragraph.endRun;
            continue;
        }
        const RTFParagraph* previous = index > 0 ? &paragraphs[index - 1] : nullptr;
        const RTFParagraph* next = index + 1 < paragraphs.size() ? &paragraphs[index + 1] : nullptr;
        const std::uint32_t style = styleOf(
            paragraph, {!areSpacedByContext(paragraph, previous), !areSpacedByContext(paragraph, next)});
        for (; run < paragraph.endRun; ++run) {
            const auto [length, format] = story.runs()[run];
            text.append(story.units().substr(unit, length), attributesOf(format, style));
            unit += length;
        }
    }
    return std::move(text).copy();
}

} // namespace kelvo
