#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"
#include "platform/qtkit/QTMovie.h"

#include <memory>

namespace kelvo {

// A picture that shows what a movie is about. All of these run the current run loop, and what became of the file is noted
// with the current request.

/// The frame of the whole second before the middle of the movie, but not later than 15 s. Null when there is none.
/// Throws what the movie does.
std::shared_ptr<NSImage> middleImage(const QTMovie& movie);
/// That, or else the poster image.
std::shared_ptr<NSImage> thumbnailImage(const QTMovie& movie);

namespace KelvoQTMovieExtensions {

// The pictures of files. Null when a file is no movie, when it has no such picture, and when the movie throws NSException,
// which is logged; anything else that is thrown passes on.

/// `attributes` (may be null) is what the movie says of itself (QTMovie.h), also when there is no picture; nil when the
/// file is no movie.
std::shared_ptr<NSImage> thumbnailImageForMovieWithFile_attributes(const NSString& path,
                                                                   NSDictionary* attributes);
std::shared_ptr<NSImage> thumbnailImageForMovieWithFile(const NSString& path);
std::shared_ptr<NSImage> middleImageForMovieWithFile(const NSString& path);
std::shared_ptr<NSImage> posterImageForMovieWithFile(const NSString& path);

} // namespace KelvoQTMovieExtensions

} // namespace kelvo
