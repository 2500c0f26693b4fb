#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"

#include <memory>

namespace kelvo {

class NSFileWrapper;

// Rich text read from RTF. Each answers nil when what it is given is no RTF at all; anything that begins as
// RTF gives a text, with what could be read of it. `documentAttributes` (may be null) is set to what the
// document says of itself under the keys of NSDocumentAttributes.h, to nil on failure. Nothing throws for
// what the bytes hold.
//
// The text is what somebody reading the document sees, in the order of reading: notes come after everything
// else, frames after the paragraph that they belong to, markers of lists before their
// items. Headers and footers, comments, and hidden or deleted text are left out. A cell of a table ends in a
// line feed, as every paragraph does; places that a merged cell covers have no text.
namespace NSAttributedStringKitAdditions {

/// Plain RTF of any writer. Pictures in it become attachments.
NSAttributedString initWithRTF_documentAttributes(const NSData& data, NSDictionary* documentAttributes);
/// The serialised form of an RTFD package, and nothing else: plain RTF is none.
NSAttributedString initWithRTFD_documentAttributes(const NSData& data, NSDictionary* documentAttributes);
/// A package: a folder with "TXT.rtf" and its attachments, or a file that holds RTF.
NSAttributedString initWithRTFDFileWrapper_documentAttributes(const NSFileWrapper& wrapper,
                                                              NSDictionary* documentAttributes);

} // namespace NSAttributedStringKitAdditions
} // namespace kelvo
