#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"

namespace kelvo::XmlExtensions {

// Texts in the two Czech encodings of CharsetLabels.h. Any bytes give a text, in which those without a
// meaning are U+FFFD. Nil for nil data.

/// Kamenický, the code page of Czech and Slovak DOS: ASCII, the letters 80 to AB where the code page 437 has
/// its own, 437 for the rest.
NSString initWithKamenickyData(const NSData& data);

/// KOI8-CS2 (ČSN 36 9103): capitals 20 (hexadecimal) above their small letters. The bytes C7 and E7, one
/// letter "ch" to a Czech, become two units.
NSString initWithKoi8cs2Data(const NSData& data);

} // namespace kelvo::XmlExtensions
