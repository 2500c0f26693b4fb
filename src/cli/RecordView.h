#pragma once

#include "platform/foundation/Value.h"
#include "platform/ledger/RequestRecord.h"

#include <string>

namespace kelvo::cli {

// What the service has written down of a request, for people and for programs. Text comes out printable.

/// "locked: the document is encrypted"; the word alone when there is no sentence, "begun" when it is not completed.
std::string outcomeOfRecord(const RequestRecord& record);

/// Time, operation, outcome, milliseconds, file and sentence, in a line with its end.
std::string lineOfRecord(const RequestRecord& record);

/// With the keys that docs/plumwick.md lists. What is not known has no key.
NSDictionary valueOfRecord(const RequestRecord& record);

} // namespace kelvo::cli
