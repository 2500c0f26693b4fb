#pragma once

#include "cli/ExitStatus.h"

#include <string>

namespace kelvo::cli {

class Session;

/// `plumwick read-document` for people: the text of the document alone.
ExitStatus runReadDocument(Session& session, const std::string& file);

} // namespace kelvo::cli
