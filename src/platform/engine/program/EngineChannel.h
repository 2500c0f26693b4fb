#pragma once

#include "platform/engine/EngineReports.h"
#include "platform/engine/EngineSocket.h"
#include "platform/foundation/Value.h"
#include "platform/ledger/Outcome.h"

#include <optional>
#include <string>

namespace kelvo {

/// The engine's side of an EngineProcess. All calls wait. An absent value says that the other side is gone; the engine
/// should exit then.
class EngineChannel {
public:
    /// Over this process's standard input and, where it is memory for reports, output. They are replaced by nothing, so
    /// that no library reads from the one or writes to the other. At most one in a process.
    explicit EngineChannel(EngineFrameData accepted = EngineFrameData::filesAndSealedMemory);
    EngineChannel(const EngineChannel&) = delete;
    EngineChannel& operator=(const EngineChannel&) = delete;
    /// Removes the folder that endWithOtherSide was given.
    ~EngineChannel();

    /// Takes the folder (may be empty) over, and starts a thread that ends this process and all of its group two seconds
    /// after the other side has gone, however busy it is, and removes the folder before.
    void endWithOtherSide(const std::string& folder);

    /// For event loops: readable when a message begins to come in or the other side is gone.
    int descriptor() const noexcept { return descriptor_; }
    /// Says that the engine is ready for messages, and what of its confinement is on, in words for people.
    bool greet(const NSString& layers);
    std::optional<Value> nextMessage();
    /// Tells what became of the message's file, where the answer alone does not; see RequestNotes::note.
    bool note(Outcome outcome, const NSString& sentence);
    /// Sends a part of the result ahead of the answer. Throws as answer() does.
    bool report(const Value& part);
    /// Answers the message that came last. False when the other side is gone. Throws NSException
    /// (NSInvalidArgumentException) when the result is neither nil nor a property list.
    bool answer(const Value& result);
    /// Asks the other side a question while a message is being worked on.
    std::optional<Value> ask(const Value& question);

private:
    bool write(EncodedEngineFrame frame);
    std::optional<Value> read(EngineFrameKind expected);

    int descriptor_;
    EngineFrameReader reader_;
    EngineFrameWriter writer_;
    EngineReports reports_;
    /// Whether a report of the present message did not fit there: those that follow must not overtake it.
    bool areReportsSent_ = false;
    std::string folder_;
    FileDescriptor folderUse_;
    FileDescriptor peakReset_;
    FileDescriptor status_;
    bool isWatchingPeak_ = false;
};

} // namespace kelvo
