#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// Documents, workbooks and presentations of Office Open XML and OpenDocument, templates and flat ones too: what they say
/// of themselves, and their text in the order of reading. Of a locked one there is no more than that.
void importOffice(Attributes& attributes);

/// The same with another time. What has not been read by then is missing, and that is noted.
void importOfficeWithin(Attributes& attributes, double seconds);

} // namespace kelvo::importers
