#pragma once

#include "platform/qtkit/engine/MovieLibrary.h"

#include <cstdint>

namespace kelvo {

/// Writes the frame in that size as red, green, blue and alpha in sRGB, row by row without gaps. What screens of more
/// than usual light or colour are meant for is brought into what usual ones show. Up to 64 bytes past the end may be
/// written as well. Throws MovieFailure.
void writeColors(const AVFrame& frame, std::int64_t width, std::int64_t height, std::uint8_t* pixels);

} // namespace kelvo
