#include "platform/appkit/rtfreader/RTFFormats.h"

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

template <auto member>
void setNumber(RTFParagraphFormat& format, const RTFToken& token) {
    format.*member = token.parameter;
}

template <auto member>
void setSwitch(RTFParagraphFormat& format, const RTFToken& token) {
    format.*member = isOn(token);
}

template <auto member, auto value>
void setValue(RTFParagraphFormat& format, const RTFToken&) {
    format.*member = value;
}

void addTab(RTFParagraphFormat& format, const RTFToken& token) {
    const NSTextTab tab{pointsFromTwips(token.parameter), format.nextTabType};
    format.nextTabType = NSTextTabType::left;
    auto& tabs = format.tabs;
    if (tabs && tabs->size() >= maximumTabs)
        return;
    auto longer =
        tabs ? std::make_shared<std::vector<NSTextTab>>(*tabs) : std::make_shared<std::vector<NSTextTab>>();
    longer->insert(std::ranges::upper_bound(*longer, tab.location, {}, &NSTextTab::location), tab);
    tabs = std::move(longer);
}

template <unsigned edges>
void beginBorders(RTFParagraphFormat& format, const RTFToken&) {
    auto changed = format.borders ? std::make_shared<RTFParagraphFormat::Borders>(*format.borders)
                                  : std::make_shared<RTFParagraphFormat::Borders>();
    for (std::size_t edge = 0; edge < changed->size(); ++edge)
        if (edges >> edge & 1)
            (*changed)[edge] = {.isStated = true};
    format.borders = std::move(changed);
    format.openBorders = edges;
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

template <NSUnderlineStyle style>
void RTFCharacterState::setUnderline(RTFCharacterState& state, const RTFToken& token) {
    state.format_.underline = isOn(token) ? style : NSUnderlineStyleNone;
}

void RTFCharacterState::setBackground(RTFCharacterState& state, const RTFToken& token) {
    state.format_.background = token.parameter > 0 ? token.parameter : -1;
}

template <RTFCharacterState::Capitals capitals>
void RTFCharacterState::setCapitals(RTFCharacterState& state, const RTFToken& token) {
    if (isOn(token))
        state.capitals_ = capitals;
    else if (state.capitals_ == capitals)
        state.capitals_ = Capitals::asWritten;
}

void RTFCharacterState::endRightToLeft(RTFCharacterState& state, const RTFToken&) {
    state.isRightToLeft_ = false;
}

std::span<const RTFWord<RTFCharacterState>> RTFCharacterState::words() {
    using State = RTFCharacterState;
    using Token = RTFToken;
    constexpr auto single = setUnderline<NSUnderlineStyleSingle>;
    constexpr auto twofold = setUnderline<NSUnderlineStyleDouble>;
    constexpr auto thick = setUnderline<NSUnderlineStyleThick>;
    static constexpr RTFWord<State> words[] = {
        {"ltrch", endRightToLeft},
        {"loch", endRightToLeft},
        {"hich", endRightToLeft},
        {"dbch", endRightToLeft},
        {"rtlch", [](State& state, const Token&) { state.isRightToLeft_ = true; }},
        // After words other than \rtlch the four speak of scripts whose formats \f and its like state as
        // well.
        {"af",
         [](State& state, const Token& token) {
             if (state.isRightToLeft_)
                 state.otherFont_ = std::max(token.parameter, 0);
         }},
        {"afs",
         [](State& state, const Token& token) {
             if (state.isRightToLeft_)
                 state.otherSize_ = token.parameter > 0 ? sizeFromHalfPoints(token.parameter) : -1;
         }},
        {"ab",
         [](State& state, const Token& token) {
             if (state.isRightToLeft_)
                 state.otherBold_ = isOn(token);
         }},
        {"ai",
         [](State& state, const Token& token) {
             if (state.isRightToLeft_)
                 state.otherItalic_ = isOn(token);
         }},
        {"f",
         [](State& state, const Token& token) {
             state.format_.font = std::max(token.parameter, 0);
             if (state.isRightToLeft_)
                 state.otherFont_ = -1;
         }},
        {"fs",
         [](State& state, const Token& token) {
             const bool isStated = token.hasParameter && token.parameter > 0;
             state.format_.size = isStated ? sizeFromHalfPoints(token.parameter) : 12000;
             if (state.isRightToLeft_)
                 state.otherSize_ = -1;
         }},
        {"fsmilli",
         [](State& state, const Token& token) {
             if (token.parameter > 0)
                 state.format_.size = std::min(token.parameter, 4000000);
         }},
        {"b",
         [](State& state, const Token& token) {
             state.format_.isBold = isOn(token);
             if (state.isRightToLeft_)
                 state.otherBold_ = -1;
         }},
        {"i",
         [](State& state, const Token& token) {
             state.format_.isItalic = isOn(token);
             if (state.isRightToLeft_)
                 state.otherItalic_ = -1;
         }},
        {"cf",
         [](State& state, const Token& token) { state.format_.foreground = std::max(token.parameter, 0); }},
        {"cb", setBackground},
        {"chcbpat", setBackground},
        {"highlight", setBackground},
        {"strike",
         [](State& state, const Token& token) {
             state.format_.strikethrough = isOn(token) ? NSUnderlineStyleSingle : NSUnderlineStyleNone;
         }},
        {"striked",
         [](State& state, const Token& token) {
             state.format_.strikethrough = isOn(token) ? NSUnderlineStyleDouble : NSUnderlineStyleNone;
         }},
        {"super",
         [](State& state, const Token& token) {
             state.format_.superscript = token.hasParameter ? std::clamp(token.parameter, 0, 100) : 1;
         }},
        {"sub",
         [](State& state, const Token& token) {
             state.format_.superscript = token.hasParameter ? -std::clamp(token.parameter, 0, 100) : -1;
         }},
        {"nosupersub", [](State& state, const Token&) { state.format_.superscript = 0; }},
        {"up",
         [](State& state, const Token& token) {
             state.format_.baselineHalfPoints = token.hasParameter ? token.parameter : 6;
         }},
        {"dn",
         [](State& state, const Token& token) {
             state.format_.baselineHalfPoints =
                 token.hasParameter ? -std::max(token.parameter, -0x7FFFFFFF) : -6;
         }},
        {"expnd",
         [](State& state, const Token& token) {
             state.format_.kernTwips = std::clamp(token.parameter, -100000, 100000) * 5;
         }},
        {"expndtw", [](State& state, const Token& token) { state.format_.kernTwips = token.parameter; }},
        {"caps", setCapitals<Capitals::all>},
        {"scaps", setCapitals<Capitals::small>},
        {"v", [](State& state, const Token& token) { state.isHidden_ = isOn(token); }},
        {"deleted", [](State& state, const Token& token) { state.isDeleted_ = isOn(token); }},
        {"ulnone", [](State& state, const Token&) { state.format_.underline = NSUnderlineStyleNone; }},
        {"ul", single},
        {"uld", single},
        {"uldash", single},
        {"uldashd", single},
        {"uldashdd", single},
        {"ulldash", single},
        {"ulw", single},
        {"ulwave", single},
        {"uldb", twofold},
        {"ululdbwave", twofold},
        {"ulth", thick},
        {"ulthd", thick},
        {"ulthdash", thick},
        {"ulthdashd", thick},
        {"ulthdashdd", thick},
        {"ulthldash", thick},
        {"ulhwave", thick},
    };
    return words;
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
                          format.maximumLineHeight, format.tabInterval, format.background};
    };
    return left.alignment == right.alignment && left.direction == right.direction &&
           left.isInTable == right.isInTable && left.isLineHeightMultiple == right.isLineHeightMultiple &&
           left.isSpacingContextual == right.isSpacingContextual && left.headerLevel == right.headerLevel &&
           left.outlineLevel == right.outlineLevel && left.listLevel == right.listLevel &&
           numbers(left) == numbers(right) &&
           (left.tabs == right.tabs || (left.tabs && right.tabs && *left.tabs == *right.tabs)) &&
           (left.borders == right.borders ||
            (left.borders && right.borders && *left.borders == *right.borders));
}

