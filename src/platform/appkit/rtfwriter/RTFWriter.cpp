#include "platform/appkit/rtfwriter/RTFWriter.h"

#include "platform/appkit/NSDocumentAttributes.h"
#include "platform/appkit/rtfwriter/RTFTableLayout.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace kelvo {
namespace {

/// Tables in tables; what is deeper stands in the innermost cell.
constexpr std::size_t maximumTableDepth = 32;
/// The width of the text on a page of the usual size, in twips.
constexpr std::int32_t pageWidth = 8640;
/// A marker is a tab, a few characters and a tab.
constexpr std::size_t maximumMarkerLength = 40;
/// More tab stops than a line can use.
constexpr std::size_t maximumTabs = 256;

const NSTextTableBlock* blockAt(const NSParagraphStyle& style, std::size_t depth) {
    return depth < std::min(style.textBlocks.size(), maximumTableDepth) ? style.textBlocks[depth].get()
                                                                        : nullptr;
}

const NSTextTable* tableAt(const NSParagraphStyle& style, std::size_t depth) {
    const NSTextTableBlock* const block = blockAt(style, depth);
    return block ? block->table.get() : nullptr;
}

/// The end of the marker at the start of a list's paragraph, or 0.
std::size_t lengthOfMarker(std::u16string_view units) {
    if (units.empty() || units.front() != u'\t')
        return 0;
    const std::size_t end = units.substr(0, maximumMarkerLength).find_first_of(u"\t\n\xFFFC", 1);
    return end != std::u16string_view::npos && units[end] == u'\t' ? end + 1 : 0;
}

RTFListNumbers::Indents indentsOf(const NSParagraphStyle& style) {
    const std::int32_t head = rtfTwips(style.headIndent);
    return {head, rtfTwips(style.firstLineHeadIndent) - head};
}

void writeTabs(const NSParagraphStyle& style, RTFOutput& output) {
    for (const NSTextTab& tab :
         std::span(style.tabStops).first(std::min(style.tabStops.size(), maximumTabs))) {
        switch (tab.type) {
        case NSTextTabType::left:
            break;
        case NSTextTabType::right:
            output.word("tqr");
            break;
        case NSTextTabType::center:
            output.word("tqc");
            break;
        case NSTextTabType::decimal:
            output.word("tqdec");
            break;
        }
        output.word("tx", rtfTwips(tab.location));
    }
    if (const std::int32_t interval = rtfTwips(style.defaultTabInterval))
        output.word("pardeftab", interval);
}

void writeIfNotZero(std::string_view word, std::int32_t number, RTFOutput& output) {
    if (number != 0)
        output.word(word, number);
}

void writeLineHeights(const NSParagraphStyle& style, RTFOutput& output) {
    const std::int32_t minimum = rtfTwips(style.minimumLineHeight);
    const std::int32_t maximum = rtfTwips(style.maximumLineHeight);
    const std::int32_t multiple = rtfNumber(style.lineHeightMultiple, 240);
    if (multiple > 0) {
        output.word("sl", multiple);
        output.word("slmult", 1);
    } else if (minimum > 0) {
        // A negative height is exact.
        output.word("sl", minimum == maximum ? -minimum : minimum);
        output.word("slmult", 0);
    }
    writeIfNotZero("slminimum", minimum, output);
    writeIfNotZero("slmaximum", maximum, output);
    writeIfNotZero("slleading", rtfTwips(style.lineSpacing), output);
}

void writeAlignment(const NSParagraphStyle& style, RTFOutput& output) {
    switch (style.alignment) {
    case NSTextAlignment::left:
        output.word("ql");
        break;
    case NSTextAlignment::right:
        output.word("qr");
        break;
    case NSTextAlignment::center:
        output.word("qc");
        break;
    case NSTextAlignment::justified:
        output.word("qj");
        break;
    case NSTextAlignment::natural:
        // Most readers know neither the second word nor that such text begins at the right.
        if (style.baseWritingDirection == NSWritingDirection::rightToLeft) {
            output.word("qr");
            output.word("qnatural");
        }
        break;
    }
    switch (style.baseWritingDirection) {
    case NSWritingDirection::leftToRight:
        output.word("ltrpar");
        break;
    case NSWritingDirection::rightToLeft:
        output.word("rtlpar");
        break;
    case NSWritingDirection::natural:
        output.word("pardirnatural");
        break;
    }
}

void writeBorders(const NSParagraphStyle& style, RTFColorNumbers& colors, RTFOutput& output) {
    constexpr std::array<std::string_view, 4> words{"brdrl", "brdrt", "brdrr", "brdrb"};
    for (std::size_t edge = 0; edge < words.size(); ++edge) {
        const NSTextBlockBorder& border = style.borders[edge];
        if (rtfTwips(border.width) <= 0)
            continue;
        output.word(words[edge]);
        output.word("brdrs");
        output.word("brdrw", rtfTwips(border.width));
        if (border.color)
            output.word("brdrcf", colors.numberOfColor(border.color));
        writeIfNotZero("brsp", std::max(rtfTwips(style.borderSpacing[edge]), 0), output);
    }
}

/// Within the quotes of a field's instruction a backslash protects quotes, the curved ones among them, and
/// itself.
std::u16string quotedForField(std::u16string_view units) {
    std::u16string quoted;
    for (const char16_t unit : units) {
        if (unit == u'"' || unit == u'\\' || unit == 0x201C || unit == 0x201D)
            quoted += u'\\';
        quoted += unit;
    }
    return quoted;
}

std::string_view underlineWord(NSUnderlineStyle style) {
    switch (style) {
    case NSUnderlineStyleNone:
        return "ulnone";
    case NSUnderlineStyleThick:
        return "ulth";
    case NSUnderlineStyleDouble:
        return "uldb";
    default:
        return "ul";
    }
}

} // namespace

