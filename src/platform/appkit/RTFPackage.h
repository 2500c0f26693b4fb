#pragma once

#include "platform/foundation/NSString.h"

#include <memory>

namespace kelvo {

class NSFileWrapper;

/// What a package holds under the name; null when there is nothing. Packages that have been on other disks
/// may have their names in other cases, or with their accents taken apart: such an entry will do where no
/// other one fits better.
std::shared_ptr<const NSFileWrapper> rtfPackageEntry(const NSFileWrapper& package, const NSString& name);

} // namespace kelvo
