#pragma once

#include "platform/foundation/NSArray.h"

#include <sys/types.h>

#include <string>

namespace kelvo::cli {

/// The listing of importers that the host reads: a header with the user, and their paths as an old-style property list.
/// Of importers in one folder the host prefers the one that is listed last, so the first to be asked is the last here.
std::string listingOfImporters(const NSArray& importers, uid_t user);

} // namespace kelvo::cli
