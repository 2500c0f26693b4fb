#pragma once

#include "platform/engine/EngineProcess.h"
#include "platform/foundation/Value.h"

namespace kelvo {

/// plumwick-postscript-engine. A process of it interprets one file and then makes room for the next.
class PostScriptEngine {
public:
    static PostScriptEngine& sharedEngine();
    PostScriptEngine(const PostScriptEngine&) = delete;
    PostScriptEngine& operator=(const PostScriptEngine&) = delete;

    /// The answer to a message (PostScriptEngineMessages.h). Throws as EngineProcess::ask does.
    Value ask(const NSDictionary& message, double timeoutSeconds) {
        return process_.ask(message, timeoutSeconds);
    }

    /// 0 when none runs.
    pid_t processIdentifier() const { return process_.processIdentifier(); }

private:
    PostScriptEngine();

    EngineProcess process_;
};

} // namespace kelvo
