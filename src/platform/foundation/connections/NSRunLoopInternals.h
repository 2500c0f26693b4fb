#pragma once

#include "platform/foundation/connections/NSRunLoop.h"

#include <kj/async-io.h>
#include <kj/async-unix.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <utility>
#include <vector>

namespace kelvo {

/// The loop stands on a KJ event loop: it waits on it at the top and performs everything of its own between
/// two waits, because KJ allows no wait inside one of its events.
struct NSRunLoop::Internals {
    using Clock = std::chrono::steady_clock;
    struct Perform {
        NSString selector;
        std::shared_ptr<NSObject> target;
        Value argument;
        std::vector<NSString> modes;
    };

    kj::AsyncIoContext io = kj::setupAsyncIo();
    kj::Maybe<kj::Own<kj::PromiseFulfiller<void>>> wake;
    std::vector<NSRunLoopSource*> sources;
    /// By due time, and in the order of their making where that is the same.
    std::map<std::pair<Clock::time_point, std::uint64_t>, Perform> performs;
    std::uint64_t performsMade = 0;
};

} // namespace kelvo
