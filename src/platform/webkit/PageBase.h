#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"

#include <string_view>

namespace kelvo {

/// The base of pages without one: every relative reference against it fails to resolve.
inline constexpr std::string_view nowhereURL = "x-nowhere:";

/// The page with a base element put where a page's own would stand, in the page's encoding, so that it has
/// that base wherever it is loaded from. A base that the page itself names goes first, resolved against the
/// given one. `textEncodingName` (may be nil) is the charset label from outside, `base` may be nil.
NSData pageByPlacingBase(const NSData& page, const NSString& textEncodingName, const NSURL& base);

} // namespace kelvo
