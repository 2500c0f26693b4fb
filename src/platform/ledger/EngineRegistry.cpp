#include "platform/ledger/EngineRegistry.h"

#include "platform/ledger/RequestLedger.h"

namespace kelvo {
namespace {

thread_local RequestLedger* currentLedger = nullptr;

} // namespace

void noteEngineStarted(std::string_view name, pid_t process, std::string_view layers) {
    if (currentLedger)
        currentLedger->addEngine(name, process, layers);
}

void noteEngineEnded(pid_t process) {
    if (currentLedger)
        currentLedger->removeEngine(process);
}

void setEngineRegistry(RequestLedger* ledger) {
    currentLedger = ledger;
}

} // namespace kelvo
