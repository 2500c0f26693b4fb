#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// Sets what a recording or film says of itself: its length, tracks and how they are encoded, the size of its picture as
/// it is shown, and its tags. What has no name among the platform's has one that begins with "plumwick_".
void importMedia(Attributes& attributes);

} // namespace kelvo::importers