RTFWriter::RTFWriter(const NSAttributedString& text, NameAttachment nameAttachment)
    : text_(text),
      string_(text_.string()),
      units_(string_.characters()),
      runs_(text_.runs()),
      nameAttachment_(std::move(nameAttachment)) {}

std::string RTFWriter::write(const NSDictionary& documentAttributes) {
    // Most text takes little more than a byte for a unit; pages of the reserve that stay untouched cost
    // nothing.
    body_.reserve(std::min<std::size_t>(units_.size() * 2 + runs_.size() * 64 + 65536, maximumSizeInBytes));
    std::vector<Paragraph> tables;
    Paragraph paragraph;
    bool isThere = takeParagraph(paragraph);
    while (isThere) {
        // A row's definition precedes its text, so a table is gathered whole; everything else is written as
        // it comes.
        for (; isThere && tableAt(*paragraph.style, 0); isThere = takeParagraph(paragraph))
            tables.push_back(paragraph);
        writeParagraphs(tables, 0, pageWidth);
        tables.clear();
        for (; isThere && !tableAt(*paragraph.style, 0); isThere = takeParagraph(paragraph))
            writeParagraph(paragraph, 0, false);
    }
    body_.raw("}");

    RTFOutput head;
    head.raw("{");
    head.word("rtf", 1);
    head.word("ansi");
    head.word("ansicpg", 1252);
    head.word("cocoartf", 2822);
    head.raw("\n");
    const NSNumber* const scaling =
        documentAttributes.objectForKey(NSTextScalingDocumentAttribute).numberIfAny();
    head.word("cocoatextscaling", scaling ? scaling->intValue() : 0);
    head.word("cocoaplatform", 0);
    fonts_.write(head);
    colors_.write(head);
    lists_.write(head);
    writeRTFDocumentAttributes(documentAttributes, head);
    body_.prepend(head);
    if (body_.size() > maximumSizeInBytes)
        throw NSException(NSMallocException, u"The rich text would pass 2147483646 bytes.");
    return body_.takeBytes();
}

