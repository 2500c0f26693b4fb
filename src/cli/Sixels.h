#pragma once

#include "platform/coregraphics/CGImage.h"

#include <string>

namespace kelvo::cli {

/// The image as a terminal draws it that knows sixels, in up to 256 colours. Pixels of which less than half is seen are
/// left as they are on the screen.
std::string sixelsOf(const CGImage& image);

} // namespace kelvo::cli
