#pragma once

#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSImage.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <memory>

namespace kelvo::tests {

/// Red, green, blue and alpha.
inline std::array<int, 4> pixelAt(const NSImage& image, double across, double down) {
    const auto rep = std::dynamic_pointer_cast<const NSBitmapImageRep>(image.representations().at(0));
    const Bitmap& bitmap = *rep->bitmap();
    const auto x = static_cast<std::size_t>(across * bitmap.width);
    const auto y = static_cast<std::size_t>(down * bitmap.height);
    const std::uint8_t* const bytes = bitmap.data.bytes().data() + y * bitmap.bytesPerRow + x * 4;
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

/// Which of the counted frames (Movies.h) it is; -1 for none.
inline int numberOfFrame(const std::shared_ptr<NSImage>& image) {
    return image ? static_cast<int>(std::lround(pixelAt(*image, 0.5, 0.5)[1] * 219.0 / 255 + 16 - 40)) : -1;
}

} // namespace kelvo::tests
