#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"

#include <cstddef>

namespace kelvo {

// Strings in arrays. Elements that are not strings equal no string; a nil array, and a nil string, are not
// found. NoCase compares as range_isEqualToNoCase does. Indices are NSNotFound for what is not there.

/// The index of the first element that equals the string.
std::size_t indexOfStringEqualTo(const NSArray& array, const NSString& string);
std::size_t indexOfStringEqualToNoCase(const NSArray& array, const NSString& string);

inline bool containsString(const NSArray& array, const NSString& string) {
    return indexOfStringEqualTo(array, string) != NSNotFound;
}
inline bool containsStringNoCase(const NSArray& array, const NSString& string) {
    return indexOfStringEqualToNoCase(array, string) != NSNotFound;
}

} // namespace kelvo
