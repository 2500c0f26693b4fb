#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// Fonts and collections of them, as whatever FreeType reads: names, version, who has made them and what one may do with
/// them, how heavy they are, and for which scripts they have letters.
void importFont(Attributes& attributes);

} // namespace kelvo::importers
