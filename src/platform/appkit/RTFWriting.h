#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"

#include <memory>

namespace kelvo {

class NSFileWrapper;

// Rich text written as RTF. The bytes are 7-bit. `documentAttributes` (may be nil) is what the document is to
// say of itself; keys and values that RTF has no words for are left out. Each answers nil for a nil text and
// throws NSException (NSRangeException) when the range passes the end.

/// Plain RTF: attachments are left out.
NSData RTFFromRange_documentAttributes(const NSAttributedString& text, NSRange range,
                                       const NSDictionary& documentAttributes);
/// A package in memory: a folder with "TXT.rtf" and the attachments under the names that the RTF mentions.
std::shared_ptr<NSFileWrapper>
RTFDFileWrapperFromRange_documentAttributes(const NSAttributedString& text, NSRange range,
                                            const NSDictionary& documentAttributes);
/// The same as one stream of bytes.
NSData RTFDFromRange_documentAttributes(const NSAttributedString& text, NSRange range,
                                        const NSDictionary& documentAttributes);

} // namespace kelvo
