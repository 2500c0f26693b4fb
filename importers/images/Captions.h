#pragma once

#include "importers/support/Importer.h"
#include "platform/foundation/Value.h"
#include "platform/imageio/engine/ImageMetadata.h"

namespace kelvo::importers {

/// What has been written on a picture, by whom, and when it was taken and changed. Where several places of a file say
/// it, what people write with programs of today goes before what is older, and that before what cameras write.
void setCaptions(Attributes& attributes, const NSDictionary& properties, const ImageMetadata& metadata);

} // namespace kelvo::importers
