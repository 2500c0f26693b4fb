#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"

#include <functional>

namespace kelvo {

/// What a metadata importer says is the text of the file; nil when none does.
using TextContentOfFileAtPath = std::function<NSString(const NSString& file)>;

/// The service result dictionary of a PDF (ResultKeys.h): its text, "PageCount", its own document attributes unchanged
/// and, where `wantsSize`, the size of its first page. Nil when the data are nil or no PDF.
///
/// The text under "String" is
/// - none when the document is locked; "Locked" is true then;
/// - else, where `attributed`, that of all pages with its fonts and colours;
/// - else, where there is a file (the path of the same PDF), what an importer says, normalised, unless Ghostscript made
///   the PDF, whose text importers get wrong;
/// - else that of its pages, read for 60 seconds at most (fixedAndNormalizedStringUsingTimeout).
///
/// Throws NSException (NSInvalidArgumentException) when there is no text to store: of a document without pages, and of
/// rich text without any. Size facts that are not known are left out.
NSDictionary _attributed_stringWithPDF_file_size(bool attributed, const NSData& pdf, const NSString& file,
                                                 bool wantsSize,
                                                 const TextContentOfFileAtPath& textContentOfFileAtPath);

/// Whether the document's attributes (may be nil) name Ghostscript as what produced it, in whatever case.
bool isProducedByGhostscript(const NSDictionary& documentAttributes);

} // namespace kelvo
