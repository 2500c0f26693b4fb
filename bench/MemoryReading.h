#pragma once

#include <cstdint>
#include <string_view>

namespace kelvo::bench {

/// The peer of scans: reads each unit once, with the vectors of this machine that the scans use as well, and does as
/// little with them as is possible.
std::uint64_t readUnits(std::u16string_view text);

} // namespace kelvo::bench
