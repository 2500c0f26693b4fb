#pragma once

#include "platform/foundation/CFArray.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/Value.h"

#include <cstddef>

namespace kelvo {

// Category NSArrayKelvoExtensions. Nil is taken for the empty array.

/// Nil when the array is empty.
Value firstObject(const NSArray& array);

/// Whether the very same object is in there; an equal one does not count.
bool containsObjectIdenticalTo(const NSArray& array, const Value& object);

/// Where the object stands, or would have to be inserted, in an array that the comparator has sorted: the
/// index of the first element that does not come before it; at or past the end when all do. The range must lie
/// in the array, or NSException (NSRangeException) is thrown.
std::size_t indexOfObject_usingBinarySearch_context(const NSArray& array, const Value& object,
                                                    CFComparatorFunction comparator, void* context);
std::size_t indexOfObject_inRange_usingBinarySearch_context(const NSArray& array, const Value& object,
                                                            NSRange range, CFComparatorFunction comparator,
                                                            void* context);

/// Calls the function on the elements in order, as they were when this began; in the second form on those of
/// the range that there are. A null function is called on none.
void applyFunction_context(const NSArray& array, CFArrayApplierFunction function, void* context);
void applyFunction_context_range(const NSArray& array, CFArrayApplierFunction function, void* context,
                                 NSRange range);

} // namespace kelvo
