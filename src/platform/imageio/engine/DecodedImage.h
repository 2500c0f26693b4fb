#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/imageio/ImageEngineMessages.h"
#include "platform/ledger/Outcome.h"

#include <cstddef>
#include <cstdint>
#include <exception>
#include <optional>
#include <span>
#include <utility>

namespace kelvo {

/// Why an image is not decoded: thrown by whoever finds out.
class ImageFailure : public std::exception {
public:
    ImageFailure(Outcome outcome, const char16_t* sentence) : outcome_(outcome), sentence_(sentence) {}

    Outcome outcome() const noexcept { return outcome_; }
    const char16_t* sentence() const noexcept { return sentence_; }
    const char* what() const noexcept override { return "an image that cannot be decoded"; }

private:
    Outcome outcome_;
    const char16_t* sentence_;
};

/// Throws ImageFailure when the sides are not above 0, or an image has more pixels than may be.
void requirePixels(std::int64_t width, std::int64_t height,
                   std::uint64_t most = imageengine::mostPixelsOfImage);

/// Width and height.
struct ImageSize {
    std::size_t width = 0;
    std::size_t height = 0;
};

/// Pixels as imageengine describes them.
struct DecodedImage {
    ImageSize size;
    bool hasAlpha = false;
    /// Whether something of the image is missing.
    bool isPartial = false;
    /// Rows of the image as it is stored that were read, from its top; absent where that is not known.
    std::optional<std::size_t> goodRows;
    NSData bytes;
};

/// The orientation that a file states, 1 to 8: what stands at the top and at the left of the picture. 1 is upright.
inline constexpr int uprightOrientation = 1;

/// Takes rows of pixels, and has them stand in sealed memory as they are to be seen.
class PixelWriter {
public:
    /// Of an image of that size, whose pixels have 3 or 4 channels, turned as its orientation says.
    PixelWriter(ImageSize size, std::size_t channels, int orientation);

    /// A part of row `row` from column `column` on.
    void write(std::size_t row, std::size_t column, std::span<const std::uint8_t> pixels) noexcept;
    DecodedImage image();

private:
    ImageSize turned_;
    std::size_t channels_;
    /// Where the first pixel goes, and how far it is from it to the next in the row and in the column, in pixels.
    std::ptrdiff_t origin_ = 0;
    std::ptrdiff_t step_ = 1;
    std::ptrdiff_t rowStep_ = 0;
    SealedMemory memory_;
};

} // namespace kelvo
