#include "cli/MetadataTable.h"

#include <algorithm>
#include <string_view>

namespace kelvo::cli {
namespace {

constexpr std::size_t widestLabel = 24;

std::size_t widthOf(const std::string& text) {
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (byte & '\xC0') != '\x80'; }));
}

} // namespace

std::string tableOfRows(const std::vector<MetadataRow>& rows, const Output& output) {
    std::size_t width = 0;
    for (const MetadataRow& row : rows)
        width = std::max(width, std::min(widthOf(row.label), widestLabel));
    std::string table;
    for (const MetadataRow& row : rows) {
        const std::size_t own = widthOf(row.label);
        table += output.styled(Style::strong, row.label) + std::string(own < width ? width - own : 0, ' ');
        std::string lead = "  ";
        std::string_view rest = row.text;
        for (bool isFirst = true; isFirst || !rest.empty(); isFirst = false) {
            const std::size_t end = std::min(rest.find('\n'), rest.size());
            if (end > 0)
                table.append(lead).append(rest.substr(0, end));
            table += '\n';
            rest.remove_prefix(std::min(end + 1, rest.size()));
            lead = std::string(width + 2, ' ');
        }
    }
    return table;
}

} // namespace kelvo::cli
