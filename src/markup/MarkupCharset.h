#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

namespace kelvo {

/// The charset label that a document declares: in its XML declaration, or else in the first of its meta tags
/// that has one, long or short form. The document is read no further than that tag or its body tag. Never
/// nil: empty when there is none.
NSString markupCharset(const NSString& markup);
/// charset2NSStringEncoding of that label.
NSStringEncoding markupEncoding(const NSString& markup);
/// The markupCharset of any document that begins with this text; nil when it depends on what follows.
NSString markupCharsetOfBeginning(const NSString& beginning);

/// The charset parameter of a Content-Type header's value; nil when there is none.
NSString headerCharset(const NSString& header);
/// charset2NSStringEncoding of that parameter.
NSStringEncoding headerEncoding(const NSString& header);

} // namespace kelvo
