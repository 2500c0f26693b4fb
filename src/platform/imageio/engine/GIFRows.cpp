#include "platform/imageio/engine/GIFRows.h"

#include "platform/imageio/engine/ByteReader.h"

#include <algorithm>
#include <array>
#include <vector>

namespace kelvo {
namespace {

/// The codes in blocks of bytes, from the lowest bit of each byte.
class CodeReader {
public:
    CodeReader(std::string_view bytes, std::size_t place) : bytes_(bytes), place_(place) {}

    std::optional<std::uint32_t> next(unsigned width) {
        while (count_ < width) {
            if (left_ == 0) {
                left_ = place_ < bytes_.size() ? static_cast<unsigned char>(bytes_[place_++]) : 0U;
                // The decoder takes blocks whole or not at all.
                if (left_ == 0 || bytes_.size() - place_ < left_)
                    return std::nullopt;
            }
            bits_ |= std::uint32_t{static_cast<unsigned char>(bytes_[place_++])} << count_;
            count_ += 8;
            --left_;
        }
        const std::uint32_t code = bits_ & ((1U << width) - 1);
        bits_ >>= width;
        count_ -= width;
        return code;
    }

private:
    std::string_view bytes_;
    std::size_t place_;
    std::size_t left_ = 0;
    std::uint32_t bits_ = 0;
    unsigned count_ = 0;
};

/// How many pixels the codes stand for, up to `most`.
std::uint64_t countPixels(std::string_view bytes, std::size_t place, std::uint64_t most) {
    constexpr unsigned widest = 12;
    const unsigned bits = ByteReader(bytes, ByteOrder::little).number8(place).value_or(widest);
    if (bits >= widest)
        return 0;
    const std::uint32_t clear = 1U << bits;
    // Of what each code stands for only the length matters.
    std::array<std::uint32_t, 1U << widest> lengths{};
    std::fill_n(lengths.begin(), clear, 1U);
    std::uint32_t known = clear + 2;
    unsigned width = bits + 1;
    std::uint32_t previous = 0;
    std::uint64_t pixels = 0;
    CodeReader reader(bytes, place + 1);
    while (pixels < most) {
        const auto code = reader.next(width);
        if (!code || *code == clear + 1)
            break;
        if (*code == clear) {
            known = clear + 2;
            width = bits + 1;
            previous = 0;
            continue;
        }
        const std::uint32_t longer = previous == 0 ? 0 : previous + 1;
        if (*code > known || (*code == known && longer == 0))
            break;
        if (longer != 0 && known < lengths.size()) {
            lengths[known++] = longer;
            if (known == 1U << width && width < widest)
                ++width;
        }
        previous = lengths[*code];
        pixels += previous;
    }
    return std::min(pixels, most);
}

/// Of rows that come in four passes, how many from the top are there without a gap.
std::size_t rowsWithoutGap(std::size_t count, std::size_t height) {
    struct Pass {
        std::size_t first;
        std::size_t step;
    };
    constexpr Pass passes[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    std::vector<bool> isThere(height);
    for (const Pass& pass : passes) {
        for (std::size_t row = pass.first; row < height && count > 0; row += pass.step, --count)
            isThere[row] = true;
    }
    return static_cast<std::size_t>(std::find(isThere.begin(), isThere.end(), false) - isThere.begin());
}

} // namespace

std::size_t endOfGIFBlocks(std::string_view bytes, std::size_t place) {
    while (place < bytes.size() && bytes[place] != 0)
        place += 1 + static_cast<unsigned char>(bytes[place]);
    return place + 1;
}

std::size_t lengthOfGIFColors(std::uint8_t flags) {
    return (flags & 0x80U) != 0 ? std::size_t{3} << ((flags & 7U) + 1) : 0;
}

std::size_t decodedRowsOfGIF(std::string_view bytes, std::int64_t index) {
    const ByteReader reader(bytes, ByteOrder::little);
    constexpr std::size_t head = 13;
    constexpr std::size_t lengthOfDescriptor = 10;
    const std::size_t canvas = reader.number16(8).value_or(0);
    std::size_t place = head + lengthOfGIFColors(reader.number8(10).value_or(0));
    for (std::int64_t image = 0;;) {
        const auto introducer = reader.number8(place);
        if (introducer == 0x21) {
            place = endOfGIFBlocks(bytes, place + 2);
            continue;
        }
        const auto flags = reader.number8(place + 9);
        if (introducer != 0x2C || !flags)
            return 0;
        const std::size_t codes = place + lengthOfDescriptor + lengthOfGIFColors(*flags);
        if (image++ < index) {
            place = endOfGIFBlocks(bytes, codes + 1);
            continue;
        }
        const std::size_t top = *reader.number16(place + 3);
        const std::size_t width = *reader.number16(place + 5);
        const std::size_t height = *reader.number16(place + 7);
        const std::uint64_t pixels = std::uint64_t{width} * height;
        const std::uint64_t found = countPixels(bytes, codes, pixels);
        if (found == pixels)
            return canvas;
        const auto rows = static_cast<std::size_t>(found / width);
        constexpr unsigned inPasses = 0x40;
        return std::min(canvas, top + ((*flags & inPasses) != 0 ? rowsWithoutGap(rows, height) : rows));
    }
}

} // namespace kelvo
