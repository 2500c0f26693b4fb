#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"

namespace kelvo::KelvoQTMovieExtensions {

// Which files are movies or sound, by their names and their classic type codes; no file is opened. Nil is an extension, a
// type code or a path that nothing goes by.

/// What such files are called: extensions, and type codes in apostrophes. First what the movie library reads, then what
/// has been taken for a movie of old and is not in there. Made once.
NSArray QuickTimeFileTypes();
/// Whether the extension is one of them, in letters of either case, or the type code, as it is written.
bool isQuickTimeExtension_type(const NSString& extension, const NSString& type);
/// The same of the path's extension and the file's type code.
bool isQuickTimeFile(const NSString& path);

} // namespace kelvo::KelvoQTMovieExtensions
