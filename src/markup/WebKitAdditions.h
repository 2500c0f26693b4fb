#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"
#include "platform/webkit/WebArchive.h"

namespace kelvo {

// Category WebKitAdditions of WebArchive and WebResource. What an archive has not is nil, and so is
// everything of a nil archive.

/// The address of the archive's document.
NSURL baseURL(const WebArchive& archive);
/// The markup of the archive's document.
NSString documentSource(const WebArchive& archive);
/// The text of the resource when its MIME type is one of markup (URLUtilities.h), else nil. Without a
/// label a byte-order mark tells the encoding; else it is decoded as MarkupDecoding.h says, with the
/// resource's label and ISO Latin 1 where neither label nor document tells more.
NSString documentSource(const WebResource& resource);

namespace WebKitAdditions {

/// The markup of the document of an archive on the disk; nil when the file cannot be read, is empty or is no
/// archive (WebArchive.h). `baseURL` may be null, and receives the document's address, or nil.
NSString documentSourceOfFile_baseURL(const NSString& path, NSURL* baseURL);
NSString documentSourceOfFile(const NSString& path);

/// The archive in the file; nil as above.
WebArchive archiveOfFile(const NSString& path);

} // namespace WebKitAdditions

} // namespace kelvo
