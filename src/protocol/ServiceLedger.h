#pragma once

#include <string>

namespace kelvo {

/// Where the service keeps its ledger: beside its socket, as a path in file-system bytes. Throws NSException
/// (NSPortException) when the folder cannot be used.
std::string pathOfServiceLedger();

} // namespace kelvo
