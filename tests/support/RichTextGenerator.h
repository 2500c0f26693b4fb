#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/appkit/NSFileWrapper.h"

#include <algorithm>
#include <random>
#include <string>

namespace kelvo::tests {

/// Attributed text of many shapes, the same for the same seed. Its values are such that RTF keeps them: whole
/// twips, half points, colours in 1/100000.
class RichTextGenerator {
public:
    explicit RichTextGenerator(unsigned seed) : random_(seed) {}

    NSAttributedString text(std::size_t blocks) {
        while (blocks-- > 0) {
            const std::size_t kind = below(6);
            if (kind == 0)
                appendList();
            else if (kind == 1)
                appendTable({}, 0);
            else
                appendParagraph(style({}));
        }
        // An end without a line feed.
        if (below(2) == 0)
            result_.append(words(), run(style({})));
        return std::move(result_).copy();
    }

    std::size_t below(std::size_t count) { return random_() % count; }

    /// A string of letters, signs and scripts without line feeds, not empty.
    std::u16string words() {
        static constexpr std::u16string_view pieces =
            u"plain words |d\u00E9j\u00E0 vu |\u201Cquotes\u201D \u2014 \u20AC\u00A0|{braces} \\back\\ "
            u"|\u6F22\u5B57\u304B\u306A|\u05E9\u05DC\u05D5\u05DD "
            u"|\U0001F600\U0001F469\u200D\U0001F680|\ttab\t|\u2028|\f|\u00AC\u00AD|\u0301\uFEFF|\xD800|"
            u"\xDC00x|\x01\x7F\x85|\r|\u2029| |x|\uFFFE\uFFFF|";
        std::u16string units;
        for (std::size_t count = 1 + below(4); count > 0; --count)
            for (std::size_t start = below(pieces.size() - 1); pieces[start] != u'|'; ++start)
                units += pieces[start];
        return units.empty() ? u"x" : units;
    }

private:
    using Attributes = NSAttributedString::Attributes;
    using Style = std::shared_ptr<const NSParagraphStyle>;
    using Blocks = std::vector<std::shared_ptr<const NSTextTableBlock>>;

    bool sometimes() { return below(4) == 0; }
    float quarters(std::size_t limit) { return static_cast<float>(below(limit)) / 4; }

    NSColor color() {
        const auto component = [this] { return static_cast<float>(below(101) * 1000) / 100000; };
        return {component(), component(), component(), sometimes() ? component() : 1};
    }

    NSTextBlockLength length() {
        return below(2) == 0
                   ? NSTextBlockLength{10 + quarters(200), NSTextBlockLength::Unit::points}
                   : NSTextBlockLength{static_cast<float>(10 + below(60)), NSTextBlockLength::Unit::percent};
    }

    Style style(const Blocks& blocks) {
        NSParagraphStyle result;
        result.textBlocks = blocks;
        if (below(3) == 0)
            return std::make_shared<const NSParagraphStyle>(result);
        result.alignment = static_cast<NSTextAlignment>(below(5));
        result.baseWritingDirection = static_cast<NSWritingDirection>(static_cast<int>(below(3)) - 1);
        result.headIndent = quarters(200);
        result.firstLineHeadIndent = quarters(200);
        result.tailIndent = sometimes() ? quarters(400) - 50 : 0;
        if (sometimes())
            for (std::size_t edge = below(4); edge < 4; ++edge) {
                result.borders[edge] = {0.5F + quarters(4),
                                        sometimes() ? std::optional(color()) : std::nullopt};
                result.borderSpacing[edge] = quarters(8);
            }
        result.paragraphSpacing = quarters(50);
        result.paragraphSpacingBefore = sometimes() ? quarters(50) : 0;
        result.lineSpacing = sometimes() ? quarters(20) : 0;
        result.lineHeightMultiple = sometimes() ? static_cast<float>(1 + below(700)) / 240 : 0;
        result.minimumLineHeight = sometimes() ? quarters(100) : 0;
        result.maximumLineHeight = sometimes() ? quarters(100) : 0;
        result.headerLevel = sometimes() ? static_cast<int>(below(7)) : 0;
        result.defaultTabInterval = sometimes() ? quarters(200) : 0;
        float location = 0;
        for (std::size_t count = sometimes() ? below(4) : 0; count > 0; --count) {
            location += 1 + quarters(100);
            result.tabStops.push_back({location, static_cast<NSTextTabType>(below(4))});
        }
        return std::make_shared<const NSParagraphStyle>(result);
    }

