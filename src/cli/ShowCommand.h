#pragma once

#include "cli/ExitStatus.h"

#include <string>
#include <vector>

namespace kelvo::cli {

class Session;

/// For each file the operations that fit its kind, and a short view of what came back. Nil answers are part
/// of what is shown and leave the status alone; files that cannot be read and trouble with the service do
/// not.
ExitStatus runShow(Session& session, const std::vector<std::string>& files);

} // namespace kelvo::cli
