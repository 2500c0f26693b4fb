#pragma once

#include "platform/foundation/encodings/CFStringEncodings.h"

#include <cstddef>
#include <cstdint>

namespace kelvo {

/// The number of a text encoding; the same as its CFStringEncoding.
using TextEncoding = CFStringEncoding;
/// 0 is success.
using OSStatus = std::int32_t;

inline constexpr OSStatus noErr = 0;
/// A null argument where one is needed.
inline constexpr OSStatus paramErr = -50;
/// One of the encodings is not available.
inline constexpr OSStatus kTextUnsupportedEncodingErr = -8738;
/// The output is full and there is more to come.
inline constexpr OSStatus kTECOutputBufferFullStatus = -8785;

inline constexpr std::uint32_t kTextEncodingUnicodeDefault = 0x100;
inline constexpr std::uint32_t kTextEncodingDefaultVariant = 0;
inline constexpr std::uint32_t kUnicode16BitFormat = 0;
inline constexpr std::uint32_t kUnicodeUTF8Format = 2;

TextEncoding CreateTextEncoding(std::uint32_t base, std::uint32_t variant, std::uint32_t format);

/// A conversion from one encoding into another, with the state between its calls. For use by one thread at a
/// time.
class TECConverter;
using TECObjectRef = TECConverter*;

/// Sets `*converter`, which the caller disposes of, or null when the status is not 0.
///
/// As a destination, and as the source for any other destination, kCFStringEncodingUTF16 means 16-bit units
/// of this machine without a byte-order mark. As the source for itself it means the bytes of a file: a mark
/// says the order and is taken off, and without one they are big-endian.
OSStatus TECCreateConverter(TECObjectRef* converter, TextEncoding source, TextEncoding destination);
OSStatus TECDisposeConverter(TECObjectRef converter);
/// Begins another text.
OSStatus TECClearConverterContextInfo(TECObjectRef converter);

/// Converts as much as fits, whole characters only. The input reaches to the end of its text: a sequence that
/// is cut off there is undecodable. What cannot be decoded becomes U+FFFD; what the destination cannot hold
/// loses its diacritics or becomes a question mark (an unpaired surrogate U+FFFD, where there is one).
/// Neither is a failure.
///
/// When the output is full (kTECOutputBufferFullStatus) the call may be repeated with the input from
/// `*inputRead` on and more room; the converter keeps what it has read and not written. All lengths are in
/// bytes, and both results are always set. The output need not be aligned.
OSStatus TECConvertText(TECObjectRef converter, const std::uint8_t* input, std::size_t inputLength,
                        std::size_t* inputRead, std::uint8_t* output, std::size_t outputCapacity,
                        std::size_t* outputWritten);

} // namespace kelvo
