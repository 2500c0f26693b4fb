#pragma once

#include "platform/engine/EngineProcess.h"
#include "platform/foundation/Value.h"

namespace kelvo {

/// plumwick-image-engine, as all image sources share it.
class ImageEngine {
public:
    static ImageEngine& sharedEngine();
    ImageEngine(const ImageEngine&) = delete;
    ImageEngine& operator=(const ImageEngine&) = delete;

    /// The answer to a message (ImageEngineMessages.h). Throws as EngineProcess::ask does.
    Value ask(const NSDictionary& message, double timeoutSeconds) {
        return process_.ask(message, timeoutSeconds);
    }

    /// 0 when none runs.
    pid_t processIdentifier() const { return process_.processIdentifier(); }

private:
    ImageEngine();

    EngineProcess process_;
};

} // namespace kelvo
