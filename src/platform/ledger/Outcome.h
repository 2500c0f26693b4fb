#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <cstdint>

namespace KELVO_PUBLIC kelvo {

/// What became of a request, from the best to the worst of what can be said of one file.
enum class Outcome : std::uint8_t {
    answered,      ///< there is a result
    nothing,       ///< the file was read, and there is nothing in it of what was asked for
    unsupported,   ///< no file of this kind can be read
    broken,        ///< the file is not what it says it is, or is damaged
    locked,        ///< the file is encrypted, or may not be read
    refused,       ///< reading it wanted something that engines may not do, and was stopped
    missingEngine, ///< the program that reads such files is not installed, or does not start
    timedOut,      ///< reading it took longer than it may
    outOfMemory,   ///< reading it took more memory than it may
    crashed        ///< reading it ended the engine, or the service itself
};

inline constexpr std::size_t outcomeCount = 10;

/// "answered", "nothing", "unsupported", "broken", "locked", "refused", "missing engine", "timed out", "out of memory",
/// "crashed".
KELVO_PUBLIC NSString wordOfOutcome(Outcome outcome);

} // namespace kelvo
