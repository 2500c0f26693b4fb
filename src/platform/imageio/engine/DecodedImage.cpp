#include "platform/imageio/engine/DecodedImage.h"

#include <cstring>

namespace kelvo {
namespace {

using imageengine::bytesOfPixel;

constexpr int firstLyingOrientation = 5;
constexpr int lastOrientation = 8;

ImageSize turnedSize(ImageSize size, int orientation) {
    const bool isLying = orientation >= firstLyingOrientation && orientation <= lastOrientation;
    return isLying ? ImageSize{size.height, size.width} : size;
}

} // namespace

void requirePixels(std::int64_t width, std::int64_t height, std::uint64_t most) {
    constexpr std::int64_t longestSide = 10'000'000;
    if (width <= 0 || height <= 0)
        throw ImageFailure(Outcome::broken, u"the image has no size");
    if (width > longestSide || height > longestSide || static_cast<std::uint64_t>(width * height) > most)
        throw ImageFailure(Outcome::outOfMemory, u"the image has more pixels than are decoded");
}

PixelWriter::PixelWriter(ImageSize size, std::size_t channels, int orientation)
    : turned_(turnedSize(size, orientation)),
      channels_(channels),
      memory_(turned_.width * turned_.height * bytesOfPixel) {
    const auto across = static_cast<std::ptrdiff_t>(turned_.width);
    const std::ptrdiff_t right = across - 1;
    const std::ptrdiff_t bottom = (static_cast<std::ptrdiff_t>(turned_.height) - 1) * across;
    struct Turn {
        std::ptrdiff_t origin;
        std::ptrdiff_t step;
        std::ptrdiff_t rowStep;
    };
    const Turn turns[] = {
        {0, 1, across}, {right, -1, across}, {right + bottom, -1, -across}, {bottom, 1, -across},
        {0, across, 1}, {right, across, -1}, {right + bottom, -across, -1}, {bottom, -across, 1},
    };
    const Turn& turn =
        turns[orientation >= uprightOrientation && orientation <= lastOrientation ? orientation - 1 : 0];
    origin_ = turn.origin;
    step_ = turn.step;
    rowStep_ = turn.rowStep;
}

void PixelWriter::write(std::size_t row, std::size_t column, std::span<const std::uint8_t> pixels) noexcept {
    const auto start =
        origin_ + static_cast<std::ptrdiff_t>(row) * rowStep_ + static_cast<std::ptrdiff_t>(column) * step_;
    std::uint8_t* to = memory_.bytes().data() + start * static_cast<std::ptrdiff_t>(bytesOfPixel);
    if (channels_ == bytesOfPixel && step_ == 1) {
        std::memcpy(to, pixels.data(), pixels.size());
        return;
    }
    const std::ptrdiff_t step = step_ * static_cast<std::ptrdiff_t>(bytesOfPixel);
    for (std::size_t from = 0; from < pixels.size(); from += channels_, to += step) {
        std::memcpy(to, pixels.data() + from, bytesOfPixel - 1);
        to[bytesOfPixel - 1] = channels_ == bytesOfPixel ? pixels[from + bytesOfPixel - 1] : 0xFF;
    }
}

DecodedImage PixelWriter::image() {
    return {turned_, channels_ == bytesOfPixel, false, std::nullopt, memory_.seal()};
}

} // namespace kelvo
