#pragma once

#include <cstdint>
#include <string_view>

namespace kelvo {

// A JPEG holds its rows once, or in several passes over all of them: channel by channel, or coarsely at first.

/// How much a JPEG that is stored in several passes keeps until the last; 0 for others. Only what stands before the
/// first of them is looked at.
std::uint64_t coefficientBytesOfJPEG(std::string_view bytes);

/// Whether all passes have begun: the last one that stands there ends what the picture needs. What a pass holds is not
/// looked at.
bool hasAllPassesOfJPEG(std::string_view bytes);

} // namespace kelvo
