#pragma once

#include "platform/foundation/Value.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <sys/types.h>

namespace kelvo {

/// Where the engines' programs stand, in file-system bytes. Empty, as it is until it is set, that is beside this
/// executable. To be set before the first message to any engine.
void setFolderOfEngines(std::string folder);

/// What an engine is to the one who asks it.
struct EngineDescription {
    /// Of the program, which stands in the folder of the engines.
    std::string programName;
    /// What it is called in sentences: "document engine".
    const char16_t* title = u"engine";
    /// Where its folder is made, and with which path at most; see PrivateFolder.
    std::vector<std::string> folderParents;
    std::size_t longestFolderPath = 4095;
    /// The engine is replaced, between two messages, when it has answered so many of them, and when so much of it is
    /// resident after one; 0: never.
    unsigned mostMessages = 0;
    std::uint64_t mostResidentBytes = 0;
    /// What the program is given on its command line after the path of its folder.
    std::vector<std::string> arguments;
    /// Variables that it is given beside those of all engines, by name and value.
    std::vector<std::pair<std::string, std::string>> environment;
};

/// What goes with a message to an engine.
struct EngineConversation {
    /// Answers what the engine asks meanwhile, on the thread of ask(). What it throws ends the engine and leaves ask().
    std::function<Value(const Value& question)> questions;
    /// Takes the parts of the result that come ahead of the answer, in their order; also those of an engine that never
    /// answers. What it throws ends the engine and leaves ask().
    std::function<void(const Value& part)> reports;
    /// What the engine is called in sentences about this message; nil: its own title.
    NSString title;
    /// The message is about what an earlier one has left in the engine. That is not replaced before it; when it has ended
    /// since, there is none that could answer.
    bool continues = false;
};

/// An engine in a process of its own: a program of this system that is started when it is first needed, kept for the
/// next time, replaced when it dies, hangs or has grown, and ended with this process, however that ends. What the
/// engine does to itself (crashing, running for ever, growing) does not reach the one who asks. It starts with an
/// environment made for engines: of this process's own only PATH, TMPDIR, XDG_RUNTIME_DIR, TZ and the sanitizers'
/// options; and with a folder of mode 0700 for what it has to write, which goes when it does.
///
/// The two talk in property lists over a socket that is the child's standard input; the child's side is EngineChannel.
/// Data that stands on a descriptor is handed over by that, and data above leastSealedBytes is shared in sealed memory;
/// an answer's may be of either kind but the file's. One thread, one message at a time.
class EngineProcess {
public:
    /// Nothing is started yet.
    explicit EngineProcess(EngineDescription description);
    EngineProcess(const EngineProcess&) = delete;
    EngineProcess& operator=(const EngineProcess&) = delete;
    /// Ends the child.
    ~EngineProcess();

    /// Sends the message and runs the current run loop until the answer is there. The child is started when none runs.
    /// What the engine notes and takes becomes part of the current request (RequestNotes).
    ///
    /// Throws NSException by the names of EngineExceptions.h when there is no answer; the child is gone then, and the
    /// next message starts another. Throws (NSInvalidArgumentException) when the message is no property list, and
    /// (NSGenericException) when the engine is still working on another message, as it is while it asks a question.
    Value ask(const Value& message, double timeoutSeconds, const EngineConversation& conversation = {});

    /// Ends the child, all processes that it started, and its folder, at once. The next message starts another.
    void stop();
    /// The child's process; 0 when none runs.
    pid_t processIdentifier() const;
    /// What it said of its confinement when it was ready; nil when none runs.
    NSString layers() const;

private:
    struct Internals;
    std::shared_ptr<Internals> internals_;
};

} // namespace kelvo
