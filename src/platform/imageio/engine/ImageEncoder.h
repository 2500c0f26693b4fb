#pragma once

#include "platform/foundation/NSData.h"
#include "platform/imageio/engine/DecodedImage.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace kelvo {

/// A file of pixels as imageengine describes them; see CGImageDestination.h. Nil when no file of that type can be made.
/// Throws ImageFailure.
NSData encodedImage(ImageSize size, bool hasAlpha, std::span<const std::uint8_t> pixels,
                    std::u16string_view type, std::optional<double> quality);

} // namespace kelvo
