#include "collections/Sorting.h"

#include "platform/foundation/encodings/CFString.h"
#include "text/PathStrings.h"

#include <algorithm>

namespace kelvo {

namespace {

int signOf(int difference) {
    return difference < 0 ? -1 : difference > 0 ? 1 : 0;
}

int lengthOf(std::u16string_view string) {
    return static_cast<int>(string.size());
}

} // namespace

int sortAscending(std::u16string_view string, std::u16string_view other) {
    return signOf(string.compare(other));
}

int sortDescending(std::u16string_view string, std::u16string_view other) {
    return -sortAscending(string, other);
}

int sortCaseInsensitiveAscending(std::u16string_view string, std::u16string_view other) {
    return signOf(CFStringCompareCaseInsensitive(string, other));
}

int sortCaseInsensitiveDescending(std::u16string_view string, std::u16string_view other) {
    return -sortCaseInsensitiveAscending(string, other);
}

int sortLocalizedCaseInsensitiveAscending(std::u16string_view string, std::u16string_view other) {
    return signOf(CFStringCompareLocalizedCaseInsensitive(string, other));
}

int sortLocalizedCaseInsensitiveDescending(std::u16string_view string, std::u16string_view other) {
    return -sortLocalizedCaseInsensitiveAscending(string, other);
}

int sortAscendingByLength(std::u16string_view string, std::u16string_view other) {
    const int difference = lengthOf(string) - lengthOf(other);
    return difference != 0 ? difference : sortCaseInsensitiveAscending(string, other);
}

int sortDescendingByLength(std::u16string_view string, std::u16string_view other) {
    const int difference = lengthOf(other) - lengthOf(string);
    return difference != 0 ? difference : sortCaseInsensitiveAscending(string, other);
}

int comparePaths(const NSString& path, const NSString& other) {
    const NSArray components = standardizedPathComponents(path);
    const NSArray otherComponents = standardizedPathComponents(other);
    if (components.count() != otherComponents.count())
        return components.count() < otherComponents.count() ? -1 : 1;
    const auto [place, otherPlace] =
        std::mismatch(components.begin(), components.end(), otherComponents.begin(),
                      [](const Value& left, const Value& right) {
                          return sortCaseInsensitiveAscending(left.string(), right.string()) == 0;
                      });
    return place == components.end() ? 0
                                     : sortCaseInsensitiveAscending(place->string(), otherPlace->string());
}

} // namespace kelvo
