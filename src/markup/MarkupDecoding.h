#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/NSURL.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

namespace kelvo {

namespace XmlExtensions {

/// The text of a document. `encodingName` is the charset label that came with it, from a protocol header for
/// example, and may be nil; without one that is known the first decoding is in `defaultEncoding`. When the
/// document declares another charset itself (see markupCharset) it is decoded again in that one, and the
/// better result is taken: the declared one, unless it has more U+FFFD than the one that was asked for.
///
/// Any bytes have a result, "" for none at all. It is nil only for documents past 1 GiB, when there is no
/// memory, and when the encoding of the first decoding is not available. Bytes that an encoding cannot decode
/// become U+FFFD, a byte-order mark in UTF-8 is kept as U+FEFF, and a text never has more units than the
/// document has bytes (or 32): what an encoding would make beyond that is cut off, except for the letter
/// "ch" of KOI8-CS2.
///
/// `url` does not matter.
NSString stringWithMarkupData_encodingName_defaultEncoding_URL(const NSData& data,
                                                               const NSString& encodingName,
                                                               NSStringEncoding defaultEncoding,
                                                               const NSURL& url);
/// The same without a label.
NSString stringWithMarkupData_defaultEncoding(const NSData& data, NSStringEncoding defaultEncoding);
/// The same with the charset of a Content-Type header's value, which may be nil.
NSString stringWithMarkupData_contentType_defaultEncoding(const NSData& data, const NSString& contentType,
                                                          NSStringEncoding defaultEncoding);

} // namespace XmlExtensions

/// The bytes of a document in the charset that it declares; nil when that cannot hold all of its characters.
/// A document that declares none that is known is written in ASCII with character references. Empty data for
/// nil and the empty string. `usedEncoding` may be null and receives the encoding of the bytes.
NSData markupData(const NSString& markup, NSStringEncoding* usedEncoding);
/// The same without telling the encoding.
NSData markupData(const NSString& markup);

} // namespace kelvo
