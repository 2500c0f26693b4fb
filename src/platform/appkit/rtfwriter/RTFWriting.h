#pragma once

#include "platform/appkit/NSAttributedString.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"

#include <memory>

namespace kelvo {

class NSFileWrapper;

// Rich text written as RTF. The bytes are 7-bit. `documentAttributes` (may be nil) is what the document is to
// say of itself; keys and values that RTF has no words for are left out. Each answers nil for a nil text and
// throws NSException: NSRangeException when the range passes the end, NSMallocException when the RTF would
// pass maximumSizeInBytes.
//
// What is written and read again is equal, with these exceptions:
// - Lengths are rounded to 1/20 point, baseline offsets to 1/2, sizes of fonts to 1/1000 (and held between
//   1/2 and 4000), components of colours to 1/100000, widths in percent to 1/50, multiples of line heights to
//   1/240.
// - The weight of a strikethrough is not kept (double is). Lists count up to the ninth level, tables in
//   tables up to the 32nd, columns that nothing stands in up to the 63rd, tab stops up to the 256th.
// - In tables every cell ends with a line feed, and its end is in no link; rows are numbered anew; spans over
//   rows or columns that have no cell of their own shrink; whether borders collapse is not kept.
// - Attachments get names that the text can mention and that differ by more than upper and lower case; U+FFFC
//   without an attachment and U+0000 are not read back.

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
