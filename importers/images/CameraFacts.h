#pragma once

#include "importers/support/Importer.h"
#include "platform/foundation/Value.h"
#include "platform/imageio/engine/ImageMetadata.h"

namespace kelvo::importers {

/// What took the picture, how it was set, and where it was, out of the groups of CGImageProperties.h; the place out of the
/// XMP where these have none.
void setCameraFacts(Attributes& attributes, const NSDictionary& properties, const ImageMetadata& metadata);

} // namespace kelvo::importers
