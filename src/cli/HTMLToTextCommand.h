#pragma once

#include "cli/ExitStatus.h"

#include <string>
#include <vector>

namespace kelvo::cli {

class Session;

/// Prints the text of each page. The work is done in this process; the session is only asked for its options
/// and streams.
ExitStatus runHTMLToText(Session& session, const std::vector<std::string>& files);

} // namespace kelvo::cli
