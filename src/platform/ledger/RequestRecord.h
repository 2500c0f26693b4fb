#pragma once

#include "platform/foundation/NSDate.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"
#include "platform/ledger/Outcome.h"

#include <cstdint>
#include <vector>

namespace KELVO_PUBLIC kelvo {

/// What is written down of one request to the service. A text that did not fit shows "…" where it was cut.
struct RequestRecord {
    /// Numbers of one ledger grow by 1 with each request, over restarts of the service too. 0: the service wrote nothing
    /// down, and the client made the record by itself.
    std::uint64_t sequence = 0;
    /// What the client called the request. Never 0.
    std::uint64_t token = 0;
    /// In the order in which the operations of KelvoImExport are declared, from 0.
    std::uint8_t operation = 0;
    /// When the work on it began.
    NSDate begun = NSDate::dateWithTimeIntervalSinceReferenceDate(0);
    /// The file; nil when the operation was given none. Of a long path the end is kept.
    NSString path;
    /// Whether bytes were given; of these length and XXH64 (seed 0, as `xxhsum -H64` prints it).
    bool hasBytes = false;
    std::uint64_t byteCount = 0;
    std::uint64_t byteHash = 0;

    /// False while the service is at work on it, and for ever when it ended meanwhile and has not been started since.
    /// What follows is known of completed requests only.
    bool isCompleted = false;
    Outcome outcome = Outcome::nothing;
    /// Without the name of the file and without a full stop. Nil when there is nothing to say of an answer.
    NSString sentence;
    /// The programs that had a part in it, with ", " between them; nil when the service did it alone.
    NSString engine;
    double milliseconds = 0;
    /// Of the service's own process, and of all engines together.
    double cpuMilliseconds = 0;
    double engineCPUMilliseconds = 0;
    /// The most that the service, and that the largest of the engines, held in memory while it was at work on this. 0
    /// when it is not known.
    std::uint64_t peakBytes = 0;
    std::uint64_t enginePeakBytes = 0;
    /// How many loads a page was refused, and the first of the addresses, each once.
    std::uint64_t refusedLoadCount = 0;
    std::vector<NSString> refusedAddresses;
};

/// "the service ended while it was at work on this"
inline constexpr const char16_t* sentenceOfEndedService = u"the service ended while it was at work on this";

} // namespace kelvo
