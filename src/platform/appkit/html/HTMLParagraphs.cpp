#include "platform/appkit/html/HTMLParagraphs.h"

#include "platform/appkit/NSTextAttachment.h"
#include "platform/appkit/NSTextList.h"
#include "platform/appkit/NSTextTable.h"
#include "platform/appkit/html/HTMLTableGrid.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace kelvo {
namespace {

constexpr char16_t lineSeparator = 0x2028;

// In points, from the edge of the list or of the one around it.
constexpr float listIndent = 36;
constexpr float markerTab = 11;
/// More than this is a page's layout, not meant for its reader.
constexpr float largestIndent = 288;
constexpr float largestGap = 72;
/// Texts that are moved farther are meant not to be seen, and are shown in place.
constexpr float largestTextIndent = 200;
/// Of a horizontal line, which is the lower border of an empty paragraph.
constexpr float ruleWidth = 1;
constexpr std::size_t deepestList = 32;
constexpr std::size_t deepestTable = 8;

struct ListLevel {
    /// Null for a list without markers; made by its first item.
    std::shared_ptr<const NSTextList> list;
    int number = 1;
    int step = 1;
};

struct ItemLevel {
    /// Empty when there is none, or it has been written.
    std::u16string marker;
    std::uint32_t textStyle = 0;
};

struct Box {
    RenderedPage::EventKind kind = RenderedPage::EventKind::block;
    const RenderedPage::BlockStyle* style = nullptr;
    ListLevel list;
    ItemLevel item;
    /// Where the cells of a table go; null for other boxes, and for a table nested too deeply to be one.
    std::shared_ptr<HTMLTableGrid> grid;
    /// What the paragraphs of a cell stand in; null for other boxes.
    std::shared_ptr<const NSTextTableBlock> cell;
};

NSString markerFormat(const NSString& styleType) {
    constexpr std::pair<std::u16string_view, const char16_t*> formats[] = {
        {u"disc", u"{disc}"},
        {u"circle", u"{circle}"},
        {u"square", u"{square}"},
        {u"decimal", u"{decimal}."},
        {u"decimal-leading-zero", u"{decimal}."},
        {u"lower-alpha", u"{lower-alpha}."},
        {u"lower-latin", u"{lower-alpha}."},
        {u"upper-alpha", u"{upper-alpha}."},
        {u"upper-latin", u"{upper-alpha}."},
        {u"lower-roman", u"{lower-roman}."},
        {u"upper-roman", u"{upper-roman}."},
        {u"lower-greek", u"{lower-greek}."}};
    for (const auto& [name, format] : formats) {
        if (name == styleType.characters())
            return format;
    }
    return u"{disc}";
}

bool isCollapsible(char16_t unit) {
    return unit == u' ' || unit == u'\n' || unit == u'\t' || unit == u'\r' || unit == u'\f';
}

/// The vertical distance between what was put last and what comes next. On a page, margins that meet do not
/// add up: the largest counts, negative ones pull, and padding or a border keeps them apart. Rich text has one
/// distance between two paragraphs, so all edges that are passed between them are gathered here.
class Gap {
public:
    void addMargin(float margin) {
        if (margin > 0)
            positive_ = std::max(positive_, margin);
        else
            negative_ = std::min(negative_, margin);
    }
    void addPadding(float padding) {
        settled_ += positive_ + negative_ + padding;
        positive_ = negative_ = 0;
    }
    void reset() { *this = Gap(); }
    float value() const { return std::clamp(settled_ + positive_ + negative_, 0.0F, largestGap); }

private:
    float settled_ = 0;
    float positive_ = 0;
    float negative_ = 0;
};

/// Goes through the events once, with the boxes that are open.
///
/// A paragraph begins with the first thing that is shown in it and not at the edge of a box: boxes often begin
/// and end in one place, and each of those edges would leave an empty line. What a paragraph looks like follows
/// from all open boxes together, because rich text has no boxes to inherit from, only paragraphs.
class Builder {
public:
    explicit Builder(const RenderedPage& page) : page_(page) {}

