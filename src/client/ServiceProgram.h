#pragma once

#include "platform/foundation/NSString.h"

namespace kelvo {

/// The service's program: `given` when that is not nil; else PlumwickHelper beside the calling program, in
/// the folder for helper programs, or on PATH. Nil when it is in none of these places.
NSString pathOfServiceProgram(const NSString& given);

/// Has this process see the platform's own files where the service sees them, which is beside its program. False when
/// that is not found: then there are none.
bool setPlatformRootOfService();

} // namespace kelvo
