#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// HTML and XHTML, and pages that were saved with what belongs to them: web archives and MIME HTML. What the page says
/// of itself (of an archive its main page, and where that comes from), and the text of it and its frames.
void importPage(Attributes& attributes);

} // namespace kelvo::importers
