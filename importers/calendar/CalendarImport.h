#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// iCalendar and vCalendar (what there is to do, when, where and with whom), and vCard (who people are and how they are
/// reached), of every version.
void importCalendar(Attributes& attributes);

} // namespace kelvo::importers
