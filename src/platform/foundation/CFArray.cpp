#include "platform/foundation/CFArray.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

void requireRange(NSRange range, std::size_t count) {
    if (!rangeFits(range, count))
        throw NSException(NSRangeException, u"The range passes the end of the array.");
}

} // namespace

void CFArraySortValues(NSMutableArray& array, NSRange range, CFComparatorFunction comparator, void* context) {
    requireRange(range, array.count());
    // The comparator may look at the array, and change it, while this goes on.
    std::vector<Value> values(array.begin(), array.end());
    const auto first = values.begin() + static_cast<std::ptrdiff_t>(range.location);
    std::stable_sort(
        first, first + static_cast<std::ptrdiff_t>(range.length),
        [&](const Value& left, const Value& right) { return comparator(left, right, context) < 0; });
    array.setArray(NSArray::arrayWithValues(std::move(values)));
}

std::size_t CFArrayBSearchValues(const NSArray& array, NSRange range, const Value& value,
                                 CFComparatorFunction comparator, void* context) {
    requireRange(range, array.count());
    const Value* const first = array.begin() + range.location;
    const Value* const found =
        std::lower_bound(first, first + range.length, value, [&](const Value& element, const Value& sought) {
            return comparator(element, sought, context) < 0;
        });
    return static_cast<std::size_t>(found - array.begin());
}

} // namespace kelvo
