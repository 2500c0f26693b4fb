#pragma once

#include "cli/ExitStatus.h"

#include <string>
#include <vector>

namespace kelvo::cli {

class Session;

/// Prints a line for each movie: its length, its size, whether there is a picture of it, its name.
ExitStatus runMovies(Session& session, const std::vector<std::string>& files);

} // namespace kelvo::cli
