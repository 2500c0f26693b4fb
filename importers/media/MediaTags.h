#pragma once

#include "importers/media/MediaFile.h"
#include "importers/support/Importer.h"

namespace kelvo::importers {

/// What the tags of a recording or film say.
void setMediaTags(Attributes& attributes, const MediaFile& file);

} // namespace kelvo::importers
