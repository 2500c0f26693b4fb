#pragma once

#include <string>
#include <vector>

namespace kelvo::importers {

/// What names in archives are in UTF-8. Those that are not UTF-8 come from one system, so that their charset is guessed
/// from all of them together.
std::string textOfNames(const std::vector<std::string>& names);

} // namespace kelvo::importers
