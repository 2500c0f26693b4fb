#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace kelvo {

/// The text of the data. Nil when the data is nil, when the encoding is not available and when the bytes are
/// not valid in it from end to end. Empty data gives the empty string.
///
/// A byte-order mark at the beginning is taken off for UTF-8, UTF-16 and UTF-32 (not for the encodings that
/// name an order); UTF-16 and UTF-32 without one are big-endian. Unpaired surrogates in UTF-16 are kept.
NSString stringWithData_encoding(const NSData& data, NSStringEncoding encoding);
/// The same for bytes that need not be valid: what is not becomes U+FFFD.
NSString stringByRepairingData_encoding(const NSData& data, NSStringEncoding encoding);

/// The encoding whose byte-order mark the bytes begin with: UTF-8, UTF-32, UTF-16 (NSUnicodeStringEncoding),
/// or kCFStringEncodingInvalidId. FF FE 00 00 is taken for the mark of UTF-32.
NSStringEncoding encodingOfByteOrderMark(std::string_view bytes);
/// The text of data that begins with a byte-order mark, in whose encoding it is decoded, without the mark;
/// what is not valid in UTF-8 and UTF-16 becomes U+FFFD, and a part of a unit at the end of UTF-16 and UTF-32
/// is left out. What begins like UTF-32 but is not valid in it is read as UTF-16. Nil without a mark, and when
/// the text is not valid in UTF-32. `encoding` may be null; it is set when there is a text.
NSString stringWithMarkedData(const NSData& data, NSStringEncoding* encoding);

/// The bytes of the text; nil when the string is nil, when the encoding is not available and when it cannot
/// hold a character. UTF-16 and UTF-32 (not those that name an order) begin with a byte-order mark and have
/// the order of this machine; UTF-8 has no mark.
NSData dataUsingEncoding(const NSString& string, NSStringEncoding encoding);
/// With lossy conversion a character that the encoding cannot hold loses its diacritics, if that helps, or
/// becomes a question mark (an unpaired surrogate U+FFFD, where the encoding has that).
NSData dataUsingEncoding_allowLossyConversion(const NSString& string, NSStringEncoding encoding,
                                              bool allowsLossyConversion);

} // namespace kelvo
