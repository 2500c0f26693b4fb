#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/files/NSBundle.h"

namespace kelvo {

/// The path of a bundle's image of that name, which may have its extension: in the folder Resources, in or outside of
/// Contents, and there first in the folders of the languages that the user prefers. Nil when there is none, for nil, and
/// for a name with a slash.
NSString pathForImageResource(const NSBundle& bundle, const NSString& name);

} // namespace kelvo
