#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

namespace kelvo {

// Base64 after RFC 4648, section 4: the alphabet with "+" and "/", and padding with "=". Nil gives nil, the
// empty string itself.

/// The text's UTF-8 bytes in base64, in one line. Nil when the text holds an unpaired surrogate, and when the
/// result would pass maximumSizeInBytes.
NSString encodebase64(const NSString& text);

/// The text of the decoded bytes in that encoding, without it in UTF-8. White space (U+0020, U+0009, U+000A
/// and U+000D) may stand anywhere. Nil for everything else that is not exactly what an encoder writes (other
/// characters, missing or misplaced padding, bits set in the padded part), and when the bytes are no text in
/// the encoding or the encoding is not available.
NSString decodebase64UsingEncoding(const NSString& base64, NSStringEncoding encoding);
NSString decodebase64(const NSString& base64);

} // namespace kelvo
