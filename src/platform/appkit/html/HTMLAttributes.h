#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/webkit/RenderedPage.h"

namespace kelvo {

/// The rendered page as attributed text: CSS pixels become points, pictures attachments. Never nil.
NSAttributedString attributedStringOfPage(const RenderedPage& page);

} // namespace kelvo