bool RTFWriter::takeParagraph(Paragraph& paragraph) {
    if (position_ == units_.size())
        return false;
    while (runs_[run_].range.location + runs_[run_].range.length <= position_)
        ++run_;
    paragraph.start = position_;
    paragraph.run = run_;
    paragraph.style = &runs_[run_].attributes->style();
    const std::size_t end = units_.find(u'\n', position_);
    paragraph.end = position_ = end == std::u16string_view::npos ? units_.size() : end + 1;
    return true;
}

void RTFWriter::writeParagraphs(std::span<const Paragraph> paragraphs, std::size_t depth,
                                std::int32_t width) {
    for (std::size_t first = 0; first < paragraphs.size();) {
        const NSTextTable* const table = tableAt(*paragraphs[first].style, depth);
        std::size_t end = first + 1;
        if (table) {
            while (end < paragraphs.size() && tableAt(*paragraphs[end].style, depth) == table)
                ++end;
            writeTable(paragraphs.subspan(first, end - first), depth, width);
        } else {
            writeParagraph(paragraphs[first], depth, depth > 0 && end == paragraphs.size());
        }
        first = end;
    }
    // A cell ends in a paragraph of its own, not in that of a table within.
    if (depth > 0 && tableAt(*paragraphs.back().style, depth))
        endCell(depth);
}

void RTFWriter::writeTable(std::span<const Paragraph> paragraphs, std::size_t depth, std::int32_t width) {
    std::vector<const NSTextTableBlock*> blocks;
    std::vector<std::size_t> starts;
    for (std::size_t index = 0; index < paragraphs.size(); ++index) {
        const NSTextTableBlock* const block = blockAt(*paragraphs[index].style, depth);
        if (blocks.empty() || block != blocks.back()) {
            blocks.push_back(block);
            starts.push_back(index);
        }
    }
    starts.push_back(paragraphs.size());

    const RTFTableLayout layout(blocks, width);
    for (std::size_t row = 0; row < layout.rows().size(); ++row) {
        if (depth == 0)
            layout.writeDefinition(row, colors_, body_);
        const RTFTableLayout::Row& places = layout.rows()[row];
        for (std::size_t place = 0; place < places.size(); ++place) {
            if (places[place].cell < 0) {
                endCell(depth + 1);
                continue;
            }
            const auto cell = static_cast<std::size_t>(places[place].cell);
            writeParagraphs(paragraphs.subspan(starts[cell], starts[cell + 1] - starts[cell]), depth + 1,
                            layout.widthInside(row, place));
        }
        if (depth == 0) {
            body_.word("row");
            body_.raw("\n");
        } else {
            body_.raw("{\\*");
            body_.word("nesttableprops");
            layout.writeDefinition(row, colors_, body_);
            body_.word("nestrow");
            body_.raw("}{");
            body_.word("nonesttables");
            body_.word("par");
            body_.raw("}\n");
        }
        forgetParagraph();
    }
}

void RTFWriter::endCell(std::size_t depth) {
    stateParagraph(NSParagraphStyle::defaultParagraphStyle(), depth, {});
    body_.word(depth > 1 ? "nestcell" : "cell");
    body_.raw("\n");
}

void RTFWriter::writeParagraph(const Paragraph& paragraph, std::size_t depth, bool endsCell) {
    const RTFListNumbers::Place place =
        lists_.placeOfLists(paragraph.style->textLists, indentsOf(*paragraph.style));
    stateParagraph(*paragraph.style, depth, place);
    std::size_t run = paragraph.run;
    std::size_t start = paragraph.start;
    if (place.list != 0) {
        const std::size_t length = lengthOfMarker(units_.substr(start, paragraph.end - start));
        if (length != 0) {
            const CharacterFormat before = format_;
            body_.raw("{");
            body_.word("listtext");
            writeUnits(start, start + length, run);
            closeLink();
            body_.raw("}");
            restore(before);
            start += length;
        }
    }
    const bool hasEnd = units_[paragraph.end - 1] == u'\n';
    writeUnits(start, paragraph.end - (endsCell && hasEnd ? 1 : 0), run);
    closeLink();
    if (endsCell) {
        if (hasEnd) {
            while (runs_[run].range.location + runs_[run].range.length < paragraph.end)
                ++run;
            stateCharacters(*runs_[run].attributes);
        }
        const bool isGrouped = hasEnd && openGroup(*runs_[run].attributes);
        body_.word(depth > 1 ? "nestcell" : "cell");
        body_.raw(isGrouped ? "}\n" : "\n");
    } else if (depth > 0 && !hasEnd) {
        body_.text(u"\n");
    }
}

