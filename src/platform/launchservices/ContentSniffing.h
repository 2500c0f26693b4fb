#pragma once

#include "platform/filekinds/FileContents.h"
#include "platform/foundation/NSString.h"
#include "platform/launchservices/MIMEDatabase.h"

namespace kelvo {

/// The uniform type that the contents alone tell; nil when they tell no more than that they are text, or bytes. Never a
/// type that says so little.
NSString typeOfContents(const FileContents& contents, const MIMEDatabase& database);

} // namespace kelvo
