#pragma once

#include "platform/foundation/NSString.h"

#include <string>

namespace kelvo {

/// The service's program: `given` when that is not nil; else PlumwickHelper beside the calling program, in
/// the folder for helper programs, or on PATH. Nil when it is in none of these places.
NSString pathOfServiceProgram(const NSString& given);

/// The folder in which the service's program really lies, and beside it its engines, in file-system bytes. Empty when
/// that is not found.
std::string folderOfServiceProgram();

/// Has this process see the platform's own files where the service sees them, which is beside its program. False when
/// that is not found: then there are none.
bool setPlatformRootOfService();

} // namespace kelvo