    HTMLParagraphs build() {
        for (const RenderedPage::Event& event : page_.events)
            handle(event);
        while (!boxes_.empty())
            close();
        endParagraph(false);
        return std::move(result_);
    }

private:
    using Kind = RenderedPage::EventKind;

    void handle(const RenderedPage::Event& event);
    void open(const RenderedPage::Event& event);
    void close();
    void openTable(const RenderedPage::Table& table);
    void openCell(const RenderedPage::Cell& cell);
    void openItem(const RenderedPage::Item& item);
    void closeCell(const std::shared_ptr<const NSTextTableBlock>& cell);

    void startParagraph();
    NSParagraphStyle styleHere(bool hasMarker) const;
    void endParagraph(bool withLineFeed, bool evenIfEmpty = false);
    void put(std::u16string_view units, std::uint32_t textStyle,
             std::uint32_t image = HTMLParagraphs::noImage);
    void putText(std::u16string_view text, std::uint32_t textStyle);
    void putCollapsed(std::u16string_view text, std::uint32_t textStyle, bool keepsBreaks);
    void putPreserved(std::u16string_view text, std::uint32_t textStyle);
    void putBreak(std::uint32_t textStyle);
    void putImage(const RenderedPage::Event& event);
    void cutLast();

    std::size_t cellDepth() const {
        return static_cast<std::size_t>(
            std::count_if(boxes_.begin(), boxes_.end(), [](const Box& box) { return box.cell != nullptr; }));
    }
    /// The index of the innermost cell's box, or 0. Lists, items and indents count from there: to rich text a
    /// cell is a place of its own, which what surrounds its table does not move.
    std::size_t firstOfCell() const {
        std::size_t at = boxes_.size();
        while (at > 0 && !boxes_[at - 1].cell)
            --at;
        return at;
    }
    const HTMLParagraphs::Paragraph* last() const {
        return result_.paragraphs.empty() ? nullptr : &result_.paragraphs.back();
    }

    const RenderedPage& page_;
    HTMLParagraphs result_;
    std::vector<Box> boxes_;
    Gap gap_;

