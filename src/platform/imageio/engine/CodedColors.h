#pragma once

#include "platform/imageio/engine/VipsHandles.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo {

/// How HEIF and AVIF say in numbers what their colours are, where they have no profile (ITU-T H.273).
struct CodedColors {
    std::uint16_t primaries = 0;
    std::uint16_t transfer = 0;
};

/// The first that the file holds; absent when it has none.
std::optional<CodedColors> codedColorsOf(std::string_view bytes);

/// Whether they have to be converted, and can be.
bool differFromStandard(CodedColors colors);

/// The image in sRGB, with its alpha. What is brighter than paper comes closer and closer to white. Throws ImageFailure.
vips::Image convertedToStandard(vips::Image image, CodedColors colors);

} // namespace kelvo
