#include "platform/webkit/RenderedPage.h"

#include "platform/foundation/units/ASCII.h"

#include <charconv>
#include <cmath>
#include <string_view>
#include <utility>

namespace kelvo {
namespace {

/// The most styles or pictures that are believed. No page comes near; what does is no page.
constexpr std::size_t mostEntries = 4'000'000;

/// In the place of an event, when something was left out.
constexpr std::uint32_t markOfCut = static_cast<std::uint32_t>(RenderedPage::EventKind::rule) + 1;

/// Fields between U+0000 in UTF-8: the title, the numbers of text styles, block styles and images, these
/// three, and then the events, each a code and its own fields. The order of everything is that of Walk.js.
class FieldReader {
public:
    explicit FieldReader(std::string_view fields) : rest_(fields) {}

    bool isAtEnd() const noexcept { return isAtEnd_; }
    bool isBroken() const noexcept { return isBroken_; }

    std::string_view next() {
        if (isAtEnd_) {
            isBroken_ = true;
            return {};
        }
        const std::size_t end = rest_.find('\0');
        const std::string_view field = rest_.substr(0, end);
        if (end == std::string_view::npos)
            isAtEnd_ = true;
        else
            rest_.remove_prefix(end + 1);
        return field;
    }
    NSString text() {
        const std::string_view field = next();
        return field.empty() ? NSString(u"") : NSString::stringByRepairingUTF8String(field);
    }
    int integer() {
        const std::string_view field = next();
        int value = 0;
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
        if (error != std::errc() || end != field.data() + field.size())
            isBroken_ = true;
        return value;
    }
    float number() {
        const std::string_view field = next();
        float value = 0;
        const auto [end, error] = std::from_chars(field.data(), field.data() + field.size(), value);
        if (error != std::errc() || end != field.data() + field.size() || !std::isfinite(value))
            isBroken_ = true;
        return value;
    }
    /// In points, to a hundredth as the walk wrote its pixels: 13.33 of them are ten points.
    float length() { return std::round(number() * 75) / 100; }
    std::size_t count() {
        const int value = integer();
        if (value < 0 || static_cast<std::size_t>(value) > mostEntries)
            isBroken_ = true;
        return isBroken_ ? 0 : static_cast<std::size_t>(value);
    }
    std::uint32_t index(std::size_t limit) {
        const int value = integer();
        if (value < 0 || static_cast<std::size_t>(value) >= limit) {
            isBroken_ = true;
            return 0;
        }
        return static_cast<std::uint32_t>(value);
    }
    std::optional<NSColor> color();

private:
    std::string_view rest_;
    bool isAtEnd_ = false;
    bool isBroken_ = false;
};

/// "rgb(0, 128, 255)", "rgba(0, 0, 0, 0.5)", "color(srgb 1 0 0.5 / 0.5)". Other colour spaces, which few
/// pages use, are as if nothing had been said.
std::optional<NSColor> FieldReader::color() {
    const std::string_view field = next();
    const bool isFunction = field.rfind("color(srgb ", 0) == 0;
    if (!isFunction && field.rfind("rgb", 0) != 0)
        return std::nullopt;
    float parts[4] = {0, 0, 0, 1};
    std::size_t found = 0;
    std::size_t at = isFunction ? 11 : field.find('(');
    while (at < field.size() && found < 4) {
        const char unit = field[at];
        if (!isASCIIDigit(unit) && unit != '.' && unit != '-') {
            ++at;
            continue;
        }
        const auto [end, error] =
            std::from_chars(field.data() + at, field.data() + field.size(), parts[found]);
        if (error != std::errc())
            return std::nullopt;
        at = static_cast<std::size_t>(end - field.data());
        ++found;
    }
    if (found < 3 || parts[3] <= 0)
        return std::nullopt;
    const float scale = isFunction ? 1 : 255;
    const auto within = [](float value) { return value < 0 ? 0 : value > 1 ? 1 : value; };
    return NSColor{within(parts[0] / scale), within(parts[1] / scale), within(parts[2] / scale),
                   within(parts[3])};
}

RenderedPage::WhiteSpace whiteSpaceNamed(std::string_view name) {
    if (name == "preserve-breaks")
        return RenderedPage::WhiteSpace::preserveBreaks;
    return name == "preserve" || name == "break-spaces" ? RenderedPage::WhiteSpace::preserve
                                                        : RenderedPage::WhiteSpace::collapse;
}

RenderedPage::Alignment alignmentNamed(std::string_view name) {
    using Alignment = RenderedPage::Alignment;
    constexpr std::pair<std::string_view, Alignment> names[] = {{"end", Alignment::end},
                                                                {"left", Alignment::left},
                                                                {"-webkit-left", Alignment::left},
                                                                {"right", Alignment::right},
                                                                {"-webkit-right", Alignment::right},
                                                                {"center", Alignment::center},
                                                                {"-webkit-center", Alignment::center},
                                                                {"justify", Alignment::justified}};
    for (const auto& [known, alignment] : names) {
        if (known == name)
            return alignment;
    }
    return Alignment::start;
}

RenderedPage::VerticalAlignment verticalAlignmentNamed(std::string_view name) {
    if (name == "middle")
        return RenderedPage::VerticalAlignment::middle;
    return name == "bottom" ? RenderedPage::VerticalAlignment::bottom : RenderedPage::VerticalAlignment::top;
}

RenderedPage::TextStyle textStyle(FieldReader& reader) {
    RenderedPage::TextStyle style;
    style.fontFamilies = reader.text();
    style.fontSize = reader.length();
    style.fontWeight = reader.integer();
    style.isItalic = reader.integer() != 0;
    style.color = reader.color();
    style.backgroundColor = reader.color();
    const int lines = reader.integer();
    style.isUnderlined = (lines & 1) != 0;
    style.isStruckThrough = (lines & 2) != 0;
    style.isDoublyUnderlined = (lines & 4) != 0;
    style.superscript = reader.integer();
    style.letterSpacing = reader.length();
    style.whiteSpace = whiteSpaceNamed(reader.next());
    style.link = reader.text();
    return style;
}

RenderedPage::BlockStyle blockStyle(FieldReader& reader) {
    RenderedPage::BlockStyle style;
    style.alignment = alignmentNamed(reader.next());
    style.isRightToLeft = reader.integer() != 0;
    style.indentLeft = reader.length();
    style.indentRight = reader.length();
    style.textIndent = reader.length();
    style.marginTop = reader.length();
    style.paddingTop = reader.length();
    style.marginBottom = reader.length();
    style.paddingBottom = reader.length();
    style.lineHeight = reader.length();
    style.headingLevel = reader.integer();
    style.keepsMargins = reader.integer() != 0;
    return style;
}

RenderedPage::Image image(FieldReader& reader) {
    RenderedPage::Image image;
    image.url = reader.text();
    image.alternative = reader.text();
    image.size.width = reader.length();
    image.size.height = reader.length();
    const std::string_view drawing = reader.next();
    if (!drawing.empty()) {
        image.data = NSData::dataWithBytes(drawing);
        image.mimeType = u"image/svg+xml";
    }
    return image;
}

RenderedPage::Cell cell(FieldReader& reader) {
    RenderedPage::Cell cell;
    cell.columnSpan = reader.integer();
    cell.rowSpan = reader.integer();
    cell.widthPercent = reader.number();
    cell.backgroundColor = reader.color();
    cell.verticalAlignment = verticalAlignmentNamed(reader.next());
    for (float& side : cell.padding)
        side = reader.length();
    for (RenderedPage::Border& border : cell.borders) {
        border.width = reader.length();
        border.color = reader.color();
    }
    return cell;
}

/// Appends the entry and gives its index.
template <typename T>
std::uint32_t append(std::vector<T>& entries, T entry) {
    entries.push_back(std::move(entry));
    return static_cast<std::uint32_t>(entries.size() - 1);
}

RenderedPage::Event event(RenderedPage::EventKind kind, FieldReader& reader, RenderedPage& page) {
    using Kind = RenderedPage::EventKind;
    RenderedPage::Event event;
    event.kind = kind;
    switch (event.kind) {
    case Kind::text:
        event.index = reader.index(page.textStyles.size());
        event.text = reader.text();
        break;
    case Kind::lineBreak:
        event.index = reader.index(page.textStyles.size());
        break;
    case Kind::block:
        event.index = reader.index(page.blockStyles.size());
        break;
    case Kind::item: {
        RenderedPage::Item item;
        item.styleType = reader.text();
        item.textStyle = reader.index(page.textStyles.size());
        const std::string_view value = reader.next();
        int number = 0;
        if (!value.empty() &&
            std::from_chars(value.data(), value.data() + value.size(), number).ec == std::errc())
            item.value = number;
        event.index = append(page.items, std::move(item));
        break;
    }
    case Kind::list: {
        RenderedPage::List list;
        list.styleType = reader.text();
        list.start = reader.integer();
        list.isReversed = reader.integer() != 0;
        event.index = append(page.lists, std::move(list));
        break;
    }
    case Kind::table: {
        RenderedPage::Table table;
        table.collapsesBorders = reader.integer() != 0;
        table.width = reader.length();
        table.availableWidth = reader.length();
        table.backgroundColor = reader.color();
        event.index = append(page.tables, table);
        break;
    }
    case Kind::cell:
        event.index = append(page.cells, cell(reader));
        break;
    case Kind::image:
        event.style = reader.index(page.textStyles.size());
        event.index = reader.index(page.images.size());
        break;
    case Kind::end:
    case Kind::row:
    case Kind::rule:
        break;
    }
    return event;
}

} // namespace

std::optional<RenderedPage> renderedPageWithFields(const NSData& fields) {
    if (fields.isNil())
        return std::nullopt;
    FieldReader reader({reinterpret_cast<const char*>(fields.bytes().data()), fields.length()});
    RenderedPage page;
    page.title = reader.text();
    const std::size_t textStyles = reader.count();
    const std::size_t blockStyles = reader.count();
    const std::size_t images = reader.count();
    while (page.textStyles.size() < textStyles && !reader.isBroken())
        page.textStyles.push_back(textStyle(reader));
    while (page.blockStyles.size() < blockStyles && !reader.isBroken())
        page.blockStyles.push_back(blockStyle(reader));
    while (page.images.size() < images && !reader.isBroken())
        page.images.push_back(image(reader));
    while (!reader.isAtEnd() && !reader.isBroken()) {
        const std::uint32_t code = reader.index(markOfCut + 1);
        if (code == markOfCut)
            page.isCut = true;
        else
            page.events.push_back(event(static_cast<RenderedPage::EventKind>(code), reader, page));
    }
    if (reader.isBroken())
        return std::nullopt;
    return page;
}

} // namespace kelvo
