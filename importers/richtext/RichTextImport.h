#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// RTF, and RTFD as a package and in one file: what the document says of itself, and its text. Pictures leave nothing
/// in it.
void importRichText(Attributes& attributes);

} // namespace kelvo::importers
