#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/ledger/Outcome.h"
#include "protocol/Operations.h"

#include <exception>

namespace kelvo {

class RequestNotes;

/// What became of a request, and why. The sentence is nil only of an answer of which there is nothing to say.
struct RequestOutcome {
    Outcome outcome = Outcome::nothing;
    NSString sentence;
};

/// Whether there is a result. Of the operation that never answers nil: whether it found text. No attributes are no result
/// either.
bool isAnswer(Operation operation, const NSDictionary& result);
bool isAnswer(Operation operation, const NSData& result);
bool isAnswer(Operation operation, bool result);

/// By the result alone, for who knows nothing else.
RequestOutcome outcomeOfResult(Operation operation, bool isAnswered);
/// Of an operation that threw, or whose result could not be sent.
RequestOutcome outcomeOfFailure(const std::exception& failure);

/// By what was noted as well. A result is an answer whatever was noted. Without one, a file (may be nil) that is not
/// there or may not be read is the reason, unless worse was noted than that it is broken; so is a folder that takes no
/// file, for the operation that writes one.
RequestOutcome outcomeOfResult(Operation operation, bool isAnswered, const RequestNotes& notes,
                               const NSString& file);
/// What was noted goes before what was thrown; that nothing was found goes before NSInvalidArgumentException only.
RequestOutcome outcomeOfFailure(const std::exception& failure, const RequestNotes& notes);

} // namespace kelvo