std::size_t RTFParagraphFormat::Hash::operator()(const RTFParagraphFormat& format) const noexcept {
    Hasher hasher;
    for (const std::int32_t value :
         {format.nesting, format.style, format.list, format.oldList, format.leftIndent,
          format.firstLineIndent, format.rightIndent, format.spaceBefore, format.spaceAfter,
          format.lineHeight, format.lineSpacing, format.minimumLineHeight, format.maximumLineHeight,
          format.tabInterval, format.background, static_cast<std::int32_t>(format.alignment),
          static_cast<std::int32_t>(format.direction), static_cast<std::int32_t>(format.outlineLevel),
          static_cast<std::int32_t>(format.listLevel)})
        hasher.add(value);
    if (format.tabs)
        for (const NSTextTab& tab : *format.tabs)
            hasher.add(static_cast<std::int64_t>(tab.location * 20) * 4 + static_cast<int>(tab.type));
    if (format.borders)
        for (const RTFBorder& border : *format.borders)
            hasher.add(border.isStated ? std::int64_t{border.width} * 4096 + border.color : -1);
    return hasher.hash();
}

std::span<const RTFWord<RTFParagraphFormat>> RTFParagraphFormat::words() {
    using Format = RTFParagraphFormat;
    using Token = RTFToken;
    static constexpr RTFWord<Format> words[] = {
        {"pard", [](Format& format, const Token&) { format = Format(); }},
        {"ql", setValue<&Format::alignment, NSTextAlignment::left>},
        {"qr", setValue<&Format::alignment, NSTextAlignment::right>},
        {"qc", setValue<&Format::alignment, NSTextAlignment::center>},
        {"qj", setValue<&Format::alignment, NSTextAlignment::justified>},
        {"qnatural", setValue<&Format::alignment, NSTextAlignment::natural>},
        {"ltrpar", setValue<&Format::direction, NSWritingDirection::leftToRight>},
        {"rtlpar", setValue<&Format::direction, NSWritingDirection::rightToLeft>},
        {"pardirnatural", setValue<&Format::direction, NSWritingDirection::natural>},
        {"li", setNumber<&Format::leftIndent>},
        {"fi", setNumber<&Format::firstLineIndent>},
        {"ri", setNumber<&Format::rightIndent>},
        {"sb", setNumber<&Format::spaceBefore>},
        {"sa", setNumber<&Format::spaceAfter>},
        {"sl", setNumber<&Format::lineHeight>},
        {"slmult",
         [](Format& format, const Token& token) { format.isLineHeightMultiple = token.parameter != 0; }},
        {"slleading", setNumber<&Format::lineSpacing>},
        {"slminimum", setNumber<&Format::minimumLineHeight>},
        {"slmaximum", setNumber<&Format::maximumLineHeight>},
        {"outlinelevel",
         [](Format& format, const Token& token) {
             format.outlineLevel = static_cast<std::int8_t>(std::clamp(token.parameter, 0, 9));
         }},
        {"s", setNumber<&Format::style>},
        {"ls", setNumber<&Format::list>},
        {"ilvl",
         [](Format& format, const Token& token) {
             format.listLevel = static_cast<std::int8_t>(std::clamp(token.parameter, 0, 8));
         }},
        {"contextualspace", setSwitch<&Format::isSpacingContextual>},
        {"intbl", setSwitch<&Format::isInTable>},
        {"itap",
         [](Format& format, const Token& token) { format.nesting = std::clamp(token.parameter, 0, 1000); }},
        {"brdrl", beginBorders<1>},
        {"brdrt", beginBorders<2>},
        {"brdrr", beginBorders<4>},
        {"brdrb", beginBorders<8>},
        {"box", beginBorders<15>},
        {"cbpat",
         [](Format& format, const Token& token) { format.background = std::max(token.parameter, 0); }},
        {"pardeftab", setNumber<&Format::tabInterval>},
        {"tqc", setValue<&Format::nextTabType, NSTextTabType::center>},
        {"tqr", setValue<&Format::nextTabType, NSTextTabType::right>},
        {"tqdec", setValue<&Format::nextTabType, NSTextTabType::decimal>},
        {"tx", addTab},
    };
    return words;
}

void RTFParagraphFormat::applyToBorders(const RTFWord<RTFBorder>& word, const RTFToken& token) {
    if (openBorders == 0)
        return;
    auto changed = std::make_shared<Borders>(*borders);
    for (std::size_t edge = 0; edge < changed->size(); ++edge)
        if (openBorders >> edge & 1)
            word.apply((*changed)[edge], token);
    borders = std::move(changed);
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
