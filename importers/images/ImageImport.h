#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// Sets what an image says of itself: its size and colours, the camera and what it was set to, the place, and what people
/// have written on it. Of one that cannot be decoded, or not to its end, as much as can be read.
void importImage(Attributes& attributes);

} // namespace kelvo::importers
