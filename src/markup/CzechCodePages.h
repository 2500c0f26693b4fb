#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

namespace kelvo::XmlExtensions {

// Texts in the two Czech encodings of CFStringEncodings.h. Any bytes give a text, in which those without a
// meaning are U+FFFD. Nil for nil data.

NSString initWithKamenickyData(const NSData& data);
NSString initWithKoi8cs2Data(const NSData& data);

} // namespace kelvo::XmlExtensions
