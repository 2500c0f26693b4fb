#pragma once

#include "platform/foundation/NSString.h"

namespace kelvo {

// Category URLUtilities of NSString.

/// Whether documents of this MIME type are read as markup: every "text/…" (plain text too), and those of
/// "application/…" whose name holds "htm", "sgml", "xml" or "rsd" in whatever letters, or "rdf" or "rss" in
/// small ones ("application/RSS" is none). False for nil.
bool isMarkupMIMEType(const NSString& type);

} // namespace kelvo
