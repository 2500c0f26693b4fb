#include "platform/ledger/RequestNotes.h"

#include <algorithm>

namespace kelvo {
namespace {

thread_local RequestNotes* currentNotes = nullptr;

} // namespace

RequestNotes::RequestNotes() : outer_(currentNotes) {
    currentNotes = this;
}

RequestNotes::~RequestNotes() {
    currentNotes = outer_;
}

RequestNotes* RequestNotes::current() {
    return currentNotes;
}

void RequestNotes::note(Outcome outcome, const NSString& sentence) {
    if (outcome_ && *outcome_ >= outcome)
        return;
    outcome_ = outcome;
    sentence_ = sentence;
}

void RequestNotes::noteEngine(const EngineUse& use) {
    const auto found = std::ranges::find(engines_, use.name, &EngineUse::name);
    if (found == engines_.end()) {
        engines_.push_back(use);
        return;
    }
    found->cpuMilliseconds += use.cpuMilliseconds;
    found->peakBytes = std::max(found->peakBytes, use.peakBytes);
}

void RequestNotes::noteRefusedLoad(const NSString& address) {
    ++refusedLoadCount_;
    if (refusedAddresses_.size() < mostRefusedAddresses &&
        std::ranges::find(refusedAddresses_, address) == refusedAddresses_.end())
        refusedAddresses_.push_back(address);
}

} // namespace kelvo
