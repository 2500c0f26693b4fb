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

    /// The answer to a message (ImageEngineMessages.h). Nil also when the engine failed or took longer than 10 s, which
    /// is noted with the current request.
    Value answerTo(const NSDictionary& message);

    /// Ends it; the next message starts another.
    void stop() { process_.stop(); }
    /// 0 when none runs.
    pid_t processIdentifier() const { return process_.processIdentifier(); }

private:
    ImageEngine();

    EngineProcess process_;
};

} // namespace kelvo
