#pragma once

#include "platform/foundation/NSString.h"

namespace kelvo {

/// Whether the whole string is what the wildcard describes: "*" stands for any characters or none, "?" for
/// one (a pair of surrogates is one), everything else for itself without regard to case, as
/// isEqualToStringNoCase has it. There is no way to ask for a "*". Nil is like nothing, and nothing like nil.
///
/// Takes time in proportion to the product of the lengths at worst, and no memory.
bool isCaseInsensitiveLikeWildcard(const NSString& string, const NSString& wildcard);

} // namespace kelvo
