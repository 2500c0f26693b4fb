#pragma once

#include "cli/MetadataValues.h"
#include "cli/Output.h"

#include <string>
#include <vector>

namespace kelvo::cli {

/// The rows one below the other, with their texts in one column.
std::string tableOfRows(const std::vector<MetadataRow>& rows, const Output& output);

} // namespace kelvo::cli
