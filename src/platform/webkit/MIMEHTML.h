#pragma once

#include "platform/webkit/WebArchive.h"

namespace kelvo {

/// A page saved as MIME HTML: a multipart message that is multipart/related or has an HTML page among its
/// parts, or such a page alone as a message that has a MIME-Version. Nil for anything else; also when the
/// message might have more than 65,536 parts, 2,048 messages within it, 262,144 header fields and parameters, or
/// a field of more than 1 MiB, and when the engine that reads it fails or is missing, which is noted with the
/// current request. What is nested more deeply than 1,024 multiparts is left out.
///
/// - The main resource is the part that the message names as its start, else the first HTML page, else the
///   first part of a message that is multipart/related.
/// - A part that a frame element names is an archive among the frames of the page that names it, the first
///   that does. HTML pages that no page names come after the frames of the main one.
/// - All other parts are subresources of the main archive. One that has both a Content-ID and an address is
///   there under either, and so is a frame.
/// - Addresses are resolved against that of the message; one of more than 8,192 bytes counts as none. A part
///   without an address has the URL "cid:" and its Content-ID, or no URL.
WebArchive archiveFromMIMEHTML(const NSData& data);

} // namespace kelvo
