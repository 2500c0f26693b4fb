#pragma once

#include "platform/foundation/Value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

// What the formats themselves say around their pixels. Bytes are read in place, and never past their end.

/// What stands before the pixels of a JPEG.
struct JPEGHead {
    std::uint16_t width = 0;
    std::uint16_t height = 0;
    std::uint8_t channels = 0;
    std::string profile;
};
/// Absent for what is not whole up to the pixels, and for what is out of the ordinary: other than 8 bits, or other than
/// Huffman's coding.
std::optional<JPEGHead> headOfJPEG(std::string_view bytes);

/// Group {JFIF}; nil when there is none.
NSMutableDictionary groupOfJFIF(std::string_view bytes);
/// Group {PNG}. The texts are those in it, by their keywords.
NSMutableDictionary groupOfPNG(std::string_view bytes,
                               const std::vector<std::pair<std::string, std::string>>& texts);
/// Group {GIF}, of the image at the index.
NSMutableDictionary groupOfGIF(std::string_view bytes, std::int64_t index);

/// Whether the end is missing, of formats that have one.
bool isCutOffJPEG(std::string_view bytes);
bool isCutOffPNG(std::string_view bytes);
bool isCutOffGIF(std::string_view bytes);
/// Also of those of several parts, whose blocks are not looked for.
bool isCutOffEXR(std::string_view bytes);

} // namespace kelvo
