#pragma once

#include "platform/foundation/encodings/CFStringEncodings.h"

#include <string_view>

namespace kelvo::importers {

/// In what names were written that are not UTF-8: of the code pages that zip programs take from their systems the one in
/// which most of them looks like words.
NSStringEncoding likelyEncodingOfNames(std::string_view bytes);

} // namespace kelvo::importers
