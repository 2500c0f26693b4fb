#pragma once

#include "cli/ExitStatus.h"

#include <string>

namespace kelvo::cli {

class Session;

/// Asks for the text of a web archive, and prints it, its source, or the whole answer as JSON.
ExitStatus runWebArchive(Session& session, const std::string& file);

} // namespace kelvo::cli
