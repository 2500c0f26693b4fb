#include "platform/appkit/rtfreader/RTFTableBuilder.h"

#include "platform/appkit/rtfreader/RTFColorTable.h"
#include "platform/appkit/rtfreader/RTFScanner.h"
#include "platform/appkit/rtfreader/RTFWords.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace kelvo {
namespace {

/// Feeds a builder with source that is nothing but words of rows, text, and \par, \cell and \row, whose numbers
/// are levels. Shows each paragraph that stays as its text and its cells, the outermost first: row, column,
/// rows and columns spanned where that is not 1, columns of the table, and width in points. Paragraphs of
/// different tables are in different numbers of asterisks.
std::string tablesOf(std::string_view source) {
    RTFCells cells;
    const RTFColorTable colors;
    RTFTableBuilder builder(cells, colors);
    std::vector<std::pair<std::string, RTFCellIndex>> paragraphs;
    std::string text;
    const auto endParagraph = [&](int level) {
        const RTFCellIndex cell = builder.paragraphEnded(level, paragraphs.size(), text.empty());
        paragraphs.emplace_back(std::exchange(text, {}), cell);
    };
    const auto define = [&builder](int level, const RTFToken& word) {
        applyRTFWord(RTFRowDefinition::words(), builder.definition(level), word);
    };
    RTFScanner scanner(source);
    for (RTFToken token = scanner.next(); token.kind != RTFToken::Kind::end; token = scanner.next()) {
        const int level = token.hasParameter ? token.parameter : 1;
        if (token.kind == RTFToken::Kind::text) {
            text += token.bytes;
        } else if (token.bytes == "itap") {
            define(level, {.bytes = "trowd"});
            define(level, {.parameter = 400, .bytes = "cellx"});
        } else if (token.bytes == "par") {
            endParagraph(level);
        } else if (token.bytes == "cell") {
            endParagraph(level);
            builder.cellEnded(level);
        } else if (token.bytes == "row") {
            builder.rowEnded(level);
        } else {
            define(1, token);
        }
    }
    builder.finish();
    const RTFTableBuilder::Dropped dropped = builder.takeDropped();
    std::ostringstream shown;
    std::vector<const NSTextTable*> tables;
    for (std::size_t index = 0; index < paragraphs.size(); ++index) {
        if (std::ranges::find(dropped, index) != dropped.end())
            continue;
        shown << (shown.tellp() > 0 ? "; " : "") << paragraphs[index].first;
        for (const auto& block : cells.blocksOf(paragraphs[index].second)) {
            const auto table = std::ranges::find(tables, block->table.get());
            shown << ' ' << std::string(static_cast<std::size_t>(table - tables.begin()), '*')
                  << block->startingRow << ',' << block->startingColumn;
            if (table == tables.end())
                tables.push_back(block->table.get());
            if (block->rowSpan != 1 || block->columnSpan != 1)
                shown << '+' << block->rowSpan << ',' << block->columnSpan;
            shown << '/' << block->table->numberOfColumns;
            if (block->width)
                shown << ':' << block->width->value
                      << (block->width->unit == NSTextBlockLength::Unit::percent ? "%" : "");
        }
    }
    return shown.str();
}

TEST(RTFTableBuilderTest, Tables) {
    const char* const rows[][3] = {
        {"a third cell beside a merged span stands for itself",
         "\\trowd\\clmgf\\clvmgf\\cellx1000\\clmrg\\cellx2000\\cellx3000 a\\cell\\cell "
         "b\\cell\\row\\trowd\\clvmrg\\cellx1000\\clvmrg\\cellx2000\\clvmrg\\cellx3000\\cell\\cell\\cell\\ro"
         "w",
         "a 0,0+2,1/2:100; b 0,1/2:50;  1,1/2:50"},
        {"one cell under a merged span is as wide as it",
         "\\trowd\\clmgf\\clvmgf\\cellx1000\\clmrg\\clvmgf\\cellx2000\\cellx3000 a\\cell\\cell "
         "b\\cell\\row\\trowd\\clvmrg\\cellx2000\\cellx3000\\cell c\\cell\\row",
         "a 0,0+2,1/2:100; b 0,1/2:50; c 1,1/2:50"},
        {"spans go on as long as each row continues them",
         "\\trowd\\clvmgf\\cellx1000\\cellx2000 a\\cell "
         "b\\cell\\row\\trowd\\clvmrg\\cellx1000\\cellx2000\\cell "
         "c\\cell\\row\\trowd\\clvmrg\\cellx1000\\cellx2000\\cell d\\cell\\row\\trowd\\cellx1000\\cellx2000 "
         "e\\cell f\\cell\\row\\trowd\\clvmrg\\cellx1000\\cellx2000\\cell g\\cell\\row",
         "a 0,0+3,1/2:50; b 0,1/2:50; c 1,1/2:50; d 2,1/2:50; e 3,0/2:50; f 3,1/2:50;  4,0/2:50; g 4,1/2:50"},
        {"edges that differ by less than a point are one",
         "\\trowd\\trleft19\\clvmgf\\cellx1000\\cellx2000 a\\cell "
         "b\\cell\\row\\trowd\\clvmrg\\cellx1019\\cellx2000\\cell "
         "c\\cell\\row\\trowd\\trleft38\\clvmrg\\cellx1000\\cellx2000\\cell d\\cell\\row",
         "a 0,0+3,1/2:49.05; b 0,1/2:50; c 1,1/2:49.05; d 2,1/2:50"},
        {"edges that differ by a point are two",
         "\\trowd\\clvmgf\\cellx1000 a\\cell\\row\\trowd\\trleft20\\clvmrg\\cellx1020\\cell\\row",
         "a 0,0+1,2/3:50;  1,1+1,2/3:50"},
        {"a span that begins further right is not continued",
         "\\trowd\\cellx1000\\clvmgf\\cellx2000 a\\cell b\\cell\\row\\trowd\\clvmrg\\cellx1000\\cell\\row",
         "a 0,0/2:50; b 0,1/2:50;  1,0/2:50"},
        {"nothing to the left, nothing above", "\\trowd\\clmrg\\clvmrg\\cellx1000\\cell\\row", " 0,0/1:50"},
        {"a covered cell with two paragraphs stays",
         "\\trowd\\clmgf\\cellx1000\\clmrg\\cellx2000 a\\cell\\par\\cell\\row",
         "a 0,0/2:50;  0,1/2:50;  0,1/2:50"},
        {"a cell to the right of one that stays beside a merged one",
         "\\trowd\\clmgf\\cellx1000\\clmrg\\cellx2000\\clmrg\\cellx3000 a\\cell b\\cell\\cell\\row",
         "a 0,0/2:50; b 0,1/2:100"},
        {"rows that all say that they are the first are of one table",
         "\\trowd\\irow0\\cellx1000 a\\cell\\row\\trowd\\irow0\\cellx1000 b\\cell\\row",
         "a 0,0/1:50; b 1,0/1:50"},
        {"a first row after others begins a table",
         "\\trowd\\irow0\\cellx1000 a\\cell\\row\\trowd\\irow1\\cellx1000 "
         "b\\cell\\row\\trowd\\irow0\\cellx1000 c\\cell\\row",
         "a 0,0/1:50; b 1,0/1:50; c *0,0/1:50"},
        {"a definition serves the rows after it, what it says of its own row does not",
         "\\trowd\\irow1\\lastrow\\cellx1000 a\\cell\\row b\\cell\\row c\\cell\\row",
         "a 0,0/1:50; b *0,0/1:50; c *1,0/1:50"},
        {"a span ends with its table",
         "\\trowd\\lastrow\\clvmgf\\cellx1000 a\\cell\\row\\trowd\\clvmrg\\cellx1000\\cell\\row",
         "a 0,0/1:50;  *0,0/1:50"},
        {"text between rows ends the table", "\\trowd\\cellx1000 a\\cell\\row x\\par0 b\\cell\\row",
         "a 0,0/1:50; x; b *0,0/1:50"},
        {"more cells than are defined", "\\trowd\\cellx1000 a\\cell b\\cell c\\cell\\row",
         "a 0,0/3:50; b 0,1/3; c 0,2/3"},
        {"the cells of a row that is not defined are the first columns",
         "a\\cell b\\cell\\row\\trowd\\trleft-500\\cellx-100\\cellx2000 c\\cell d\\cell\\row",
         "a 0,0/2; b 0,1/2; c 1,0/2:20; d 1,1/2:105"},
        {"edges that go back", "\\trowd\\cellx1000\\cellx500\\cellx2000 a\\cell b\\cell c\\cell\\row",
         "a 0,0/3:50; b 0,1/3; c 0,2/3:50"},
        {"units of widths",
         "\\trowd\\clftsWidth0\\clwWidth9\\cellx1000\\clftsWidth1\\clwWidth9\\cellx2000\\clftsWidth2\\clwWidt"
         "h50\\cellx3000\\clftsWidth3\\clwWidth50\\cellx4000\\clftsWidth4\\clwWidth9\\cellx5000 a\\cell "
         "b\\cell c\\cell d\\cell e\\cell\\row",
         "a 0,0/5:50; b 0,1/5; c 0,2/5:1%; d 0,3/5:2.5; e 0,4/5:50"},
        {"tables in a cell, the second without its end",
         "\\trowd\\cellx1000 a\\par1\\itap2 b\\cell2\\row2 c\\par1 d\\cell2\\row2 e\\cell2 f\\cell\\row",
         "a 0,0/1:50; b 0,0/1:50 *0,0/1:20; c 0,0/1:50; d 0,0/1:50 **0,0/1:20; e 0,0/1:50 **1,0/1:20; f "
         "0,0/1:50"},
        {"a cell with nothing but a table is not empty",
         "\\trowd\\clmgf\\cellx1000\\clmrg\\cellx2000 a\\cell b\\cell2\\row2\\cell\\row",
         "a 0,0/2:50; b 0,1/2:50 *0,0/1;  0,1/2:50"},
    };
    for (const auto& [name, source, tables] : rows)
        EXPECT_EQ(tablesOf(source), tables) << name;
}

TEST(RTFTableBuilderTest, DeepTables) {
    RTFCells cells;
    const RTFColorTable colors;
    RTFTableBuilder builder(cells, colors);
    const RTFCellIndex cell = builder.paragraphEnded(RTFTableBuilder::maximumLevel + 5, 0, false);
    EXPECT_EQ(cells.blocksOf(cell).size(), std::size_t{RTFTableBuilder::maximumLevel});
    builder.finish();
    for (const auto& block : cells.blocksOf(cell))
        EXPECT_EQ(block->table->numberOfColumns, 1);
}

TEST(RTFTableBuilderTest, CellsAreBounded) {
    RTFCells cells;
    const RTFCellIndex outer = cells.add(-1);
    while (cells.blocksOf(outer).size() == 1 && cells.add(outer) >= 0) {
    }
    EXPECT_EQ(cells.add(-1), -1);
    cells.release(5);
    const RTFCellIndex again = cells.add(3);
    EXPECT_EQ(again, 5);
    EXPECT_EQ(cells.blocksOf(again).size(), 3u) << "with the parent that it is given";
    EXPECT_EQ(cells.add(-1), -1);
    EXPECT_TRUE(cells.blocksOf(-1).empty());

    cells.release(5);
    const RTFColorTable colors;
    RTFTableBuilder builder(cells, colors);
    EXPECT_EQ(builder.paragraphEnded(2, 0, false), 5)
        << "the outer cell, where none is left for the inner one";
    builder.cellEnded(1);
    EXPECT_EQ(builder.paragraphEnded(1, 1, false), -1);
    builder.rowEnded(1);
    builder.finish();
    const auto table = cells.blocksOf(5).at(0)->table;
    EXPECT_EQ(table ? table->numberOfColumns : 0, 1);
}

} // namespace
} // namespace kelvo
