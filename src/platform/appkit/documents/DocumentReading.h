#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSDictionary.h"

namespace kelvo {
namespace NSAttributedStringKitAdditions {

/// Reads the document at the path, whatever kind it is: plain text, RTF, RTFD (package or bytes), HTML, web
/// archive, MIME HTML, and word-processor documents. The contents decide, the name only where they are
/// silent. Nothing is fetched from the network. Nil when the file cannot be read, is encrypted or is no
/// document; `documentAttributes` (may be null) is set to what the document says of itself under the keys of
/// NSDocumentAttributes.h, to nil on failure.
NSAttributedString initWithPath_documentAttributes(const NSString& path, NSDictionary* documentAttributes);

} // namespace NSAttributedStringKitAdditions
} // namespace kelvo
