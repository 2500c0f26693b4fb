#pragma once

#include "platform/foundation/processes/NSFileHandle.h"

#include <memory>

namespace kelvo {

/// A pipe between this process and a program, or within this process. Both ends are close-on-exec.
class NSPipe {
public:
    /// Throws NSException (NSFileHandleOperationException) when the system has no descriptors left.
    static std::shared_ptr<NSPipe> pipe();

    const std::shared_ptr<NSFileHandle>& fileHandleForReading() const { return reading_; }
    const std::shared_ptr<NSFileHandle>& fileHandleForWriting() const { return writing_; }

private:
    NSPipe() = default;

    std::shared_ptr<NSFileHandle> reading_;
    std::shared_ptr<NSFileHandle> writing_;
};

} // namespace kelvo
