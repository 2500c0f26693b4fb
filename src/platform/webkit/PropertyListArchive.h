#pragma once

#include "platform/webkit/WebArchive.h"

namespace kelvo {

/// The web archive in a binary or XML property list; nil when the data holds none. See
/// WebArchive::initWithData for what is tolerated and what is bounded.
WebArchive archiveFromPropertyList(const NSData& data);

} // namespace kelvo
