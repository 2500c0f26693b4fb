#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// Plain text and source code: the text, in whatever encoding it is written, and the title of a Markdown document. What
/// is not text for all its name (filekinds' isText) has no attributes.
void importText(Attributes& attributes);

} // namespace kelvo::importers
