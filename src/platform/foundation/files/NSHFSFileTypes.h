#pragma once

#include "platform/foundation/NSString.h"

namespace kelvo {

/// The classic type code of a file as six units, "'PDF '": an apostrophe, the four characters (MacRoman), an
/// apostrophe. The empty string when the file has none, nil when there is no such file.
///
/// This system's files have no type codes of their own: copies of files that had one carry it beside them
/// (FileForks.h).
NSString NSHFSTypeOfFile(const NSString& path);

} // namespace kelvo
