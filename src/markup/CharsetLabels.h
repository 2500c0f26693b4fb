#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

#include <string_view>

namespace kelvo {

/// The encoding that a charset label means, whether there is a converter for it or not;
/// kCFStringEncodingInvalidId when it means none, and for nil and labels of fewer than 3 units. Case does not
/// matter, nor do "-", "_", spaces, quotes and full stops. A number in the label decides before its words do:
/// labels in the wild are misspelled in many ways, but their code page is mostly right.
CFStringEncoding charset2CFStringEncoding(const NSString& label);

/// The Mac script with that name, which is what follows "mac" or "x-mac" in a label: lower case, without
/// separators. MacRoman for the empty one, kCFStringEncodingInvalidId for an unknown one.
CFStringEncoding macEncoding(std::u16string_view script);

/// charset2CFStringEncoding as an NSStringEncoding, and only of encodings that text can be converted from;
/// else kCFStringEncodingInvalidId. Logs a label that fails, except for those that are
/// known to stand for "unknown": nil, "", "/", "0", "<", ">" and "auto".
NSStringEncoding charset2NSStringEncoding(const NSString& label);

/// charset2CFStringEncoding as an operation of the label.
CFStringEncoding CFEncodingFromName(const NSString& label);
/// charset2NSStringEncoding as an operation of the label.
NSStringEncoding NSEncodingFromName(const NSString& label);

} // namespace kelvo
