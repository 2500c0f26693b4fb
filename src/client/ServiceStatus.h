#pragma once

#include <plumwick/Client.h>

namespace kelvo {

/// What the process table and the note in the running program say of the process. A process that has ended
/// meanwhile gives zeros and a nil version.
ServiceStatus statusOfProcess(pid_t processIdentifier);

} // namespace kelvo
