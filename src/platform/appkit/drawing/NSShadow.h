#pragma once

#include "platform/foundation/NSGeometry.h"

namespace kelvo {

/// What falls behind whatever is drawn.
struct NSShadow {
    /// Where to, in points of the whole drawing: neither turned nor flipped with what is drawn.
    NSSize offset;
    /// How far its edge is spread, in the same points.
    float blurRadius = 0;
    NSColor color{0, 0, 0, 1.0F / 3};
};

} // namespace kelvo
