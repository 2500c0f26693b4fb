#pragma once

#include "platform/imageio/engine/DecodedImage.h"
#include "platform/imageio/engine/VipsImage.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace kelvo {

/// Pixels as imageengine describes them, before they are shrunk.
struct Frame {
    ImageSize size;
    bool hasAlpha = false;
    /// What the decoder gave, before it was made of 8 bits and coloured.
    int bitsOfSample = 8;
    bool isFloat = false;
    bool isIndexed = false;
    bool isGray = false;
    std::vector<std::uint8_t> pixels;
};

bool hasFrameDecoder(const char* decoder);

/// What one of FFmpeg's decoders makes of a file that holds one image. Throws ImageFailure.
Frame decodedFrame(const char* decoder, std::string_view bytes);

} // namespace kelvo
