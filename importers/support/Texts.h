#pragma once

#include "platform/foundation/Value.h"

#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {

/// What is not UTF-8 becomes U+FFFD.
inline NSString stringOf(std::string_view bytes) {
    return NSString::stringByRepairingUTF8String(bytes);
}

inline NSArray arrayOf(const std::vector<std::string>& texts) {
    NSMutableArray strings = NSMutableArray::array();
    for (const std::string& text : texts)
        strings.addObject(stringOf(text));
    return strings;
}

} // namespace kelvo::importers