void RTFWriter::stateParagraph(const NSParagraphStyle& style, std::size_t depth,
                               RTFListNumbers::Place place) {
    if (&style == statedStyle_ && depth == statedDepth_ && place == statedPlace_)
        return;
    statedStyle_ = &style;
    statedDepth_ = depth;
    statedPlace_ = place;
    scratch_.clear();
    scratch_.word("pard");
    if (depth > 0) {
        scratch_.word("intbl");
        scratch_.word("itap", static_cast<std::int32_t>(depth));
    }
    // First: for some readers the list sets indents, which the paragraph then sets anew.
    if (place.list != 0) {
        scratch_.word("ls", place.list);
        scratch_.word("ilvl", place.level);
    }
    writeTabs(style, scratch_);
    const RTFListNumbers::Indents indents = indentsOf(style);
    writeIfNotZero("li", indents.head, scratch_);
    writeIfNotZero("fi", indents.firstLine, scratch_);
    writeIfNotZero("ri", -rtfTwips(style.tailIndent), scratch_);
    writeLineHeights(style, scratch_);
    writeIfNotZero("sb", rtfTwips(style.paragraphSpacingBefore), scratch_);
    writeIfNotZero("sa", rtfTwips(style.paragraphSpacing), scratch_);
    writeAlignment(style, scratch_);
    writeBorders(style, colors_, scratch_);
    if (style.headerLevel > 0)
        scratch_.word("outlinelevel", std::min(style.headerLevel, 9) - 1);
    if (scratch_.bytes() == paragraphWords_.bytes())
        return;
    std::swap(paragraphWords_, scratch_);
    body_.words(paragraphWords_);
}

/// The words of paragraphs do not hold past the end of a row.
void RTFWriter::forgetParagraph() {
    statedStyle_ = nullptr;
    paragraphWords_.clear();
}

void RTFWriter::writeUnits(std::size_t start, std::size_t end, std::size_t& run) {
    while (start < end) {
        while (runs_[run].range.location + runs_[run].range.length <= start)
            ++run;
        const std::size_t runEnd = std::min(runs_[run].range.location + runs_[run].range.length, end);
        writeRun(*runs_[run].attributes, units_.substr(start, runEnd - start));
        start = runEnd;
    }
}

void RTFWriter::writeRun(const NSTextAttributes& attributes, std::u16string_view units) {
    const NSTextAttachment* const attachment =
        attributes.attachment && attributes.attachment->fileWrapper ? attributes.attachment.get() : nullptr;
    std::string name;
    if (attachment && units.find(NSAttachmentCharacter) != std::u16string_view::npos)
        name = nameAttachment_(*attachment);
    // An attachment that is left out leaves no empty links and groups.
    if (attachment && name.empty() &&
        units.find_first_not_of(NSAttachmentCharacter) == std::u16string_view::npos)
        return;
    enterLink(attributes.link);
    stateCharacters(attributes);
    const bool isGrouped = openGroup(attributes);
    if (attachment) {
        for (std::size_t start = 0; start < units.size();) {
            const std::size_t place = std::min(units.find(NSAttachmentCharacter, start), units.size());
            body_.text(units.substr(start, place - start));
            if (place < units.size() && !name.empty())
                writeAttachment(*attachment, name);
            start = place + 1;
        }
    } else {
        body_.text(units);
    }
    if (isGrouped)
        body_.raw("}");
}

void RTFWriter::writeAttachment(const NSTextAttachment& attachment, const std::string& name) {
    body_.raw("{{");
    body_.word("NeXTGraphic");
    body_.fileName(name);
    body_.raw(" ");
    if (attachment.displaySize.width != 0 || attachment.displaySize.height != 0) {
        body_.word("width", rtfTwips(attachment.displaySize.width));
        body_.word("height", rtfTwips(attachment.displaySize.height));
    }
    body_.raw("}\\'ac}");
}

