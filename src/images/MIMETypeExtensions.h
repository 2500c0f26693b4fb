#pragma once

#include "platform/foundation/NSString.h"

// Class operations of the category MIMETypeExtensions of NSURL. Extensions come without a dot, and their letters
// count the same in either case.
namespace kelvo::MIMETypeExtensions {

/// The MIME type of files with that extension: the one that has been declared (NSURLFileTypeMappings), else
/// MIMETypeOfMediaExtension. Nil for nil and for what neither knows.
NSString MIMETypeForExtension(const NSString& extension);

/// By what images and media are called, without a table of MIME types: "application/pdf" for PDF and
/// "application/postscript" for what becomes PDF, "image/jpeg" for JPEG, and for other images and media "image/",
/// "audio/", "video/" or "application/" and then the extension as it is given ("audio/mp3"). Nil for nil and for
/// every other extension.
NSString MIMETypeOfMediaExtension(const NSString& extension);

/// The usual extension of that MIME type; nil for nil and for a type that nobody has declared.
NSString extensionForMIMEType(const NSString& type);

/// Whether the extension is that of sound, of moving pictures, or of what pages embed ("swf"), as far as the flags
/// ask for it. False for nil.
bool isMultimediaType_audio_video_embedded(const NSString& extension, bool audio, bool video, bool embedded);

} // namespace kelvo::MIMETypeExtensions
