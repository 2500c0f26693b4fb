#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

// Which files are images, by their names and their classic type codes; no file is opened. Extensions count the
// same in letters of either case, type codes ("'PDF '", see NSHFSTypeOfFile) as they are written. A path's
// extension is what pathExtension gives. Nil is an extension, a type code or a path that nothing goes by.

namespace NSImageKelvoExtensions {

/// What the files are called that the decoder reads: the extensions, each in small letters and in capitals, and the quoted
/// type codes. After them a third extension of JPEG and what is read by way of PDF: PostScript and Illustrator.
/// The decoder is asked until it says something, and then no more.
NSArray ImageFileTypes();
/// The extensions and the type code of PDF and of what becomes PDF.
NSArray PDFFileTypes();
/// The extensions of folders that hold a PDF.
NSArray PDFBundleTypes();

bool isImageFile(const NSString& path);
/// One of ImageFileTypes. An empty type code is none.
bool isImageExtension_type(const NSString& extension, const NSString& type);
/// False: uniform types are not asked about images.
bool isUTIImageFile(const NSString& path);
/// What every browser shows: JPEG, JPEG 2000, GIF and PNG.
bool isWebImageExtension(const NSString& extension);

/// PDF, or what becomes PDF: PostScript, EPS and Illustrator.
bool isPDFFile(const NSString& path);
bool isPDFExtension_type(const NSString& extension, const NSString& type);
/// PDF as it is.
bool isRealPDFFile(const NSString& path);
bool isRealPDFExtension_type(const NSString& extension, const NSString& type);
/// A folder that holds a PDF, by its name alone.
bool isPDFBundle(const NSString& path);
bool isPDFBundleExtension(const NSString& extension);

} // namespace NSImageKelvoExtensions

} // namespace kelvo
