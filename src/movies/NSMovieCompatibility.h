#pragma once

#include "platform/qtkit/QTMovie.h"

namespace kelvo {

/// How a movie goes on at its end: 0 not at all, 1 from its beginning, 2 backwards.
int loopMode(const QTMovie& movie);
/// Any other mode is taken for 0.
void setLoopMode(QTMovie& movie, int mode);

} // namespace kelvo
