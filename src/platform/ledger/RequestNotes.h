#pragma once

#include "platform/foundation/NSString.h"
#include "platform/ledger/Outcome.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// What is learnt about a request while it is performed, by whoever learns it: the one that the thread is at work on
/// gathers it. Outside a request everything noted is dropped.
///
/// While one stands, it is what current() returns on its thread; the one before comes back after it.
class RequestNotes {
public:
    /// What an engine took for this request, summed over all messages to it.
    struct EngineUse {
        std::string name;
        double cpuMilliseconds = 0;
        std::uint64_t peakBytes = 0;
    };
    /// Of so many refused loads the addresses are kept; all are counted.
    static constexpr std::size_t mostRefusedAddresses = 8;

    RequestNotes();
    RequestNotes(const RequestNotes&) = delete;
    RequestNotes& operator=(const RequestNotes&) = delete;
    ~RequestNotes();

    /// Null outside a request.
    static RequestNotes* current();

    /// Why there may be no result, in a sentence without the name of the file and without a full stop ("the document
    /// is encrypted"). Of several the worst stays, and of equals the first. What is noted as `answered` says what is
    /// missing from a result, and of that the first stays.
    void note(Outcome outcome, const NSString& sentence);
    void noteEngine(const EngineUse& use);
    void noteRefusedLoad(const NSString& address);

    /// Absent when nothing was noted of a missing result. Never `answered`.
    std::optional<Outcome> outcome() const { return outcome_; }
    /// Nil when nothing was noted of a missing result.
    const NSString& sentence() const { return sentence_; }
    /// Nil when nothing is known to be missing from a result.
    const NSString& sentenceOfResult() const { return sentenceOfResult_; }
    /// In the order in which they were first used.
    const std::vector<EngineUse>& engines() const { return engines_; }
    std::uint64_t refusedLoadCount() const { return refusedLoadCount_; }
    const std::vector<NSString>& refusedAddresses() const { return refusedAddresses_; }

private:
    RequestNotes* outer_;
    std::optional<Outcome> outcome_;
    NSString sentence_;
    NSString sentenceOfResult_;
    std::vector<EngineUse> engines_;
    std::uint64_t refusedLoadCount_ = 0;
    std::vector<NSString> refusedAddresses_;
};

/// Into the notes of the request that the thread is at work on, if any.
void noteOutcome(Outcome outcome, const NSString& sentence);

/// The reason of an exception ("The table is cut off.") as a sentence for notes.
NSString sentenceOfReason(const NSString& reason);

} // namespace kelvo
