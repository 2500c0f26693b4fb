#pragma once

#include <sys/types.h>

#include <string_view>

namespace kelvo {

class RequestLedger;

// Which engines run, for whoever asks from outside (LedgerReader::engines). It is kept in the thread's ledger, and nowhere
// when it has none.

/// `layers` names what shuts the engine in ("landlock, seccomp, no network, limits"). Of engines past the eighth nothing
/// is said.
void noteEngineStarted(std::string_view name, pid_t process, std::string_view layers);
/// Also of one that nobody noted.
void noteEngineEnded(pid_t process);

/// The ledger that this thread's engines go into; null: none. It must live until another takes its place.
void setEngineRegistry(RequestLedger* ledger);

} // namespace kelvo
