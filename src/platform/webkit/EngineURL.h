#pragma once

#include "platform/foundation/NSURL.h"

namespace kelvo {

/// The URL of an address as the web engine spells it, which is not always as strict as ours.
inline NSURL URLOfEngine(const NSString& address) {
    const NSURL strict = NSURL::URLWithString(address);
    return strict.isNil() ? NSURL::URLWithTolerantString(address) : strict;
}

} // namespace kelvo
