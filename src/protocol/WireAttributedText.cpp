#include "protocol/WireAttributedText.h"

#include "platform/foundation/NSException.h"
#include "protocol/WireValues.h"

#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

/// Each set of attributes takes much more than this, and a message ends far below.
constexpr std::size_t mostRuns = 1u << 28;

[[noreturn]] void refuse(const char16_t* reason) {
    throw NSException(NSInvalidArgumentException, reason);
}

void encodeColor(const NSColor& color, wire::Color::Builder builder) {
    builder.setRed(color.red);
    builder.setGreen(color.green);
    builder.setBlue(color.blue);
    builder.setAlpha(color.alpha);
}

NSColor decodeColor(wire::Color::Reader reader) {
    return {reader.getRed(), reader.getGreen(), reader.getBlue(), reader.getAlpha()};
}

/// The enumeration's value, when it has one of that number up to the last.
template <typename Enumeration>
Enumeration checked(int number, Enumeration first, Enumeration last) {
    if (number < static_cast<int>(first) || number > static_cast<int>(last))
        refuse(u"An attribute of an unknown kind was received.");
    return static_cast<Enumeration>(number);
}

NSUnderlineStyle decodeLine(unsigned number) {
    if (number != NSUnderlineStyleNone && number != NSUnderlineStyleSingle &&
        number != NSUnderlineStyleThick && number != NSUnderlineStyleDouble)
        refuse(u"An attribute of an unknown kind was received.");
    return static_cast<NSUnderlineStyle>(number);
}

void encodeStyle(const NSParagraphStyle& style, wire::ParagraphStyle::Builder builder) {
    if (!style.textLists.empty() || !style.textBlocks.empty() || style.borders != decltype(style.borders){})
        refuse(u"Text in lists, tables and borders is not sent as attributed text.");
    builder.setAlignment(static_cast<std::uint8_t>(style.alignment));
    builder.setBaseWritingDirection(static_cast<std::int8_t>(style.baseWritingDirection));
    builder.setFirstLineHeadIndent(style.firstLineHeadIndent);
    builder.setHeadIndent(style.headIndent);
    builder.setTailIndent(style.tailIndent);
    builder.setParagraphSpacingBefore(style.paragraphSpacingBefore);
    builder.setParagraphSpacing(style.paragraphSpacing);
    builder.setLineHeightMultiple(style.lineHeightMultiple);
    builder.setMinimumLineHeight(style.minimumLineHeight);
    builder.setMaximumLineHeight(style.maximumLineHeight);
    builder.setLineSpacing(style.lineSpacing);
    builder.setHeaderLevel(static_cast<std::uint8_t>(style.headerLevel));
    builder.setDefaultTabInterval(style.defaultTabInterval);
    auto tabs = builder.initTabStops(static_cast<unsigned>(style.tabStops.size()));
    for (unsigned index = 0; index < tabs.size(); ++index) {
        tabs[index].setLocation(style.tabStops[index].location);
        tabs[index].setType(static_cast<std::uint8_t>(style.tabStops[index].type));
    }
}

std::shared_ptr<const NSParagraphStyle> decodeStyle(wire::ParagraphStyle::Reader reader) {
    NSParagraphStyle style;
    style.alignment = checked(reader.getAlignment(), NSTextAlignment::left, NSTextAlignment::natural);
    style.baseWritingDirection = checked(reader.getBaseWritingDirection(), NSWritingDirection::natural,
                                         NSWritingDirection::rightToLeft);
    style.firstLineHeadIndent = reader.getFirstLineHeadIndent();
    style.headIndent = reader.getHeadIndent();
    style.tailIndent = reader.getTailIndent();
    style.paragraphSpacingBefore = reader.getParagraphSpacingBefore();
    style.paragraphSpacing = reader.getParagraphSpacing();
    style.lineHeightMultiple = reader.getLineHeightMultiple();
    style.minimumLineHeight = reader.getMinimumLineHeight();
    style.maximumLineHeight = reader.getMaximumLineHeight();
    style.lineSpacing = reader.getLineSpacing();
    style.headerLevel = reader.getHeaderLevel();
    style.defaultTabInterval = reader.getDefaultTabInterval();
    for (const wire::ParagraphStyle::Tab::Reader tab : reader.getTabStops())
        style.tabStops.push_back(
            {tab.getLocation(), checked(tab.getType(), NSTextTabType::left, NSTextTabType::decimal)});
    return std::make_shared<const NSParagraphStyle>(std::move(style));
}

