#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// What is in an archive: the names, a line each, how many files there are and how large they are together. Nothing is
/// unpacked to disk, and what lies in a solid archive is not unpacked at all.
void importArchive(Attributes& attributes);

} // namespace kelvo::importers
