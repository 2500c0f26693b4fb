#include "platform/appkit/rtfreader/RTFFormats.h"

#include "platform/appkit/rtfreader/RTFScanner.h"
#include "platform/appkit/rtfreader/RTFWords.h"

#include <algorithm>
#include <array>

namespace kelvo {
namespace {

/// More says that the source is broken, and would make every copy of a paragraph's format long.
constexpr std::size_t maximumTabs = 256;

bool isOn(const RTFToken& token) {
    return !token.hasParameter || token.parameter != 0;
}

std::int32_t sizeFromHalfPoints(std::int32_t halfPoints) {
    return std::clamp(halfPoints, 1, 8000) * 500;
}

class Hasher {
public:
    void add(std::int64_t value) {
        hash_ = (hash_ ^ static_cast<std::uint64_t>(value)) * 0x9E3779B97F4A7C15u;
        hash_ ^= hash_ >> 29;
    }
    std::size_t hash() const { return hash_; }

private:
    std::uint64_t hash_ = 0x243F6A8885A308D3u;
};

NSUnderlineStyle underlineStyle(RTFWord word) {
    switch (word) {
    case RTFWord::uldb:
    case RTFWord::ululdbwave:
        return NSUnderlineStyleDouble;
    case RTFWord::ulth:
    case RTFWord::ulthd:
    case RTFWord::ulthdash:
    case RTFWord::ulthdashd:
    case RTFWord::ulthdashdd:
    case RTFWord::ulthldash:
    case RTFWord::ulhwave:
        return NSUnderlineStyleThick;
    default:
        return NSUnderlineStyleSingle;
    }
}

} // namespace

std::size_t RTFCharacterFormat::Hash::operator()(const RTFCharacterFormat& format) const noexcept {
    Hasher hasher;
    for (const std::int32_t value :
         {format.font, format.size, format.foreground, format.background, format.kernTwips,
          format.baselineHalfPoints, format.superscript, format.link, format.attachment})
        hasher.add(value);
    hasher.add(format.underline | format.strikethrough << 8 | format.isBold << 16 | format.isItalic << 17);
    return hasher.hash();
}

void RTFCharacterState::setOther(RTFWord word, const RTFToken& token) {
    switch (word) {
    case RTFWord::af:
        otherFont_ = std::max(token.parameter, 0);
        break;
    case RTFWord::afs:
        otherSize_ = token.parameter > 0 ? sizeFromHalfPoints(token.parameter) : -1;
        break;
    case RTFWord::ab:
        otherBold_ = isOn(token);
        break;
    default:
        otherItalic_ = isOn(token);
        break;
    }
}

void RTFCharacterState::apply(RTFWord word, const RTFToken& token, std::int32_t defaultFont) {
    const std::int32_t number = token.parameter;
    switch (word) {
    case RTFWord::plain:
        *this = RTFCharacterState(defaultFont);
        break;
    case RTFWord::ltrch:
    case RTFWord::loch:
    case RTFWord::hich:
    case RTFWord::dbch:
        isRightToLeft_ = false;
        break;
    case RTFWord::rtlch:
        isRightToLeft_ = true;
        break;
    case RTFWord::af:
    case RTFWord::afs:
    case RTFWord::ab:
    case RTFWord::ai:
        // Behind the other words they speak of scripts whose formats \f and its like state as well.
        if (isRightToLeft_)
            setOther(word, token);
        break;
    case RTFWord::f:
        format_.font = std::max(number, 0);
        if (isRightToLeft_)
            otherFont_ = -1;
        break;
    case RTFWord::fs:
        format_.size = token.hasParameter && number > 0 ? sizeFromHalfPoints(number) : 12000;
        if (isRightToLeft_)
            otherSize_ = -1;
        break;
    case RTFWord::fsmilli:
        if (number > 0)
            format_.size = std::min(number, 4000000);
        break;
    case RTFWord::b:
        format_.isBold = isOn(token);
        if (isRightToLeft_)
            otherBold_ = -1;
        break;
    case RTFWord::i:
        format_.isItalic = isOn(token);
        if (isRightToLeft_)
            otherItalic_ = -1;
        break;
    case RTFWord::cf:
        format_.foreground = std::max(number, 0);
        break;
    case RTFWord::cb:
    case RTFWord::chcbpat:
    case RTFWord::highlight:
        format_.background = number > 0 ? number : -1;
        break;
    case RTFWord::strike:
        format_.strikethrough = isOn(token) ? NSUnderlineStyleSingle : NSUnderlineStyleNone;
        break;
    case RTFWord::striked:
        format_.strikethrough = isOn(token) ? NSUnderlineStyleDouble : NSUnderlineStyleNone;
        break;
    case RTFWord::super:
        format_.superscript = token.hasParameter ? std::clamp(number, 0, 100) : 1;
        break;
    case RTFWord::sub:
        format_.superscript = token.hasParameter ? -std::clamp(number, 0, 100) : -1;
        break;
    case RTFWord::nosupersub:
        format_.superscript = 0;
        break;
    case RTFWord::up:
        format_.baselineHalfPoints = token.hasParameter ? number : 6;
        break;
    case RTFWord::dn:
        format_.baselineHalfPoints = token.hasParameter ? -std::max(number, -0x7FFFFFFF) : -6;
        break;
    case RTFWord::expnd:
        format_.kernTwips = std::clamp(number, -100000, 100000) * 5;
        break;
    case RTFWord::expndtw:
        format_.kernTwips = number;
        break;
    case RTFWord::v:
        isHidden_ = isOn(token);
        break;
    case RTFWord::deleted:
        isDeleted_ = isOn(token);
        break;
    case RTFWord::ulnone:
        format_.underline = NSUnderlineStyleNone;
        break;
    case RTFWord::cs:
        break;
    default:
        format_.underline = isOn(token) ? underlineStyle(word) : NSUnderlineStyleNone;
        break;
    }
}

RTFCharacterFormat RTFCharacterState::effective() const {
    RTFCharacterFormat format = format_;
    if (isRightToLeft_) {
        format.font = effectiveFont();
        if (otherSize_ >= 0)
            format.size = otherSize_;
        if (otherBold_ >= 0)
            format.isBold = otherBold_ != 0;
        if (otherItalic_ >= 0)
            format.isItalic = otherItalic_ != 0;
    }
    return format;
}

bool operator==(const RTFParagraphFormat& left, const RTFParagraphFormat& right) {
    const auto numbers = [](const RTFParagraphFormat& format) {
        return std::array{format.nesting,           format.style,       format.list,
                          format.oldList,           format.leftIndent,  format.firstLineIndent,
                          format.rightIndent,       format.spaceBefore, format.spaceAfter,
                          format.lineHeight,        format.lineSpacing, format.minimumLineHeight,
                          format.maximumLineHeight, format.tabInterval};
    };
    return left.alignment == right.alignment && left.direction == right.direction &&
           left.isInTable == right.isInTable && left.isLineHeightMultiple == right.isLineHeightMultiple &&
           left.isSpacingContextual == right.isSpacingContextual && left.headerLevel == right.headerLevel &&
           left.outlineLevel == right.outlineLevel && left.listLevel == right.listLevel &&
           numbers(left) == numbers(right) &&
           (left.tabs == right.tabs || (left.tabs && right.tabs && *left.tabs == *right.tabs));
}

std::size_t RTFParagraphFormat::Hash::operator()(const RTFParagraphFormat& format) const noexcept {
    Hasher hasher;
    for (const std::int32_t value :
         {format.nesting, format.style, format.list, format.oldList, format.leftIndent,
          format.firstLineIndent, format.rightIndent, format.spaceBefore, format.spaceAfter,
          format.lineHeight, format.lineSpacing, format.minimumLineHeight, format.maximumLineHeight,
          format.tabInterval, static_cast<std::int32_t>(format.alignment),
          static_cast<std::int32_t>(format.direction), static_cast<std::int32_t>(format.outlineLevel),
          static_cast<std::int32_t>(format.listLevel)})
        hasher.add(value);
    if (format.tabs)
        for (const NSTextTab& tab : *format.tabs)
            hasher.add(static_cast<std::int64_t>(tab.location * 20) * 4 + static_cast<int>(tab.type));
    return hasher.hash();
}

void RTFParagraphFormat::apply(RTFWord word, const RTFToken& token) {
    const std::int32_t number = token.parameter;
    switch (word) {
    case RTFWord::pard:
        *this = RTFParagraphFormat();
        break;
    case RTFWord::ql:
        alignment = NSTextAlignment::left;
        break;
    case RTFWord::qr:
        alignment = NSTextAlignment::right;
        break;
    case RTFWord::qc:
        alignment = NSTextAlignment::center;
        break;
    case RTFWord::qj:
        alignment = NSTextAlignment::justified;
        break;
    case RTFWord::qnatural:
        alignment = NSTextAlignment::natural;
        break;
    case RTFWord::ltrpar:
        direction = NSWritingDirection::leftToRight;
        break;
    case RTFWord::rtlpar:
        direction = NSWritingDirection::rightToLeft;
        break;
    case RTFWord::pardirnatural:
        direction = NSWritingDirection::natural;
        break;
    case RTFWord::li:
        leftIndent = number;
        break;
    case RTFWord::fi:
        firstLineIndent = number;
        break;
    case RTFWord::ri:
        rightIndent = number;
        break;
    case RTFWord::sb:
        spaceBefore = number;
        break;
    case RTFWord::sa:
        spaceAfter = number;
        break;
    case RTFWord::sl:
        lineHeight = number;
        break;
    case RTFWord::slmult:
        isLineHeightMultiple = number != 0;
        break;
    case RTFWord::slleading:
        lineSpacing = number;
        break;
    case RTFWord::slminimum:
        minimumLineHeight = number;
        break;
    case RTFWord::slmaximum:
        maximumLineHeight = number;
        break;
    case RTFWord::outlinelevel:
        outlineLevel = static_cast<std::int8_t>(std::clamp(number, 0, 9));
        break;
    case RTFWord::s:
        style = number;
        break;
    case RTFWord::ls:
        list = number;
        break;
    case RTFWord::ilvl:
        listLevel = static_cast<std::int8_t>(std::clamp(number, 0, 8));
        break;
    case RTFWord::contextualspace:
        isSpacingContextual = isOn(token);
        break;
    case RTFWord::intbl:
        isInTable = isOn(token);
        break;
    case RTFWord::itap:
        nesting = std::clamp(number, 0, 1000);
        break;
    case RTFWord::pardeftab:
        tabInterval = number;
        break;
    case RTFWord::tqc:
        nextTabType = NSTextTabType::center;
        break;
    case RTFWord::tqr:
        nextTabType = NSTextTabType::right;
        break;
    case RTFWord::tqdec:
        nextTabType = NSTextTabType::decimal;
        break;
    default: { // tx
        const NSTextTab tab{pointsFromTwips(number), nextTabType};
        nextTabType = NSTextTabType::left;
        if (tabs && tabs->size() >= maximumTabs)
            break;
        auto longer = tabs ? std::make_shared<std::vector<NSTextTab>>(*tabs)
                           : std::make_shared<std::vector<NSTextTab>>();
        longer->insert(std::ranges::upper_bound(*longer, tab.location, {}, &NSTextTab::location), tab);
        tabs = std::move(longer);
        break;
    }
    }
}

std::int32_t RTFParagraphFormat::tableLevel() const {
    return isInTable ? std::max(nesting, 1) : nesting > 1 ? nesting : 0;
}

NSParagraphStyle RTFParagraphFormat::paragraphStyle() const {
    NSParagraphStyle result;
    result.alignment = alignment;
    result.baseWritingDirection = direction;
    result.headIndent = pointsFromTwips(leftIndent);
    result.firstLineHeadIndent = pointsFromTwips(leftIndent) + pointsFromTwips(firstLineIndent);
    result.tailIndent = rightIndent == 0 ? 0 : -pointsFromTwips(rightIndent);
    result.paragraphSpacingBefore = pointsFromTwips(spaceBefore);
    result.paragraphSpacing = pointsFromTwips(spaceAfter);
    result.lineSpacing = pointsFromTwips(lineSpacing);
    result.minimumLineHeight = pointsFromTwips(minimumLineHeight);
    result.maximumLineHeight = pointsFromTwips(maximumLineHeight);
    if (lineHeight != 0 && isLineHeightMultiple) {
        result.lineHeightMultiple = static_cast<float>(lineHeight) / 240;
    } else if (lineHeight > 0) {
        result.minimumLineHeight = pointsFromTwips(lineHeight);
    } else if (lineHeight < 0) {
        result.minimumLineHeight = -pointsFromTwips(lineHeight);
        result.maximumLineHeight = result.minimumLineHeight;
    }
    result.headerLevel = headerLevel;
    result.defaultTabInterval = pointsFromTwips(tabInterval);
    if (tabs)
        result.tabStops = *tabs;
    return result;
}

} // namespace kelvo
