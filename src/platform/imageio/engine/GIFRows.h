#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace kelvo {

// Where the images of a GIF stand. Bytes are read in place, and never past their end.

/// How many bytes the table of colours takes of which these flags tell.
std::size_t lengthOfGIFColors(std::uint8_t flags);
/// Behind the blocks that begin there; past the end of the bytes where they are cut off.
std::size_t endOfGIFBlocks(std::string_view bytes, std::size_t place);

/// How many rows of the canvas, from its top, are as the image at the index leaves them. All that do not belong to it
/// are. 0 when there is no such image.
std::size_t decodedRowsOfGIF(std::string_view bytes, std::int64_t index);

} // namespace kelvo
