#include "collections/MSMutableArrayKelvoExtensions.h"

#include "collections/NSArrayKelvoExtensions.h"

#include <utility>
#include <vector>

namespace kelvo {

namespace {

using Contains = bool (*)(const NSArray& array, const Value& object);

bool containsEqual(const NSArray& array, const Value& object) {
    return array.containsObject(object);
}

/// The elements up to the first nil one.
NSArray listed(std::initializer_list<Value> objects) {
    return NSArray::arrayWithObjects(objects);
}

void unite(NSMutableArray& array, const NSArray& objects, Contains contains) {
    for (const Value& object : NSArray(objects)) {
        if (!contains(array, object))
            array.addObject(object);
    }
}

void keep(NSMutableArray& array, const NSArray& other, Contains contains, bool keepsContained) {
    std::vector<Value> kept;
    for (const Value& object : array) {
        if (contains(other, object) == keepsContained)
            kept.push_back(object);
    }
    if (kept.size() < array.count())
        array.setArray(NSArray::arrayWithValues(std::move(kept)));
}

} // namespace

void addObjects(NSMutableArray& array, const Value* objects) {
    for (; objects && !objects->isNil(); ++objects)
        array.addObject(*objects);
}

void appendObjects(NSMutableArray& array, std::initializer_list<Value> objects) {
    array.addObjectsFromArray(listed(objects));
}

void unionWithObjects(NSMutableArray& array, std::initializer_list<Value> objects) {
    unite(array, listed(objects), containsEqual);
}

void unionWithObjectsFromArray(NSMutableArray& array, const NSArray& objects) {
    unite(array, objects, containsEqual);
}

void unionWithIdenticalObjects(NSMutableArray& array, std::initializer_list<Value> objects) {
    const NSArray list = listed(objects);
    for (const Value& object : list) {
        const Contains contains = &object == list.begin() ? containsEqual : containsObjectIdenticalTo;
        if (!contains(array, object))
            array.addObject(object);
    }
}

void unionWithIdenticalObjectsFromArray(NSMutableArray& array, const NSArray& objects) {
    unite(array, objects, containsObjectIdenticalTo);
}

void joinWithObjectsFromArray(NSMutableArray& array, const NSArray& other) {
    keep(array, other, containsEqual, true);
}

void joinWithIdenticalObjectsFromArray(NSMutableArray& array, const NSArray& other) {
    keep(array, other, containsObjectIdenticalTo, true);
}

void removeObjectsFromArray(NSMutableArray& array, const NSArray& other) {
    keep(array, other, containsEqual, false);
}

void removeIdenticalObjectsFromArray(NSMutableArray& array, const NSArray& other) {
    keep(array, other, containsObjectIdenticalTo, false);
}

void insertObjectsFromArray_atIndex(NSMutableArray& array, const NSArray& other, std::size_t) {
    array.addObjectsFromArray(NSArray(other));
}

std::size_t setCount(NSMutableArray& array, std::size_t count) {
    if (count < array.count())
        array.removeObjectsInRange({count, array.count() - count});
    return array.count();
}

bool moveObjectAtIndex_toIndex(NSMutableArray& array, std::size_t from, std::size_t to) {
    if (array.isNil())
        return false;
    if (from == to)
        return true;
    if (from >= array.count() || to >= array.count())
        return false;
    const Value moved = array.objectAtIndex(from);
    array.removeObjectAtIndex(from);
    array.insertObject_atIndex(moved, to < from ? to : to - 1);
    return true;
}

void quickSortUsingFunction(NSMutableArray& array, CFComparatorFunction comparator) {
    quickSortUsingFunction_context(array, comparator, nullptr);
}

void quickSortUsingFunction_context(NSMutableArray& array, CFComparatorFunction comparator, void* context) {
    quickSortUsingFunction_range_context(array, comparator, {0, array.count()}, context);
}

void quickSortUsingFunction_range_context(NSMutableArray& array, CFComparatorFunction comparator,
                                          NSRange range, void* context) {
    if (comparator && array.count() > 1 && range.location < array.count() && rangeFits(range, array.count()))
        CFArraySortValues(array, range, comparator, context);
}

} // namespace kelvo
