#pragma once

#include "platform/foundation/NSString.h"

namespace kelvo {

/// The classic type code of a file as six units, "'PDF '": an apostrophe, the four characters (MacRoman), an
/// apostrophe. The empty string when the file has none, nil when there is no such file.
///
/// This system's files have no type codes of their own. Copies of files that had one carry it in the extended
/// attribute user.com.apple.FinderInfo or, on the second chance, in a file "._name" beside them (AppleDouble,
/// RFC 1740).
NSString NSHFSTypeOfFile(const NSString& path);

} // namespace kelvo
