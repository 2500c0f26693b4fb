#pragma once

#include "cli/ExitStatus.h"

#include <string>
#include <vector>

namespace kelvo::cli {

class Session;

/// What the importers find in each file: as a table, as JSON, or only its text.
ExitStatus runMetadata(Session& session, const std::vector<std::string>& files);

/// The importers as the service would find them now, in their order. No service is asked.
ExitStatus runImporters(Session& session);

} // namespace kelvo::cli
