#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

#include <cstddef>
#include <vector>

namespace kelvo {

/// What the frame and iframe elements of a page name as their source, in order and as it is written there but
/// for "&amp;". None for a page in UTF-16 or UTF-32: bytes are read as ASCII.
///
/// This looks at tags only, so that one in a comment or script counts too: it tells which parts of a saved
/// page may be frames, and is not what shows them.
std::vector<NSString> frameReferencesInHTML(const NSData& html, std::size_t maximumCount);

} // namespace kelvo
