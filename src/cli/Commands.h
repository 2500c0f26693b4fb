#pragma once

#include "cli/ExitStatus.h"

namespace kelvo::cli {

class Output;

/// The whole command: reads the command line, asks, prints, and gives the status of the process.
ExitStatus runCommand(int argumentCount, const char* const* arguments, Output& output, Output& errors);

} // namespace kelvo::cli
