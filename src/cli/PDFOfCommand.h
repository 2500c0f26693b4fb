#pragma once

#include "cli/ExitStatus.h"

#include <string>
#include <vector>

namespace kelvo::cli {

class Session;

/// Turns drawings into PDFs, which are written into a folder by the names of the files; a line for each.
ExitStatus runPDFOf(Session& session, const std::vector<std::string>& files);

} // namespace kelvo::cli
