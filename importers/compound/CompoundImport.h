#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// Documents, workbooks and presentations of the older office formats: what they say of themselves, and their text as the
/// office suite reads it. Of a locked one there is no text.
void importCompound(Attributes& attributes);

} // namespace kelvo::importers
