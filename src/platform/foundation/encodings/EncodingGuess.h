#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

#include <string_view>

namespace kelvo {

/// Whether text of seven bits may shift between sets of characters (ISO 2022), so that it is not what it looks like.
bool mayBeShifted(std::string_view text);

/// As stringWithPlainText, and for text without a mark that is no UTF-8 the encoding that its bytes make most probable
/// (ICU's detector, by how often letters follow each other, from the first 64 KiB), where that is not a Western one and
/// there is little doubt: about a line of Russian, Greek or Polish, fewer signs of Chinese, Japanese or Korean.
NSString stringWithTextOfAnyLanguage(const NSData& data, NSStringEncoding* encoding);

} // namespace kelvo
