#pragma once

#include "platform/foundation/NSDate.h"

#include <chrono>
#include <optional>
#include <string_view>

namespace kelvo::importers {

/// The moment that a text in the form of ISO 8601 says: "2011-03-24T12:34:56.5+01:00", without the seconds too, "Z" for
/// UTC. Absent for everything else, a date without a time or a time without a zone among it: no moment is meant, or
/// one that depends on the reader's place.
std::optional<NSDate> momentOfText(std::u16string_view text);

/// The same for devices that write down what their clock says: colons may stand in the date ("2011:03:24 12:34:56"), the
/// time may be missing (midnight), and without a zone that of this machine is meant.
std::optional<NSDate> momentOfClock(std::u16string_view text);

/// When clocks showed that in the zone of this machine, as it was in force then. Absent when the zone cannot tell.
std::optional<NSDate> momentHere(std::chrono::local_seconds clock);

} // namespace kelvo::importers
