#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// SubRip, WebVTT, SubStation Alpha and MicroDVD, told by what they hold: what is said, without times and markup, and when
/// the last of it ends.
void importSubtitles(Attributes& attributes);

} // namespace kelvo::importers
