#pragma once

#include "cli/ExitStatus.h"

#include <string>
#include <vector>

namespace kelvo::cli {

class Session;

/// What the service makes of images: of one file the whole answer, of several a line each; thumbnails into a file, into
/// a folder, and onto the terminal.
ExitStatus runImage(Session& session, const std::vector<std::string>& files);

} // namespace kelvo::cli