void RTFWriter::enterLink(const NSString& link) {
    if (link == link_)
        return;
    closeLink();
    if (link.isNil())
        return;
    link_ = link;
    formatBeforeLink_ = format_;
    body_.raw("{");
    body_.word("field");
    body_.raw("{\\*");
    body_.word("fldinst");
    body_.raw("{HYPERLINK \"");
    body_.string(quotedForField(link));
    body_.raw("\"}}{");
    body_.word("fldrslt");
}

void RTFWriter::closeLink() {
    if (link_.isNil())
        return;
    link_ = nullptr;
    body_.raw("}}");
    restore(formatBeforeLink_);
}

/// A group has ended, and with it the formats that were stated in it.
void RTFWriter::restore(const CharacterFormat& format) {
    format_ = format;
    statedAttributes_ = nullptr;
}

RTFWriter::CharacterFormat RTFWriter::formatOf(const NSTextAttributes& attributes) {
    CharacterFormat format;
    const NSFont& font = attributes.font;
    format.font = fonts_.numberOfFont(font);
    format.size = std::max(rtfNumber(std::isnan(font.pointSize) ? 12 : font.pointSize, 1000, 4'000'000), 500);
    format.isBold = font.isBold;
    format.isItalic = font.isItalic;
    format.foreground = colors_.numberOfColor(attributes.foregroundColor);
    format.underline = attributes.underlineStyle;
    return format;
}

void RTFWriter::stateCharacters(const NSTextAttributes& attributes) {
    if (&attributes == statedAttributes_)
        return;
    statedAttributes_ = &attributes;
    const CharacterFormat old = std::exchange(format_, formatOf(attributes));
    const auto stateSwitch = [this](std::string_view word, bool isOn) {
        isOn ? body_.word(word) : body_.word(word, 0);
    };
    if (format_.font != old.font)
        body_.word("f", format_.font);
    if (format_.isBold != old.isBold)
        stateSwitch("b", format_.isBold);
    if (format_.isItalic != old.isItalic)
        stateSwitch("i", format_.isItalic);
    if (format_.size != old.size) {
        body_.word("fs", rtfNumber(format_.size, 1.0 / 500));
        if (format_.size % 500 != 0)
            body_.word("fsmilli", format_.size);
    }
    if (format_.underline != old.underline)
        body_.word(underlineWord(format_.underline));
    if (format_.foreground != old.foreground)
        body_.word("cf", format_.foreground);
}

bool RTFWriter::openGroup(const NSTextAttributes& attributes) {
    const std::int32_t superscript = std::clamp(attributes.superscript, -100, 100);
    const std::int32_t baseline = rtfNumber(attributes.baselineOffset, 2);
    const std::int32_t kern = rtfTwips(attributes.kern);
    const std::int32_t background = colors_.numberOfColor(attributes.backgroundColor);
    const NSUnderlineStyle strikethrough = attributes.strikethroughStyle;
    if (superscript == 0 && baseline == 0 && kern == 0 && background == 0 &&
        strikethrough == NSUnderlineStyleNone)
        return false;
    body_.raw("{");
    if (strikethrough == NSUnderlineStyleDouble)
        body_.word("striked", 1);
    else if (strikethrough != NSUnderlineStyleNone)
        body_.word("strike");
    if (superscript != 0)
        body_.word(superscript > 0 ? "super" : "sub", std::abs(superscript));
    if (baseline != 0)
        body_.word(baseline < 0 ? "dn" : "up", std::abs(baseline));
    if (kern != 0) {
        body_.word("expnd", rtfNumber(kern, 1.0 / 5));
        body_.word("expndtw", kern);
    }
    if (background != 0) {
        // The platform knows the one, most others the other.
        body_.word("cb", background);
        body_.word("chcbpat", background);
    }
    return true;
}

} // namespace kelvo
