#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <sys/types.h>

namespace KELVO_PUBLIC kelvo {

/// An engine program that the service has started and that runs.
struct EngineFacts {
    NSString name;
    pid_t processIdentifier = 0;
    /// What shuts it in: "landlock, seccomp, no network, limits". Nil when nothing does.
    NSString layers;
};

} // namespace kelvo
