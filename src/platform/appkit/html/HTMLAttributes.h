#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/webkit/RenderedPage.h"

namespace kelvo {

/// The rendered page as attributed text; pictures become attachments. Never nil.
NSAttributedString attributedStringOfPage(const RenderedPage& page);

} // namespace kelvo
