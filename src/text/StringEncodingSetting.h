#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

namespace kelvo::NSStringKelvoExtensions {

/// The encoding of text files that are written without naming one; UTF-8 unless it is set. It belongs to the
/// thread that serves.
extern NSStringEncoding defaultEncodingSetting;
inline NSStringEncoding defaultEncoding() {
    return defaultEncodingSetting;
}
/// Any number is taken; writers treat one that is no available encoding like one that cannot hold the text.
inline void setDefaultEncoding(NSStringEncoding encoding) {
    defaultEncodingSetting = encoding;
}

/// The text of the bytes before the first zero byte. Nil for a null pointer, for an encoding that is not
/// available, and for bytes that are not valid in it or too many.
NSString initWithNullTerminatedCString_encoding(const char* bytes, NSStringEncoding encoding);
inline NSString stringWithNullTerminatedCString_encoding(const char* bytes, NSStringEncoding encoding) {
    return initWithNullTerminatedCString_encoding(bytes, encoding);
}

} // namespace kelvo::NSStringKelvoExtensions
