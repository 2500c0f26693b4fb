#include "platform/foundation/NSArray.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

void requireObject(const Value& value) {
    if (value.isNil())
        throw NSException(NSInvalidArgumentException, u"An array cannot hold nil.");
}

void requireIndex(std::size_t index, std::size_t limit) {
    if (index >= limit)
        throw NSException(NSRangeException, u"The index lies past the end of the array.");
}

} // namespace

NSArray NSArray::array() {
    return arrayWithValues({});
}

NSArray NSArray::arrayWithObjects(std::initializer_list<Value> objects) {
    const auto end =
        std::find_if(objects.begin(), objects.end(), [](const Value& value) { return value.isNil(); });
    return arrayWithValues(std::vector<Value>(objects.begin(), end));
}

NSArray NSArray::arrayWithValues(std::vector<Value> values) {
    std::ranges::for_each(values, requireObject);
    NSArray result;
    result.values_ = std::make_shared<std::vector<Value>>(std::move(values));
    return result;
}

std::size_t NSArray::count() const noexcept {
    return values_ ? values_->size() : 0;
}

const Value& NSArray::objectAtIndex(std::size_t index) const {
    requireIndex(index, count());
    return (*values_)[index];
}

const Value* NSArray::begin() const noexcept {
    return values_ ? values_->data() : nullptr;
}

const Value* NSArray::end() const noexcept {
    return values_ ? values_->data() + values_->size() : nullptr;
}

std::size_t NSArray::indexOfObject(const Value& value) const {
    const Value* found = std::find(begin(), end(), value);
    return found == end() ? NSNotFound : static_cast<std::size_t>(found - begin());
}

std::size_t NSArray::indexOfObjectIdenticalTo(const Value& value) const {
    const Value* found =
        std::find_if(begin(), end(), [&value](const Value& each) { return each.isIdenticalTo(value); });
    return found == end() ? NSNotFound : static_cast<std::size_t>(found - begin());
}

bool operator==(const NSArray& left, const NSArray& right) {
    return left.values_ == right.values_ ||
           (left.values_ && right.values_ && *left.values_ == *right.values_);
}

NSMutableArray::NSMutableArray(const NSArray& array) : array_(array) {}

NSMutableArray NSMutableArray::array() {
    return NSMutableArray(NSArray::array());
}

std::vector<Value>& NSMutableArray::ownValues() {
    if (array_.values_.use_count() != 1)
        array_.values_ = std::make_shared<std::vector<Value>>(*array_.values_);
    // Made as a vector that is not const, and seen by nobody else now.
    return const_cast<std::vector<Value>&>(*array_.values_);
}

void NSMutableArray::addObject(Value value) {
    requireObject(value);
    if (!isNil())
        ownValues().push_back(std::move(value));
}

void NSMutableArray::addObjectsFromArray(const NSArray& other) {
    if (!isNil())
        ownValues().insert(ownValues().end(), other.begin(), other.end());
}

void NSMutableArray::insertObject_atIndex(Value value, std::size_t index) {
    requireObject(value);
    if (isNil())
        return;
    requireIndex(index, count() + 1);
    ownValues().insert(ownValues().begin() + static_cast<std::ptrdiff_t>(index), std::move(value));
}

void NSMutableArray::replaceObjectAtIndex_withObject(std::size_t index, Value value) {
    requireObject(value);
    if (isNil())
        return;
    requireIndex(index, count());
    ownValues()[index] = std::move(value);
}

void NSMutableArray::removeObjectAtIndex(std::size_t index) {
    if (isNil())
        return;
    requireIndex(index, count());
    ownValues().erase(ownValues().begin() + static_cast<std::ptrdiff_t>(index));
}

void NSMutableArray::removeObjectsInRange(NSRange range) {
    if (isNil())
        return;
    if (!rangeFits(range, count()))
        throw NSException(NSRangeException, u"The range passes the end of the array.");
    const auto first = ownValues().begin() + static_cast<std::ptrdiff_t>(range.location);
    ownValues().erase(first, first + static_cast<std::ptrdiff_t>(range.length));
}

void NSMutableArray::removeAllObjects() {
    setArray(nullptr);
}

void NSMutableArray::setArray(const NSArray& other) {
    if (!isNil())
        array_ = other.isNil() ? NSArray::array() : other;
}

} // namespace kelvo
