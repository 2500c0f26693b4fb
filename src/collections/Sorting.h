#pragma once

#include "platform/foundation/NSString.h"
#include "platform/foundation/Value.h"

#include <string_view>

namespace kelvo {

// Category Sorting: orders of strings, for sorting. -1, 0 or 1, or the difference of lengths: negative when
// the first comes first. Nil is taken for the empty string.

/// Unit by unit.
int sortAscending(std::u16string_view string, std::u16string_view other);
int sortDescending(std::u16string_view string, std::u16string_view other);
/// As isEqualToStringNoCase.
int sortCaseInsensitiveAscending(std::u16string_view string, std::u16string_view other);
int sortCaseInsensitiveDescending(std::u16string_view string, std::u16string_view other);
/// As people of the user's language expect it in a list (CFStringCompareLocalizedCaseInsensitive).
int sortLocalizedCaseInsensitiveAscending(std::u16string_view string, std::u16string_view other);
int sortLocalizedCaseInsensitiveDescending(std::u16string_view string, std::u16string_view other);
/// Shorter strings first, or longer ones; among those of one length sortCaseInsensitiveAscending in both.
int sortAscendingByLength(std::u16string_view string, std::u16string_view other);
int sortDescendingByLength(std::u16string_view string, std::u16string_view other);

/// Paths of fewer components (standardizedPathComponents) first; among those of as many, component by
/// component without regard to case.
int comparePaths(const NSString& path, const NSString& other);

/// One of these as the comparator of a sort of values (CFArray.h). Values that are not strings are taken for
/// empty ones.
template <auto comparator>
int comparingStrings(const Value& first, const Value& second, void*) {
    return comparator(first.string(), second.string());
}

} // namespace kelvo
