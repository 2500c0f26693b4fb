#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// EPUB: what the book says of itself, and its text in reading order. Of several renditions the first is read.
void importBook(Attributes& attributes);

} // namespace kelvo::importers
