#pragma once

#include "platform/foundation/NSString.h"

#include <cstdint>
#include <optional>
#include <string>

namespace kelvo {

// The platform has folders at the top of the file system that this one has not. Strings keep their names, wherever
// paths are listed, compared or handed on; what goes to the disk for NSFileManager, NSBundle and NSTask asks
// placeOfPath, so that the platform's own files can stand where the programs of this system do.

/// Which paths lie below the root: those of "/System/Library", or also those of "/Library", "/Applications",
/// "/Developer" and "/usr/bin", so that nothing of the machine is seen.
enum class PlatformPlaces : std::uint8_t { systemLibrary, all };

/// The folder that stands for "/" to these paths, in file-system bytes, absolute and without a slash at its end. Empty,
/// as in every process that does not set it, there is none, and each path is its own place. To be called before other
/// threads use files.
void setPlatformRoot(std::string root, PlatformPlaces places = PlatformPlaces::systemLibrary);

/// The bytes by which the file is found on this machine; absent where NSFileManager has no representation for the path.
/// Only the beginning of an absolute path is looked at, as it is written.
std::optional<std::string> placeOfPath(const NSString& path);

} // namespace kelvo
