#pragma once

#include "platform/foundation/FileIO.h"

#include <cstdint>

namespace kelvo {

/// What this process takes, between two moments. The most that it held in memory is kept by the kernel, of which each
/// process has one count: who starts it anew takes it from whoever did before.
class ProcessUsage {
public:
    ProcessUsage();

    /// From now on.
    void restartPeak() const;
    /// Since restartPeak(); 0 where the kernel does not tell.
    std::uint64_t peakBytes() const;

private:
    FileDescriptor clearing_;
    FileDescriptor status_;
    bool restarts_ = false;
};

/// Monotonic.
double nowInMilliseconds();
/// Of all threads of this process, since it began.
double cpuMillisecondsOfThisProcess();

} // namespace kelvo
