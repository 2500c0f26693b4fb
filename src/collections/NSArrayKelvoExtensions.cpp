#include "collections/NSArrayKelvoExtensions.h"

#include <algorithm>

namespace kelvo {

Value firstObject(const NSArray& array) {
    return array.count() > 0 ? array.objectAtIndex(0) : Value();
}

bool containsObjectIdenticalTo(const NSArray& array, const Value& object) {
    return array.indexOfObjectIdenticalTo(object) != NSNotFound;
}

std::size_t indexOfObject_usingBinarySearch_context(const NSArray& array, const Value& object,
                                                    CFComparatorFunction comparator, void* context) {
    return CFArrayBSearchValues(array, {0, array.count()}, object, comparator, context);
}

std::size_t indexOfObject_inRange_usingBinarySearch_context(const NSArray& array, const Value& object,
                                                            NSRange range, CFComparatorFunction comparator,
                                                            void* context) {
    return CFArrayBSearchValues(array, range, object, comparator, context);
}

void applyFunction_context(const NSArray& array, CFArrayApplierFunction function, void* context) {
    applyFunction_context_range(array, function, context, {0, array.count()});
}

void applyFunction_context_range(const NSArray& array, CFArrayApplierFunction function, void* context,
                                 NSRange range) {
    // The function may give the caller's variable another array.
    // NOLINTNEXTLINE(performance-unnecessary-copy-initialization): it keeps the elements.
    const NSArray elements = array;
    if (!function || range.location >= elements.count())
        return;
    const Value* const first = elements.begin() + range.location;
    const std::size_t length = std::min(range.length, elements.count() - range.location);
    std::for_each(first, first + length, [&](const Value& value) { function(value, context); });
}

} // namespace kelvo
