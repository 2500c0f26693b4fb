#pragma once

#include "platform/foundation/NSGeometry.h"
#include "platform/qtkit/QTMovie.h"

namespace kelvo {

// In seconds. Each is asked of the movie's classic handle, and is 0 without one; where that throws NSException, of the movie
// itself.

double movieDuration(const QTMovie& movie);
double movieTime(const QTMovie& movie);
void setMovieTime(QTMovie& movie, double seconds);

/// In pixels, as the movie is seen; asked in the same way.
NSSize movieSize(const QTMovie& movie);

} // namespace kelvo
