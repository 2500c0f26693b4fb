#pragma once

#include "importers/support/Importer.h"

namespace kelvo::importers {

/// Property lists, JSON, and XML that no other importer is for: the strings in them as text, a line each, in their order,
/// and of property lists and JSON each key once, where it comes first.
void importStructured(Attributes& attributes);

} // namespace kelvo::importers
