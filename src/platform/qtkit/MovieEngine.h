#pragma once

#include "platform/engine/EngineProcess.h"
#include "platform/foundation/Value.h"

namespace kelvo {

/// plumwick-movie-engine, as all movies share it.
class MovieEngine {
public:
    static MovieEngine& sharedEngine();
    MovieEngine(const MovieEngine&) = delete;
    MovieEngine& operator=(const MovieEngine&) = delete;

    /// The answer to a message (MovieEngineMessages.h). Throws as EngineProcess::ask does.
    Value ask(const NSDictionary& message, double timeoutSeconds) {
        return process_.ask(message, timeoutSeconds);
    }

    /// 0 when none runs.
    pid_t processIdentifier() const { return process_.processIdentifier(); }

private:
    MovieEngine();

    EngineProcess process_;
};

} // namespace kelvo