    Attributes run(const Style& style) {
        NSTextAttributes result;
        result.paragraphStyle = style;
        static constexpr const char16_t* families[] = {u"Helvetica", u"Times New Roman", u"Menlo",
                                                       u"\u30D2\u30E9\u30AE\u30CE", u"Odd {name}\\ 2"};
        result.font.familyName = families[below(std::size(families))];
        result.font.isFixedPitch = result.font.familyName == u"Menlo";
        result.font.pointSize = sometimes() ? static_cast<float>(below(90000) + 500) / 1000
                                            : static_cast<float>(below(100) + 1) / 2;
        result.font.isBold = sometimes();
        result.font.isItalic = sometimes();
        if (sometimes())
            result.foregroundColor = color();
        if (sometimes())
            result.backgroundColor = color();
        static constexpr NSUnderlineStyle lines[] = {NSUnderlineStyleNone, NSUnderlineStyleSingle,
                                                     NSUnderlineStyleDouble, NSUnderlineStyleThick};
        result.underlineStyle = sometimes() ? lines[below(4)] : NSUnderlineStyleNone;
        result.strikethroughStyle = sometimes() ? lines[below(3)] : NSUnderlineStyleNone;
        result.superscript = sometimes() ? static_cast<int>(below(5)) - 2 : 0;
        result.baselineOffset = sometimes() ? quarters(20) * 2 - 5 : 0;
        result.kern = sometimes() ? quarters(20) - 2 : 0;
        static constexpr const char16_t* links[] = {u"http://example.org/", u"file:///a%20b?\"q\"\\{}#\u201D",
                                                    u"x y"};
        if (sometimes())
            result.link = links[below(std::size(links))];
        return std::make_shared<const NSTextAttributes>(result);
    }

    /// Without its end.
    void appendRuns(const Style& style) {
        for (std::size_t count = below(4); count > 0; --count) {
            const Attributes attributes = run(style);
            if (below(8) == 0)
                appendAttachment(*attributes);
            else
                result_.append(words(), attributes);
        }
    }

    void appendParagraph(const Style& style) {
        appendRuns(style);
        result_.append(u"\n", run(style));
    }

    void appendAttachment(NSTextAttributes attributes) {
        const std::string name = "picture \xC3\xA9 {" + std::to_string(++attachmentCount_) + "}.png";
        const auto file =
            NSFileWrapper::initRegularFileWithContents(NSData::dataWithBytes(std::string(below(50), '\xAC')));
        file->setPreferredFilename(NSString::stringWithUTF8String(name));
        auto attachment = std::make_shared<NSTextAttachment>();
        attachment->fileWrapper = file;
        if (below(2) == 0)
            attachment->displaySize = {1 + quarters(400), 1 + quarters(400)};
        attributes.attachment = attachment;
        result_.append(u"\xFFFC", std::make_shared<const NSTextAttributes>(attributes));
    }

