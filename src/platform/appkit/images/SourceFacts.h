#pragma once

#include "platform/foundation/NSGeometry.h"
#include "platform/imageio/CGImageSource.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace kelvo {

/// What a representation needs to know of an image of a file before that is decoded. Sides are those of the upright image.
struct SourceFacts {
    std::uint32_t pixelsWide = 0;
    std::uint32_t pixelsHigh = 0;
    /// In points, by the resolution where the file tells one.
    NSSize size;
    bool hasAlpha = false;

    /// Absent when the file does not say how large the image is.
    static std::optional<SourceFacts> read(const CGImageSource& source, std::size_t index);
};

} // namespace kelvo
