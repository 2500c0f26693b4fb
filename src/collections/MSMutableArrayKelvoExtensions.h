#pragma once

#include "platform/foundation/CFArray.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/Value.h"

#include <cstddef>
#include <initializer_list>

namespace kelvo {

// Category MSMutableArrayKelvoExtensions. Nothing throws; a nil receiver is left alone and gives 0 or false.
// Lists of objects end at their first nil one. "Equal" is ==, "identical" the very same object. Each look
// whether something is in an array goes through that array.

/// Appends the objects from the pointer on, which a nil one must end. A null pointer adds nothing.
void addObjects(NSMutableArray& array, const Value* objects);
void appendObjects(NSMutableArray& array, std::initializer_list<Value> objects);

/// Appends each object, unless an equal one is in the array by then.
void unionWithObjects(NSMutableArray& array, std::initializer_list<Value> objects);
void unionWithObjectsFromArray(NSMutableArray& array, const NSArray& objects);
/// Appends each object, unless it is in the array by then. In the list form the first object alone is kept out
/// by an equal one already.
void unionWithIdenticalObjects(NSMutableArray& array, std::initializer_list<Value> objects);
void unionWithIdenticalObjectsFromArray(NSMutableArray& array, const NSArray& objects);

/// Keeps the elements of which the other array, which may be nil, has an equal (identical) one.
void joinWithObjectsFromArray(NSMutableArray& array, const NSArray& other);
void joinWithIdenticalObjectsFromArray(NSMutableArray& array, const NSArray& other);
/// Removes them.
void removeObjectsFromArray(NSMutableArray& array, const NSArray& other);
void removeIdenticalObjectsFromArray(NSMutableArray& array, const NSArray& other);

/// Appends the other's elements at the end, whatever the index.
void insertObjectsFromArray_atIndex(NSMutableArray& array, const NSArray& other, std::size_t index);

/// Removes elements at the end until there are no more than that. Returns how many there are then.
std::size_t setCount(NSMutableArray& array, std::size_t count);

/// Moves an element to before the one at the index `to`; so nothing can be moved to the end. False when one of
/// two different indices is past the end.
bool moveObjectAtIndex_toIndex(NSMutableArray& array, std::size_t from, std::size_t to);

/// Sorts the array; with a range, which must lie in the array or nothing happens, that part of it. Elements
/// that compare equal keep their order. What the comparator throws is let through, with the array as it was;
/// a null one sorts nothing.
void quickSortUsingFunction(NSMutableArray& array, CFComparatorFunction comparator);
void quickSortUsingFunction_context(NSMutableArray& array, CFComparatorFunction comparator, void* context);
void quickSortUsingFunction_range_context(NSMutableArray& array, CFComparatorFunction comparator,
                                          NSRange range, void* context);

} // namespace kelvo
