#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSRange.h"

#include <cstddef>

namespace kelvo {

/// Negative when the first value comes before the second, positive when it comes after, 0 when the order does
/// not matter. The context is what the caller of a sort or search gave it.
using CFComparatorFunction = int (*)(const Value& first, const Value& second, void* context);
using CFArrayApplierFunction = void (*)(const Value& value, void* context);

/// Sorts that part of the array; elements that compare equal keep their order. An exception that the
/// comparator throws leaves the array as it was. Throws NSException (NSRangeException) when the range passes
/// the end.
void CFArraySortValues(NSMutableArray& array, NSRange range, CFComparatorFunction comparator, void* context);

/// In that part of the array, which the comparator has sorted: the index of the first element that does not
/// come before the value, which is an equal one if there is one; the end of the range when all come before
/// it. Throws NSException (NSRangeException) when the range passes the end.
std::size_t CFArrayBSearchValues(const NSArray& array, NSRange range, const Value& value,
                                 CFComparatorFunction comparator, void* context);

} // namespace kelvo