    void appendList() {
        static constexpr const char16_t* formats[] = {u"{disc}",        u"{decimal}.", u"({lower-alpha})",
                                                      u"{upper-roman}", u"{hyphen}",   u"{lower-greek}",
                                                      u"\u2605",        u"{check}"};
        std::vector<std::shared_ptr<const NSTextList>> lists;
        for (std::size_t items = 1 + below(6); items > 0; --items) {
            if (lists.empty() || (lists.size() < 9 && sometimes())) {
                auto list = std::make_shared<NSTextList>();
                list->markerFormat = formats[below(std::size(formats))];
                list->startingItemNumber = sometimes() ? static_cast<int>(below(9)) : 1;
                lists.push_back(list);
            } else if (lists.size() > 1 && sometimes()) {
                lists.pop_back();
            }
            NSParagraphStyle itemStyle = *style({});
            itemStyle.textLists = lists;
            const auto shared = std::make_shared<const NSParagraphStyle>(itemStyle);
            if (!sometimes()) {
                const NSString marker = lists.back()->markerForItemNumber(static_cast<int>(below(20)) + 1);
                result_.append(u"\t" + std::u16string(marker.characters()) + u"\t", run(shared));
            }
            appendParagraph(shared);
        }
    }

    std::shared_ptr<const NSTextTableBlock> block(const std::shared_ptr<const NSTextTable>& table,
                                                  std::size_t row, std::size_t column, std::size_t rowSpan,
                                                  std::size_t columnSpan) {
        auto result = std::make_shared<NSTextTableBlock>();
        result->table = table;
        result->startingRow = static_cast<int>(row);
        result->startingColumn = static_cast<int>(column);
        result->rowSpan = static_cast<int>(rowSpan);
        result->columnSpan = static_cast<int>(columnSpan);
        if (below(2) == 0)
            result->width = length();
        for (NSTextBlockBorder& border : result->borders) {
            if (sometimes())
                border = {quarters(20) + 0.25F, sometimes() ? std::optional(color()) : std::nullopt};
        }
        for (float& padding : result->padding)
            padding = sometimes() ? quarters(40) : 0;
        if (sometimes())
            result->backgroundColor = color();
        result->verticalAlignment = static_cast<NSTextBlockVerticalAlignment>(below(3));
        return result;
    }

    void appendTable(const Blocks& outer, std::size_t depth) {
        const std::size_t columns = 1 + below(4);
        const std::size_t rows = 1 + below(4);
        auto table = std::make_shared<NSTextTable>();
        table->numberOfColumns = static_cast<int>(columns);
        if (sometimes())
            table->width = length();
        if (sometimes())
            table->backgroundColor = color();
        // For each column, the first row that no cell from further up reaches. The first row has all edges,
        // and the last column is never spanned, so that each row has a cell of its own.
        std::vector<std::size_t> freeFrom(columns, 0);
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t column = 0; column < columns; ++column) {
                if (freeFrom[column] > row)
                    continue;
                std::size_t columnSpan = 1;
                while (row > 0 && column + columnSpan < columns && freeFrom[column + columnSpan] <= row &&
                       sometimes())
                    ++columnSpan;
                const bool reachesEnd = column + columnSpan == columns;
                const std::size_t rowSpan = reachesEnd ? 1 : 1 + (sometimes() ? below(rows - row) : 0);
                std::fill_n(freeFrom.begin() + static_cast<std::ptrdiff_t>(column), columnSpan,
                            row + rowSpan);
                Blocks blocks = outer;
                blocks.push_back(block(table, row, column, rowSpan, columnSpan));
                appendCell(blocks, depth);
            }
        }
    }

    void appendCell(const Blocks& blocks, std::size_t depth) {
        if (sometimes())
            appendParagraph(style(blocks));
        if (depth < 2 && below(6) == 0)
            appendTable(blocks, depth + 1);
        const Style last = style(blocks);
        appendRuns(last);
        // The end of a cell is in no link.
        NSTextAttributes end = *run(last);
        end.link = nullptr;
        result_.append(u"\n", std::make_shared<const NSTextAttributes>(end));
    }

    std::mt19937 random_;
    NSMutableAttributedString result_;
    std::size_t attachmentCount_ = 0;
};

} // namespace kelvo::tests