void encodeAttributes(const NSTextAttributes& attributes, wire::TextAttributes::Builder builder) {
    if (attributes.attachment)
        refuse(u"Text with pictures is not sent as attributed text.");
    const NSFont& font = attributes.font;
    builder.setFontFamily(wireString(font.familyName));
    builder.setPointSize(font.pointSize);
    builder.setIsBold(font.isBold);
    builder.setIsItalic(font.isItalic);
    builder.setIsFixedPitch(font.isFixedPitch);
    builder.setUnderlineStyle(attributes.underlineStyle);
    builder.setStrikethroughStyle(attributes.strikethroughStyle);
    builder.setSuperscript(attributes.superscript);
    builder.setBaselineOffset(attributes.baselineOffset);
    builder.setKern(attributes.kern);
    if (attributes.foregroundColor)
        encodeColor(*attributes.foregroundColor, builder.initForegroundColor());
    if (attributes.backgroundColor)
        encodeColor(*attributes.backgroundColor, builder.initBackgroundColor());
    if (!attributes.link.isNil())
        builder.setLink(wireString(attributes.link));
    if (attributes.paragraphStyle)
        encodeStyle(*attributes.paragraphStyle, builder.initParagraphStyle());
}

NSAttributedString::Attributes decodeAttributes(wire::TextAttributes::Reader reader) {
    NSTextAttributes attributes;
    attributes.font = {decodeString(reader.getFontFamily()), reader.getPointSize(), reader.getIsBold(),
                       reader.getIsItalic(), reader.getIsFixedPitch()};
    attributes.underlineStyle = decodeLine(reader.getUnderlineStyle());
    attributes.strikethroughStyle = decodeLine(reader.getStrikethroughStyle());
    attributes.superscript = reader.getSuperscript();
    attributes.baselineOffset = reader.getBaselineOffset();
    attributes.kern = reader.getKern();
    if (reader.hasForegroundColor())
        attributes.foregroundColor = decodeColor(reader.getForegroundColor());
    if (reader.hasBackgroundColor())
        attributes.backgroundColor = decodeColor(reader.getBackgroundColor());
    if (reader.hasLink())
        attributes.link = decodeString(reader.getLink());
    if (reader.hasParagraphStyle())
        attributes.paragraphStyle = decodeStyle(reader.getParagraphStyle());
    return std::make_shared<const NSTextAttributes>(std::move(attributes));
}

} // namespace

void encodeAttributedString(const NSAttributedString& text, wire::AttributedString::Builder builder) {
    builder.setString(wireString(text.string()));
    if (text.runs().size() > mostRuns)
        refuse(u"The text has too many runs to be sent.");
    std::vector<const NSTextAttributes*> sent;
    std::unordered_map<const NSTextAttributes*, unsigned> numbers;
    auto runs = builder.initRuns(static_cast<unsigned>(text.runs().size()));
    unsigned index = 0;
    for (const NSAttributedString::Run& run : text.runs()) {
        const auto [number, isNew] =
            numbers.emplace(run.attributes.get(), static_cast<unsigned>(sent.size()));
        if (isNew)
            sent.push_back(run.attributes.get());
        runs[index].setLength(static_cast<unsigned>(run.range.length));
        runs[index].setAttributes(number->second);
        ++index;
    }
    auto attributes = builder.initAttributes(static_cast<unsigned>(sent.size()));
    for (index = 0; index < attributes.size(); ++index)
        encodeAttributes(*sent[index], attributes[index]);
}

NSAttributedString decodeAttributedString(wire::AttributedString::Reader reader) {
    const NSString string = decodeString(reader.getString());
    std::vector<NSAttributedString::Attributes> attributes;
    for (const wire::TextAttributes::Reader each : reader.getAttributes())
        attributes.push_back(decodeAttributes(each));
    NSMutableAttributedString text;
    text.reserve(string.length());
    for (const wire::AttributedString::Run::Reader run : reader.getRuns()) {
        // A list of empty structs may claim any length: each run has to bring some text.
        const std::size_t left = string.length() - text.length();
        if (run.getLength() == 0 || run.getLength() > left || run.getAttributes() >= attributes.size())
            refuse(u"Text with runs that do not fit it was received.");
        text.append(string.characters().substr(text.length(), run.getLength()),
                    attributes[run.getAttributes()]);
    }
    if (text.length() != string.length())
        refuse(u"Text with runs that do not fit it was received.");
    return std::move(text).copy();
}

} // namespace kelvo
