#include "cli/Sixels.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace kelvo::cli {
namespace {

constexpr std::size_t rowsOfBand = 6;
constexpr std::size_t mostColors = 256;
constexpr std::uint8_t leastAlpha = 128;
constexpr unsigned bitsOfCell = 5;
constexpr std::size_t cellCount = std::size_t{1} << (3 * bitsOfCell);

/// Which of the colours that are told apart it is.
std::size_t cellOf(const std::uint8_t* pixel) {
    constexpr unsigned shift = 8 - bitsOfCell;
    return (static_cast<std::size_t>(pixel[0]) >> shift) << (2 * bitsOfCell) |
           (static_cast<std::size_t>(pixel[1]) >> shift) << bitsOfCell |
           static_cast<std::size_t>(pixel[2]) >> shift;
}

using Sums = std::array<std::uint64_t, 3>;

struct Cell {
    std::size_t number = 0;
    std::uint64_t count = 0;
    Sums sums{};

    std::uint64_t mean(std::size_t channel) const { return sums[channel] / count; }
};

/// Some of the cells of an image that lie together.
struct Box {
    std::vector<Cell> cells;

    std::uint64_t extent(std::size_t channel) const {
        const auto [least, most] =
            std::ranges::minmax(cells, {}, [channel](const Cell& cell) { return cell.mean(channel); });
        return most.mean(channel) - least.mean(channel);
    }
    std::size_t longest() const {
        std::size_t found = 0;
        for (std::size_t channel = 1; channel < 3; ++channel)
            found = extent(channel) > extent(found) ? channel : found;
        return found;
    }
    std::uint64_t pixels() const {
        std::uint64_t all = 0;
        for (const Cell& cell : cells)
            all += cell.count;
        return all;
    }
    /// How much is gained by taking it apart.
    std::uint64_t spread() const { return cells.size() < 2 ? 0 : extent(longest()) * pixels(); }

    /// At the middle of its pixels along its longest side.
    Box split() {
        const std::size_t channel = longest();
        std::ranges::sort(cells, {}, [channel](const Cell& cell) { return cell.mean(channel); });
        const std::uint64_t half = pixels() / 2;
        std::uint64_t before = cells.front().count;
        std::size_t middle = 1;
        while (middle + 1 < cells.size() && before < half)
            before += cells[middle++].count;
        Box rest;
        rest.cells.assign(cells.begin() + static_cast<std::ptrdiff_t>(middle), cells.end());
        cells.resize(middle);
        return rest;
    }
};

std::vector<Box> boxesOf(const CGImage& image) {
    std::vector<Cell> cells(cellCount);
    const auto bytes = image.data().bytes();
    for (std::size_t place = 0; place < bytes.size(); place += CGImage::bytesPerPixel) {
        if (bytes[place + 3] < leastAlpha)
            continue;
        Cell& cell = cells[cellOf(&bytes[place])];
        ++cell.count;
        for (std::size_t channel = 0; channel < 3; ++channel)
            cell.sums[channel] += bytes[place + channel];
    }
    std::vector<Box> boxes(1);
    for (std::size_t number = 0; number < cellCount; ++number) {
        cells[number].number = number;
        if (cells[number].count > 0)
            boxes[0].cells.push_back(cells[number]);
    }
    if (boxes[0].cells.empty())
        return {};
    std::vector<std::uint64_t> spreads{boxes[0].spread()};
    while (boxes.size() < mostColors) {
        const auto widest = static_cast<std::size_t>(std::ranges::max_element(spreads) - spreads.begin());
        if (spreads[widest] == 0)
            break;
        boxes.push_back(boxes[widest].split());
        spreads[widest] = boxes[widest].spread();
        spreads.push_back(boxes.back().spread());
    }
    return boxes;
}

std::string paletteOf(const std::vector<Box>& boxes) {
    constexpr std::uint64_t percent = 100;
    constexpr std::uint64_t most = 255;
    std::string palette;
    for (std::size_t color = 0; color < boxes.size(); ++color) {
        Sums parts{};
        const std::uint64_t all = std::max<std::uint64_t>(boxes[color].pixels(), 1) * most;
        for (std::size_t channel = 0; channel < 3; ++channel) {
            for (const Cell& cell : boxes[color].cells)
                parts[channel] += cell.sums[channel];
            parts[channel] = (parts[channel] * percent + all / 2) / all;
        }
        palette += fmt::format("#{};2;{};{};{}", color, parts[0], parts[1], parts[2]);
    }
    return palette;
}

void addRun(std::string& line, char sixel, std::size_t count) {
    constexpr std::size_t leastRepeated = 4;
    if (count < leastRepeated)
        line.append(count, sixel);
    else
        line += fmt::format("!{}{}", count, sixel);
}

/// One colour of a band: a sign for each column, whose bits are the rows from the top.
void addLine(std::string& drawing, std::size_t color, const std::vector<std::uint8_t>& columns) {
    constexpr char nothing = '?';
    drawing += fmt::format("#{}", color);
    std::size_t place = 0;
    while (place < columns.size()) {
        std::size_t end = place;
        while (end < columns.size() && columns[end] == columns[place])
            ++end;
        // What is empty at the end of a line is left out.
        if (end < columns.size() || columns[place] != 0)
            addRun(drawing, static_cast<char>(nothing + columns[place]), end - place);
        place = end;
    }
    drawing += '$';
}

} // namespace

std::string sixelsOf(const CGImage& image) {
    const std::vector<Box> boxes = boxesOf(image);
    std::vector<std::uint8_t> colorOfCell(cellCount);
    for (std::size_t color = 0; color < boxes.size(); ++color) {
        for (const Cell& cell : boxes[color].cells)
            colorOfCell[cell.number] = static_cast<std::uint8_t>(color);
    }
    const auto bytes = image.data().bytes();
    // Nothing is painted where no sign is, and pixels are square.
    std::string drawing =
        fmt::format("\x1BP0;1;0q\"1;1;{};{}", image.width(), image.height()) + paletteOf(boxes);
    for (std::size_t top = 0; top < image.height(); top += rowsOfBand) {
        std::vector<std::vector<std::uint8_t>> lines(boxes.size());
        for (std::size_t row = top; row < std::min(top + rowsOfBand, image.height()); ++row) {
            for (std::size_t column = 0; column < image.width(); ++column) {
                const std::uint8_t* const pixel =
                    &bytes[row * image.bytesPerRow() + column * CGImage::bytesPerPixel];
                if (pixel[3] < leastAlpha)
                    continue;
                std::vector<std::uint8_t>& line = lines[colorOfCell[cellOf(pixel)]];
                line.resize(image.width());
                line[column] = static_cast<std::uint8_t>(line[column] | 1U << (row - top));
            }
        }
        for (std::size_t color = 0; color < lines.size(); ++color) {
            if (!lines[color].empty())
                addLine(drawing, color, lines[color]);
        }
        drawing += '-';
    }
    return drawing + "\x1B\\";
}

} // namespace kelvo::cli
