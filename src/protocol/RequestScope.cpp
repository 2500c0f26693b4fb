#include "protocol/RequestScope.h"

#include <utility>

namespace kelvo {

RequestScope::RequestScope(std::shared_ptr<RequestLedger> ledger, Operation operation, std::uint64_t token,
                           const NSString& file, const NSData& bytes)
    : ledger_(std::move(ledger)), operation_(operation), file_(file) {
    if (ledger_)
        entry_ = ledger_->begin(token, static_cast<std::uint8_t>(operation), file, bytes);
}

void RequestScope::complete(const RequestOutcome& outcome) {
    if (ledger_)
        ledger_->complete(entry_, outcome.outcome, outcome.sentence, notes_);
}

} // namespace kelvo
