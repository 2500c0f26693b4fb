#pragma once

#include "platform/foundation/Value.h"

#include <optional>

namespace kelvo {

/// The child's side of an EngineProcess. All calls wait. An absent value says that the other side is gone; the
/// child should exit then. If it does not manage to within two seconds, it is killed with all processes of its
/// group.
class EngineChannel {
public:
    /// Over this process's standard input, which is replaced by nothing, so that no library reads from it. At
    /// most one in a process.
    EngineChannel();
    EngineChannel(const EngineChannel&) = delete;
    EngineChannel& operator=(const EngineChannel&) = delete;

    /// For event loops: readable when a message begins to come in or the other side is gone.
    int descriptor() const noexcept { return descriptor_; }
    std::optional<Value> nextMessage();
    /// Answers the message that came last. False when the other side is gone. Throws NSException
    /// (NSInvalidArgumentException) when the result is neither nil nor a property list.
    bool answer(const Value& result);
    /// Asks the other side a question while a message is being worked on.
    std::optional<Value> ask(const Value& question);

private:
    int descriptor_;
};

} // namespace kelvo
