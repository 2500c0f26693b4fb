#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// SVG, compressed or not: size, title, description, what is written in the picture, and what its metadata says by the
/// terms of Dublin Core.
void importSVG(Attributes& attributes);

} // namespace kelvo::importers
