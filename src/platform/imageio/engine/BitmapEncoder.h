#pragma once

#include "platform/foundation/NSData.h"
#include "platform/imageio/engine/DecodedImage.h"

#include <cstdint>
#include <span>

namespace kelvo {

/// A BMP of pixels of 3 bytes each, blue first, without gaps. Throws ImageFailure.
NSData encodedBitmap(ImageSize size, std::span<const std::uint8_t> pixels);

} // namespace kelvo
