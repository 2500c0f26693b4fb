#include "platform/appkit/rtfwriter/RTFTableLayout.h"

#include "platform/appkit/rtfwriter/RTFHeadTables.h"
#include "platform/appkit/rtfwriter/RTFOutput.h"

#include <gtest/gtest.h>

namespace kelvo {
namespace {

constexpr NSTextBlockLength points(float value) {
    return {value, NSTextBlockLength::Unit::points};
}
constexpr NSTextBlockLength percent(float value) {
    return {value, NSTextBlockLength::Unit::percent};
}

struct Cell {
    int row;
    int column;
    int rowSpan = 1;
    int columnSpan = 1;
    std::optional<NSTextBlockLength> width{};
};

struct Table {
    explicit Table(const std::vector<Cell>& cells, std::optional<NSTextBlockLength> width = std::nullopt) {
        table->width = width;
        for (const Cell& cell : cells) {
            NSTextTableBlock block;
            block.table = table;
            block.startingRow = cell.row;
            block.startingColumn = cell.column;
            block.rowSpan = cell.rowSpan;
            block.columnSpan = cell.columnSpan;
            block.width = cell.width;
            blocks.push_back(block);
        }
    }
    RTFTableLayout layout(std::int32_t available) const {
        std::vector<const NSTextTableBlock*> pointers;
        for (const NSTextTableBlock& block : blocks)
            pointers.push_back(&block);
        return {pointers, available};
    }

