#pragma once

#include "platform/foundation/Value.h"

#include <functional>
#include <memory>
#include <string>

#include <sys/types.h>

namespace kelvo {

/// An engine in a process of its own: a program of this system that is started when it is first needed, kept
/// for the next time, and ended with this process, however that ends. What the engine does to itself
/// (crashing, running for ever, growing) does not reach the one who asks. It starts with an environment made for
/// engines: of this process's own only PATH, TMPDIR, XDG_RUNTIME_DIR, TZ and the sanitizers' options.
///
/// The two talk in property lists over a socket that is the child's standard input; the child's side is
/// EngineChannel. One thread, one message at a time.
class EngineProcess {
public:
    /// Answers what the engine asks meanwhile, on the thread of ask(). What it throws ends the engine and
    /// leaves ask().
    using Questions = std::function<Value(const Value& question)>;

    /// Nothing is started yet. The program stands beside this executable.
    explicit EngineProcess(std::string programName);
    EngineProcess(const EngineProcess&) = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;
    /// Ends the child.
    ~EngineProcess();

    /// Sends the message and runs the current run loop until the answer is there. The child is started when
    /// none runs.
    ///
    /// Nil when the program is missing or ends at once (one line in the log), when the child ends meanwhile,
    /// when no answer came in time (the child is ended), and when the engine is still working on another
    /// message, as it is while it asks a question.
    Value ask(const Value& message, double timeoutSeconds, const Questions& questions = {});

    /// Ends the child, and all processes that it started and that stayed in its group, at once. The next
    /// message starts another.
    void stop();
    /// The child's process; 0 when none runs.
    pid_t processIdentifier() const;

private:
    struct Internals;
    std::unique_ptr<Internals> internals_;
};

} // namespace kelvo
