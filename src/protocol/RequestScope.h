#pragma once

#include "platform/ledger/RequestLedger.h"
#include "protocol/RequestOutcome.h"

#include <memory>

namespace kelvo {

/// One request while the service is at work on it: made before the work, it writes down that it begins, and gathers what
/// is noted until it goes.
class RequestScope {
public:
    /// The ledger may be null. `file` is the one that is read, or written; nil and nil bytes are not given.
    RequestScope(std::shared_ptr<RequestLedger> ledger, Operation operation, std::uint64_t token,
                 const NSString& file, const NSData& bytes);

    template <typename Result>
    void complete(const Result& result) {
        complete(outcomeOfResult(operation_, isAnswer(operation_, result), notes_, file_));
    }
    /// Also after complete(), when the result could not be sent.
    void fail(const std::exception& failure) { complete(outcomeOfFailure(failure, notes_)); }

private:
    void complete(const RequestOutcome& outcome);

    std::shared_ptr<RequestLedger> ledger_;
    Operation operation_;
    NSString file_;
    RequestNotes notes_;
    RequestLedger::Entry entry_;
};

} // namespace kelvo
