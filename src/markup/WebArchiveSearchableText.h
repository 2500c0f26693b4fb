#pragma once

#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"
#include "platform/webkit/WebArchive.h"

namespace kelvo {

// Category SearchableText of WebArchive: the plain text of a saved page and its frames. (WebKitAdditions.h
// has the address and the source.)
//
// Each document with a source gives one piece: two line feeds and the text of its body as Html2Text.h makes
// it, with the lines of preformatted text kept. Two line feeds begin the first piece too. A
// document without any text (a frameset, say) gives the line feeds alone. The archive's own document comes
// first, then its frames in order, each before the frames within it.

/// Appends the pieces; nothing when there are none. Throws NSException (NSMallocException) when the text
/// would pass maximumSizeInBytes.
void appendSearchableTextTo(const WebArchive& archive, NSMutableString& text);
/// The pieces; empty, not nil, when there are none.
NSString searchableText(const WebArchive& archive);
/// The same. `source` may be null, and receives the source of the archive's own document, or nil.
NSString searchableTextAndSource(const WebArchive& archive, NSString* source);

namespace SearchableText {

/// The text of an archive on the disk. Nil when the path is nil, and when the file cannot be read, is empty
/// or is no archive (WebArchive.h). `baseURL` and `source` may be null; they receive the address and source
/// of the archive's own document, or nil.
NSString searchableTextOfFile_baseURL_source(const NSString& path, NSURL* baseURL, NSString* source);
NSString searchableTextOfFile(const NSString& path);

} // namespace SearchableText

} // namespace kelvo
