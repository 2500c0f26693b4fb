#include "text/NSStringExtensions.h"

#include "platform/foundation/Value.h"
#include "text/StringFolding.h"

#include <algorithm>

namespace kelvo {

namespace {

template <class Matches>
std::size_t indexOfFirst(const NSArray& array, Matches matches) {
    const Value* found = std::find_if(array.begin(), array.end(), [&](const Value& value) {
        return value.isString() && matches(value.string());
    });
    return found == array.end() ? NSNotFound : static_cast<std::size_t>(found - array.begin());
}

} // namespace

std::size_t indexOfStringEqualTo(const NSArray& array, const NSString& string) {
    return indexOfFirst(array, [&](const NSString& element) { return element == string; });
}

std::size_t indexOfStringEqualToNoCase(const NSArray& array, const NSString& string) {
    return indexOfFirst(array, [&](const NSString& element) {
        return range_isEqualToNoCase(element, {0, element.length()}, string);
    });
}

} // namespace kelvo
