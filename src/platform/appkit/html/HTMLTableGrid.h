#pragma once

#include "platform/appkit/NSTextTable.h"
#include "platform/webkit/RenderedPage.h"

#include <memory>
#include <vector>

namespace kelvo {

/// Places the cells of one table in its rows and columns as they come.
class HTMLTableGrid {
public:
    explicit HTMLTableGrid(const RenderedPage::Table& table);

    void addRow();
    /// The cell in the first place of the row that is not taken from above. Its table, and how far it
    /// reaches, are settled by finish().
    std::shared_ptr<const NSTextTableBlock> addCell(const RenderedPage::Cell& cell);
    /// Spans end where the table does.
    void finish();

private:
    std::shared_ptr<NSTextTable> table_ = std::make_shared<NSTextTable>();
    std::vector<std::shared_ptr<NSTextTableBlock>> cells_;
    /// For each column the rows, from this one on, that are taken by cells from above.
    std::vector<int> taken_;
    int row_ = -1;
    std::size_t column_ = 0;
};

} // namespace kelvo
