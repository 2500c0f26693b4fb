#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

// The extension that a file of some kind should have, without its dot.

namespace NSImageKelvoExtensions {

/// By a quoted type code ("'TIFF'" gives "tiff") or a MIME type ("image/x-portable-anymap" gives "pnm"). Nil for
/// nil and the empty string, a type code that is not known, and a MIME type of less than two characters after the
/// slash. A MIME type that is not known gives what stands after the slash, without "x-" and without all up to the
/// last dot; what is neither a type code nor has exactly one slash is returned as it is.
NSString pathExtensionForType(const NSString& type);

/// By what stands in the first 1024 bytes, wherever it stands there, but for the last of the bytes that are looked
/// at: "pdf", "jp2", "png", "gif", "jpeg", "tiff" or "psd". A guess: TIFF and JPEG are known only by text that most
/// such files hold. Nil when nothing is found, and for nil and less than 4 bytes.
NSString pathExtensionForData(const NSData& data);

} // namespace NSImageKelvoExtensions

namespace NSBitmapImageRepKelvoExtensions {

/// By the number under which bitmaps are encoded: 0 "tiff", 1 "bmp", 2 "gif", 3 "jpg", 4 "png", 5 "jp2", else nil.
NSString pathExtensionForBitmapImageFileType(int type);

} // namespace NSBitmapImageRepKelvoExtensions

} // namespace kelvo