    // The paragraph that is being written.
    bool isOpen_ = false;
    NSParagraphStyle style_;
    std::size_t start_ = 0;
    /// After the marker, if there is one.
    std::size_t contentStart_ = 0;
    /// The style of white space that has been read but not written: at the end of a line none is shown, so it
    /// waits until something follows it.
    std::optional<std::uint32_t> pendingSpace_;
    std::uint32_t lastTextStyle_ = HTMLParagraphs::noStyle;
};

void Builder::handle(const RenderedPage::Event& event) {
    switch (event.kind) {
    case Kind::text:
        putText(event.text.characters(), event.index);
        break;
    case Kind::lineBreak:
        putBreak(event.index);
        break;
    case Kind::image:
        putImage(event);
        break;
    case Kind::rule:
        endParagraph(true);
        startParagraph();
        style_.borders[3] = {ruleWidth, NSColor{0.5F, 0.5F, 0.5F, 1}};
        endParagraph(true, true);
        break;
    case Kind::end:
        if (!boxes_.empty())
            close();
        break;
    case Kind::block:
    case Kind::item:
    case Kind::list:
    case Kind::table:
    case Kind::row:
    case Kind::cell:
        open(event);
        break;
    }
}

void Builder::open(const RenderedPage::Event& event) {
    endParagraph(true);
    Box box;
    box.kind = event.kind;
    if (event.kind == Kind::block) {
        box.style = &page_.blockStyles[event.index];
        gap_.addMargin(box.style->marginTop);
        if (box.style->paddingTop > 0 || box.style->keepsMargins)
            gap_.addPadding(box.style->paddingTop);
    } else if (event.kind == Kind::list) {
        const RenderedPage::List& list = page_.lists[event.index];
        box.list.number = list.start;
        box.list.step = list.isReversed ? -1 : 1;
    }
    boxes_.push_back(std::move(box));
    if (event.kind == Kind::table) {
        openTable(page_.tables[event.index]);
    } else if (event.kind == Kind::row) {
        for (std::size_t at = boxes_.size(); at-- > firstOfCell();) {
            if (boxes_[at].grid) {
                boxes_[at].grid->addRow();
                break;
            }
        }
    } else if (event.kind == Kind::cell) {
        openCell(page_.cells[event.index]);
    } else if (event.kind == Kind::item) {
        openItem(page_.items[event.index]);
    }
}

void Builder::openItem(const RenderedPage::Item& item) {
    Box& box = boxes_.back();
    ListLevel alone;
    ListLevel* level = &alone;
    std::size_t lists = 0;
    const std::size_t first = firstOfCell();
    for (std::size_t at = boxes_.size() - 1; at-- > first;) {
        if (boxes_[at].kind != Kind::list)
            continue;
        if (level == &alone)
            level = &boxes_[at].list;
        ++lists;
    }
    const int number = item.value.value_or(level->number);
    if (number < 1'000'000'000 && number > -1'000'000'000)
        level->number = number + level->step;
    if (item.styleType.characters() == u"none" || lists > deepestList)
        return;
    const NSString format = markerFormat(item.styleType);
    if (!level->list) {
        auto list = std::make_shared<NSTextList>();
        list->markerFormat = format;
        list->startingItemNumber = number;
        level->list = std::move(list);
    }
    NSTextList own = *level->list;
    own.markerFormat = format;
    box.item.marker = std::u16string(own.markerForItemNumber(number).characters());
    box.item.textStyle = item.textStyle;
    if (level == &alone)
        box.list = alone;
}

void Builder::openTable(const RenderedPage::Table& table) {
    if (cellDepth() >= deepestTable)
        return;
    // The marker of an item that begins with a table stands above it.
    for (std::size_t at = firstOfCell(); at < boxes_.size(); ++at) {
        if (!boxes_[at].item.marker.empty()) {
            startParagraph();
            endParagraph(true, true);
            break;
        }
    }
    if (last() && last()->style.textBlocks == styleHere(false).textBlocks)
        result_.paragraphs.back().style.paragraphSpacing = gap_.value();
    gap_.reset();
    boxes_.back().grid = std::make_shared<HTMLTableGrid>(table);
}

void Builder::openCell(const RenderedPage::Cell& cell) {
    for (std::size_t at = boxes_.size(); at-- > firstOfCell();) {
        if (!boxes_[at].grid)
            continue;
        boxes_.back().cell = boxes_[at].grid->addCell(cell);
        gap_.reset();
        return;
    }
}

void Builder::close() {
    // Nothing comes after the outermost box, so its last line needs no line feed to set it off.
    endParagraph(boxes_.size() > 1);
    const Box& box = boxes_.back();
    if (!box.item.marker.empty()) {
        startParagraph();
        endParagraph(true, true);
    }
    if (box.style) {
        if (box.style->paddingBottom > 0 || box.style->keepsMargins)
            gap_.addPadding(box.style->paddingBottom);
        gap_.addMargin(box.style->marginBottom);
    }
    if (box.cell)
        closeCell(box.cell);
    if (box.grid) {
        box.grid->finish();
        gap_.reset();
    }
    boxes_.pop_back();
}

void Builder::closeCell(const std::shared_ptr<const NSTextTableBlock>& cell) {
    // A cell without a paragraph is no cell in rich text, and those to its right would move.
    if (!last() || last()->style.textBlocks.empty() || last()->style.textBlocks.back() != cell) {
        startParagraph();
        endParagraph(true, true);
    }
    result_.paragraphs.back().style.paragraphSpacing = 0;
    gap_.reset();
}

NSParagraphStyle Builder::styleHere(bool hasMarker) const {
    NSParagraphStyle style;
    const RenderedPage::BlockStyle* innermost = nullptr;
    float left = 0;
    float right = 0;
    std::size_t levels = 0;
    const std::size_t first = firstOfCell();
    for (std::size_t at = 0; at < boxes_.size(); ++at) {
        const Box& box = boxes_[at];
        if (box.cell)
            style.textBlocks.push_back(box.cell);
        if (box.style)
            innermost = box.style;
        if (at < first)
            continue;
        if (box.list.list) {
            style.textLists.push_back(box.list.list);
            ++levels;
        }
        if (box.style) {
            // A list with markers has an indent of its own.
            const bool isOfList = at + 1 < boxes_.size() && boxes_[at + 1].list.list;
            left += isOfList ? 0 : box.style->indentLeft;
            right += isOfList ? 0 : box.style->indentRight;
            style.headerLevel = std::clamp(std::max(box.style->headingLevel, style.headerLevel), 0, 6);
        }
    }
    if (!innermost)
        return style;
    if (innermost->isRightToLeft) {
        style.baseWritingDirection = NSWritingDirection::rightToLeft;
        std::swap(left, right);
    }
    using Alignment = RenderedPage::Alignment;
    switch (innermost->alignment) {
    case Alignment::start:
        break;
    case Alignment::end:
        style.alignment = innermost->isRightToLeft ? NSTextAlignment::left : NSTextAlignment::right;
        break;
    case Alignment::left:
        // Left-to-right text stands like that anyway, and natural says that nobody asked for it.
        style.alignment = innermost->isRightToLeft ? NSTextAlignment::left : NSTextAlignment::natural;
        break;
    case Alignment::right:
        style.alignment = innermost->isRightToLeft ? NSTextAlignment::natural : NSTextAlignment::right;
        break;
    case Alignment::center:
        style.alignment = NSTextAlignment::center;
        break;
    case Alignment::justified:
        style.alignment = NSTextAlignment::justified;
        break;
    }
    style.minimumLineHeight = innermost->lineHeight;
    const float base = std::clamp(left, 0.0F, largestIndent);
    const float items = std::min(static_cast<float>(levels) * listIndent, largestIndent);
    style.headIndent = base + items;
    style.tailIndent = -std::clamp(right, 0.0F, largestIndent);
    if (hasMarker) {
        style.firstLineHeadIndent = style.headIndent - listIndent;
        style.tabStops = {{style.headIndent - listIndent + markerTab, NSTextTabType::left},
                          {style.headIndent, NSTextTabType::left}};
    } else {
        // To readers of rich text every paragraph of a list is an item of it.
        style.textLists.clear();
        const float indent = innermost->textIndent;
        style.firstLineHeadIndent =
            std::max(0.0F, style.headIndent + (std::abs(indent) <= largestTextIndent ? indent : 0));
    }
    return style;
}

void Builder::startParagraph() {
    if (isOpen_)
        return;
    isOpen_ = true;
    start_ = result_.text.size();
    pendingSpace_.reset();
    // The markers of lists that begin in one place stand on one line; the innermost says enough.
    Box* marked = nullptr;
    for (std::size_t at = firstOfCell(); at < boxes_.size(); ++at) {
        if (boxes_[at].item.marker.empty())
            continue;
        if (marked)
            marked->item.marker.clear();
        marked = &boxes_[at];
    }
    style_ = styleHere(marked != nullptr);
    // Paragraphs in the same cells have their distance below the upper one, as most readers of rich text expect.
    // A cell does not let the spacing of its last paragraph out, so after a table the lower one has it above.
    if (!result_.paragraphs.empty()) {
        HTMLParagraphs::Paragraph& before = result_.paragraphs.back();
        if (before.style.textBlocks == style_.textBlocks)
            before.style.paragraphSpacing = gap_.value();
        else if (before.style.textBlocks.size() > style_.textBlocks.size())
            style_.paragraphSpacingBefore = gap_.value();
    }
    gap_.reset();
    if (marked)
        put(u"\t" + std::exchange(marked->item.marker, {}) + u"\t", marked->item.textStyle);
    contentStart_ = result_.text.size();
}

void Builder::endParagraph(bool withLineFeed, bool evenIfEmpty) {
    if (!isOpen_)
        return;
    // The last break of a box ends its line and shows nothing more.
    const std::size_t content = result_.text.size() - contentStart_;
    if (content > 0 && result_.text.back() == lineSeparator) {
        cutLast();
        evenIfEmpty = true;
    }
    pendingSpace_.reset();
    if (content == 0 && !evenIfEmpty) {
        isOpen_ = false;
        return;
    }
    if (withLineFeed)
        put(u"\n", lastTextStyle_);
    isOpen_ = false;
    if (result_.text.size() > start_)
        result_.paragraphs.push_back({result_.text.size() - start_, std::move(style_)});
    style_ = {};
}

void Builder::cutLast() {
    result_.text.pop_back();
    if (--result_.runs.back().length == 0)
        result_.runs.pop_back();
}

void Builder::put(std::u16string_view units, std::uint32_t textStyle, std::uint32_t image) {
    if (units.empty())
        return;
    result_.text += units;
    lastTextStyle_ = textStyle;
    // Pictures have a run each, and runs end where paragraphs do, because attributes do.
    const bool isNew = result_.runs.empty() || result_.runs.back().textStyle != textStyle ||
                       result_.runs.back().image != image || image != HTMLParagraphs::noImage ||
                       result_.text.size() - units.size() == start_;
    if (isNew)
        result_.runs.push_back({units.size(), textStyle, image});
    else
        result_.runs.back().length += units.size();
}

void Builder::putText(std::u16string_view text, std::uint32_t textStyle) {
    switch (page_.textStyles[textStyle].whiteSpace) {
    case RenderedPage::WhiteSpace::collapse:
        putCollapsed(text, textStyle, false);
        break;
    case RenderedPage::WhiteSpace::preserveBreaks:
        putCollapsed(text, textStyle, true);
        break;
    case RenderedPage::WhiteSpace::preserve:
        putPreserved(text, textStyle);
        break;
    }
}

void Builder::putCollapsed(std::u16string_view text, std::uint32_t textStyle, bool keepsBreaks) {
    std::size_t at = 0;
    while (at < text.size()) {
        if (isCollapsible(text[at])) {
            if (keepsBreaks && text[at] == u'\n')
                putBreak(textStyle);
            else if (isOpen_ && result_.text.size() > contentStart_ && result_.text.back() != lineSeparator &&
                     result_.text.back() != u' ' && !pendingSpace_)
                pendingSpace_ = textStyle;
            ++at;
            continue;
        }
        std::size_t end = at;
        while (end < text.size() && !isCollapsible(text[end]))
            ++end;
        startParagraph();
        if (pendingSpace_) {
            put(u" ", *pendingSpace_);
            pendingSpace_.reset();
        }
        put(text.substr(at, end - at), textStyle);
        at = end;
    }
}

void Builder::putPreserved(std::u16string_view text, std::uint32_t textStyle) {
    while (!text.empty()) {
        const std::size_t lineFeed = text.find(u'\n');
        const std::u16string_view line = text.substr(0, lineFeed);
        startParagraph();
        if (pendingSpace_ && !line.empty()) {
            put(u" ", *pendingSpace_);
            pendingSpace_.reset();
        }
        put(line, textStyle);
        if (lineFeed == std::u16string_view::npos)
            break;
        lastTextStyle_ = textStyle;
        endParagraph(true, true);
        text.remove_prefix(lineFeed + 1);
    }
}

void Builder::putBreak(std::uint32_t textStyle) {
    startParagraph();
    pendingSpace_.reset();
    put(std::u16string_view(&lineSeparator, 1), textStyle);
}

void Builder::putImage(const RenderedPage::Event& event) {
    const RenderedPage::Image& image = page_.images[event.index];
    if (image.data.isNil()) {
        putText(image.alternative.characters(), event.style);
        return;
    }
    startParagraph();
    if (pendingSpace_) {
        put(u" ", *pendingSpace_);
        pendingSpace_.reset();
    }
    put(std::u16string_view(&NSAttachmentCharacter, 1), event.style, event.index);
}

} // namespace

HTMLParagraphs paragraphsOfPage(const RenderedPage& page) {
    return Builder(page).build();
}

} // namespace kelvo
