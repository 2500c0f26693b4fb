#pragma once

#include "cli/ExitStatus.h"

#include <string>
#include <vector>

namespace kelvo::cli {

class Session;

/// What PDFs say of themselves, and their text: by the service, or page by page in this process with the service's engine.
ExitStatus runPDFText(Session& session, const std::vector<std::string>& files);

} // namespace kelvo::cli
