#pragma once

#include "importers/support/Importer.h"

#include <cstddef>

namespace kelvo::importers {

/// No text that is kept has more bytes of UTF-8.
inline constexpr std::size_t mostBytesOfText = 3 * mostUnitsOfText;

} // namespace kelvo::importers