    std::shared_ptr<NSTextTable> table = std::make_shared<NSTextTable>();
    std::vector<NSTextTableBlock> blocks;
};

/// The rows, in bars the places of each: the number of its cell if it has one, H and h where the first and the
/// other columns of a cell are, V and v where its first and its other rows are, and the right edge.
std::string placesOf(const RTFTableLayout& layout) {
    std::string shown;
    for (std::size_t row = 0; row < layout.rows().size(); ++row) {
        RTFColorNumbers colors;
        RTFOutput output;
        layout.writeDefinition(row, colors, output);
        std::string_view definition = output.bytes();
        for (const RTFTableLayout::Place& place : layout.rows()[row]) {
            shown += shown.empty() || shown.ends_with('\n') ? "" : "|";
            if (place.cell >= 0)
                shown += std::to_string(place.cell);
            definition.remove_prefix(definition.find("\n") + 1);
            const std::string_view line = definition.substr(0, definition.find('\n'));
            for (const auto& [word, letter] : {std::pair{"\\clmgf", 'H'}, std::pair{"\\clmrg", 'h'},
                                               std::pair{"\\clvmgf", 'V'}, std::pair{"\\clvmrg", 'v'}})
                if (line.find(word) != std::string_view::npos)
                    shown += letter;
            shown += ":" + std::string(line.substr(line.find("\\cellx") + 6));
        }
        shown += '\n';
    }
    return shown;
}

TEST(RTFTableLayoutTest, Places) {
    const std::tuple<const char*, std::vector<Cell>, const char*> rows[] = {
        {"one after another", {{0, 0}, {0, 1}, {1, 0}, {1, 1}}, "0:500|1:1000\n2:500|3:1000\n"},
        {"gaps", {{0, 0}, {0, 2}, {1, 1}}, "0:333|:666|1:1000\n:333|2:666\n"},
        {"columns that are spanned", {{0, 0, 1, 2}, {0, 2}, {1, 0}}, "0H:333|h:666|1:1000\n2:333\n"},
        {"rows that are spanned",
         {{0, 0, 2}, {0, 1}, {1, 1}, {2, 0}},
         "0V:500|1:1000\nv:500|2:1000\n3:500\n"},
        {"a span over a row that has no cells", {{0, 0, 2}, {0, 1}, {2, 0}}, "0:500|1:1000\n2:500\n"},
        {"a span past the end", {{0, 0, 9}, {0, 1}, {1, 1}}, "0V:500|1:1000\nv:500|2:1000\n"},
        {"a span in the last row", {{0, 0, 2}}, "0:1000\n"},
        {"rows and columns at once",
         {{0, 0, 2, 2}, {0, 2}, {1, 2}},
         "0HV:333|hV:666|1:1000\nHv:333|hv:666|2:1000\n"},
        {"a span to the right of the cells",
         {{0, 0}, {0, 1, 2, 2}, {1, 0}},
         "0:333|1HV:666|hV:1000\n2:333|Hv:666|hv:1000\n"},
        {"a cell on what another one spans takes the place",
         {{0, 0, 2, 2}, {1, 0}},
         "0HV:500|hV:1000\n1:500|v:1000\n"},
        {"two cells at one place are in two rows", {{0, 0}, {0, 0}}, "0:1000\n1:1000\n"},
        {"a row that goes back begins a table's rows anew",
         {{1, 0, 5}, {1, 1}, {0, 0}, {0, 1}, {1, 1}},
         "0:500|1:1000\n2:500|3:1000\n:500|4:1000\n"},
        {"spans end there",
         {{0, 0, 9}, {0, 1}, {1, 1}, {0, 1}},
         "0V:500|1:1000\nv:500|2:1000\n:500|3:1000\n"},
        {"before the first column, less than one column", {{0, -3, -1, -1}, {0, 1}}, "0:500|1:1000\n"},
    };
    for (const auto& [name, cells, places] : rows)
        EXPECT_EQ(placesOf(Table(cells).layout(1000)), places) << name;
}

TEST(RTFTableLayoutTest, NoCellIsLostPastTheLastColumn) {
    const auto last = RTFTableLayout::maximumColumns - 1;
    const Table table({{0, 0}, {0, 62, 1, 2}, {0, 63}, {0, 1000}, {1, 62, 1, 5}});
    const RTFTableLayout layout = table.layout(10000);
    ASSERT_EQ(layout.rows().size(), 2u);
    ASSERT_EQ(layout.rows()[0].size(), last + 3);
    for (std::size_t place = 0; place < 3; ++place) {
        EXPECT_EQ(layout.rows()[0][last + place].cell, static_cast<int>(place) + 1);
        EXPECT_FALSE(layout.rows()[0][last + place].beginsColumnSpan);
    }
    EXPECT_EQ(layout.rows()[1].size(), last + 1);
}

TEST(RTFTableLayoutTest, Widths) {
    const std::tuple<const char*, std::optional<NSTextBlockLength>, std::vector<Cell>, const char*> rows[] = {
        {"what is left is shared",
         std::nullopt,
         {{0, 0}, {0, 1, 1, 1, points(20)}, {0, 2}},
         "0:300|1:700|2:1000\n"},
        {"percents of the table", percent(50), {{0, 0, 1, 1, percent(40)}, {0, 1}}, "0:200|1:500\n"},
        {"a table of its own width", points(100), {{0, 0}, {0, 1}}, "0:1000|1:2000\n"},
        {"a table that is too narrow", points(1), {{0, 0}, {0, 1}}, "0:100|1:200\n"},
        {"nothing left", std::nullopt, {{0, 0, 1, 1, points(50)}, {0, 1}}, "0:1000|1:1100\n"},
        {"columns that are too narrow",
         std::nullopt,
         {{0, 0, 1, 1, points(1)}, {0, 1, 1, 1, points(-5)}},
         "0:100|1:200\n"},
        {"wider than any page",
         std::nullopt,
         {{0, 0, 1, 1, points(1584)}, {0, 1, 1, 1, points(4752)}},
         "0:15840|1:31680\n"},
        {"the first row that says it",
         std::nullopt,
         {{0, 0, 1, 2, points(5)}, {1, 0, 1, 1, points(10)}, {1, 1}, {2, 0, 1, 1, points(30)}},
         "0H:200|h:1000\n1:200|2:1000\n3:200\n"},
    };
    for (const auto& [name, whole, cells, places] : rows)
        EXPECT_EQ(placesOf(Table(cells, whole).layout(1000)), places) << name;

    Table table({{0, 0, 1, 2}, {0, 2}, {1, 1}, {2, 3}});
    table.blocks[0].padding = {2, 9, 3, 9};
    table.blocks[1].padding = {20, 0, 20, 0};
    const RTFTableLayout layout = table.layout(4000);
    EXPECT_EQ(layout.widthInside(0, 0), 1900) << "two columns without the padding";
    EXPECT_EQ(layout.widthInside(0, 2), 200);
    EXPECT_EQ(layout.widthInside(1, 1), 1000);
    EXPECT_EQ(layout.widthInside(2, 0), 1000) << "a place of no cell";
    table.blocks[1].padding = {25, 0, 25, 0};
    EXPECT_EQ(table.layout(4000).widthInside(0, 2), 100) << "never nothing";
}

TEST(RTFTableLayoutTest, Definitions) {
    Table table({{0, 0, 1, 1, points(10)}, {0, 1, 1, 1, percent(12.5F)}, {1, 0}}, percent(50));
    table.table->backgroundColor = NSColor{1, 0, 0, 1};
    NSTextTableBlock& block = table.blocks[0];
    block.verticalAlignment = NSTextBlockVerticalAlignment::middle;
    block.backgroundColor = NSColor{0, 1, 0, 1};
    block.borders = {{{1, {}}, {0, NSColor{}}, {0.5F, NSColor{1, 0, 0, 1}}, {-1, {}}}};
    block.padding = {1, 0, 2, -3};
    table.blocks[1].verticalAlignment = NSTextBlockVerticalAlignment::bottom;
    const RTFTableLayout layout = table.layout(2000);
    RTFColorNumbers colors;
    RTFOutput output;
    layout.writeDefinition(0, colors, output);
    layout.writeDefinition(1, colors, output);
    EXPECT_EQ(output.bytes(),
              "\\trowd\\irow0\\irowband0\\trcbpat2\\trftsWidth2\\trwWidth2500\n"
              "\\clvertalc\\clcbpat3\\clbrdrl\\brdrs\\brdrw20\\clbrdrr\\brdrs\\brdrw10\\brdrcf2\\clpadl20\\cl"
              "padfl3\\clpadr40\\clpadfr3\\clpadb-60\\clpadfb3\\clftsWidth3\\clwWidth200\\cellx200\n"
              "\\clvertalb\\clftsWidth2\\clwWidth625\\cellx325\n"
              "\\trowd\\irow1\\irowband1\\lastrow\\trcbpat2\\trftsWidth2\\trwWidth2500\n"
              "\\clvertalt\\clftsWidth1\\cellx200\n");
}

} // namespace
} // namespace kelvo
