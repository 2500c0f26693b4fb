#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"
#include "service/PDFText.h"

namespace kelvo {

/// The service result dictionary of an image file (ResultKeys.h); nil when it is no image, or whatever reads it failed on
/// it, which is noted with the current request.
///
/// Where the text of PDFs is not wanted and the image's own thumbnail can be had at once, that and the properties of the
/// image; nothing when it has no properties. Else the sizes of the image, whether it has alpha, a thumbnail drawn for the
/// purpose, and for what is or becomes a PDF its text, which importers may give for real PDFs where `mayUseImporters`. Of a
/// PDF that cannot be drawn (a locked one) there are the text's facts alone, of which the first page's size is one.
NSDictionary imageWithContentsOfFile(const NSString& file, bool wantsPDFText, bool mayUseImporters,
                                     const TextContentOfFileAtPath& textContentOfFileAtPath);

/// The file as a PDF, when it is one or becomes one (PostScript, EPS), or is a folder that holds one; else nil, and when
/// it cannot be read.
NSData PDFImageRepOfFile(const NSString& file);

} // namespace kelvo
