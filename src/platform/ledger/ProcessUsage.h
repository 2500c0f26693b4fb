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
    void restartPeak();
    /// Since restartPeak(); 0 where the kernel does not tell.
    std::uint64_t peakBytes() const;

private:
    FileDescriptor clearing_;
    FileDescriptor status_;
    FileDescriptor statm_;
    bool restarts_ = false;
    /// When the peak was started anew. Memory grows by page faults only: without any since then this is the peak, and the
    /// status, which takes the kernel longer than all else here, need not be read.
    std::uint64_t residentAtRestart_ = 0;
    long faultsAtRestart_ = 0;
};

/// Monotonic.
double nowInMilliseconds();
/// Of all threads of this process, since it began.
double cpuMillisecondsOfThisProcess();

} // namespace kelvo
