#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSURL.h"
#include "platform/webkit/WebArchive.h"

namespace kelvo {

// Pages that were saved to a file, read by the web engine without the network. Each is nil where
// initWithHTML_options_documentAttributes is, and sets `documentAttributes` as that does.

/// An HTML file. What it refers to is loaded when it stands on this machine's disk or in the page itself.
NSAttributedString attributedStringWithPage(const NSData& page, const NSURL& fileURL,
                                            NSDictionary* documentAttributes);
/// A page with what belongs to it. Nothing else is loaded, files of this machine neither: the page comes from
/// elsewhere. Nil as well for an archive without a document; one whose document is plain text is read as
/// that.
NSAttributedString attributedStringWithSavedPage(const WebArchive& archive, NSDictionary* documentAttributes);

} // namespace kelvo
