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
    /// Whether the file was too short.
    bool isPartial = false;
    std::vector<std::uint8_t> pixels;
};

bool hasFrameDecoder(const char* decoder);

/// What one of FFmpeg's decoders makes of a file that holds one image; of one that is too short, what it makes of the
/// file with as much behind it as the image needs at most, as long as that is not all of it. Throws ImageFailure.
Frame decodedFrame(const char* decoder, std::string_view bytes);
/// The same without pixels, which are not decoded: `hasAlpha` says that there may be some. Throws ImageFailure.
Frame headOfFrame(const char* decoder, std::string_view bytes);

/// How many rows from the top of that frame depend on nothing that may be missing from the bytes: found out by decoding
/// them with two different things behind them. 0 for more than 25 million pixels. Throws ImageFailure.
std::size_t settledRows(const char* decoder, std::string_view bytes);

} // namespace kelvo
