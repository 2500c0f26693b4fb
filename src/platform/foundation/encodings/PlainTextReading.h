#pragma once

#include "platform/foundation/NSData.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/encodings/CFStringEncodings.h"

namespace kelvo {

/// The text of a plain-text file: by its byte-order mark (UTF-8, UTF-16, UTF-32), else as UTF-8 when it is
/// that, else as Windows Latin 1, and as ISO Latin 1 when it has bytes that Windows Latin 1 does not assign.
/// After a mark, broken UTF-8 is repaired with U+FFFD and half a unit at the end does not count. Line ends
/// stay as they are. Nil for nil, and for UTF-32 with numbers that are no characters. `encoding` is set to
/// the one that was used.
NSString stringWithPlainText(const NSData& data, NSStringEncoding* encoding);

} // namespace kelvo
