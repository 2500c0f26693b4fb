#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// What a PDF says of itself, its first page's size, and the text of all its pages with a newline between them. The size
/// is that of the part that is shown (the crop box), in points, as it is turned for reading. Of a locked document
/// there is no more than its version and that it is locked.
void importPDF(Attributes& attributes);

/// The same with another time for the text. What has not been read by then is missing, and that is noted.
void importPDFWithin(Attributes& attributes, double seconds);

} // namespace kelvo::importers
