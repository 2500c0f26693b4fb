#pragma once

#include "platform/foundation/NSRange.h"
#include "platform/foundation/Visibility.h"

#include <initializer_list>
#include <memory>
#include <vector>

namespace KELVO_PUBLIC kelvo {

class Value;

/// An immutable list of values, shared by reference. Default-constructed it is nil; nil is not the empty
/// array, but both have count 0. Elements are never nil: use NSNull.
class NSArray {
public:
    NSArray() noexcept = default;
    NSArray(std::nullptr_t) noexcept {}

    static NSArray array();
    /// Takes the elements up to the first nil one.
    static NSArray arrayWithObjects(std::initializer_list<Value> objects);
    static NSArray arrayWithValues(std::vector<Value> values);

    bool isNil() const noexcept { return !values_; }
    std::size_t count() const noexcept;
    /// Throws NSException (NSRangeException) at or past the end.
    const Value& objectAtIndex(std::size_t index) const;
    const Value* begin() const noexcept;
    const Value* end() const noexcept;
    /// The index of the first equal element, or NSNotFound.
    std::size_t indexOfObject(const Value& value) const;
    /// The index of the first element that is the very same (Value::isIdenticalTo), or NSNotFound.
    std::size_t indexOfObjectIdenticalTo(const Value& value) const;
    bool containsObject(const Value& value) const { return indexOfObject(value) != NSNotFound; }
    bool isIdenticalTo(const NSArray& other) const noexcept { return values_ == other.values_; }

    /// Element by element, deep. Nil equals nil alone.
    KELVO_PUBLIC_FRIEND bool operator==(const NSArray& left, const NSArray& right);

private:
    friend class NSMutableArray;
    std::shared_ptr<const std::vector<Value>> values_;
};

/// A list of values that can be changed. Default-constructed it is nil: changing nil does nothing. Copies are
/// independent of each other, and share storage until one of them is changed.
class NSMutableArray {
public:
    NSMutableArray() noexcept = default;
    NSMutableArray(std::nullptr_t) noexcept {}
    /// A mutable copy; nil gives nil.
    explicit NSMutableArray(const NSArray& array);

    static NSMutableArray array();

    bool isNil() const noexcept { return array_.isNil(); }
    std::size_t count() const noexcept { return array_.count(); }
    const Value& objectAtIndex(std::size_t index) const { return array_.objectAtIndex(index); }
    const Value* begin() const noexcept { return array_.begin(); }
    const Value* end() const noexcept { return array_.end(); }
    std::size_t indexOfObject(const Value& value) const { return array_.indexOfObject(value); }
    std::size_t indexOfObjectIdenticalTo(const Value& value) const {
        return array_.indexOfObjectIdenticalTo(value);
    }
    bool containsObject(const Value& value) const { return array_.containsObject(value); }

    /// Adding, inserting or storing nil throws NSException (NSInvalidArgumentException); an index or a range past the
    /// end throws NSException (NSRangeException).
    void addObject(Value value);
    void addObjectsFromArray(const NSArray& other);
    void insertObject_atIndex(Value value, std::size_t index);
    void replaceObjectAtIndex_withObject(std::size_t index, Value value);
    void removeObjectAtIndex(std::size_t index);
    void removeObjectsInRange(NSRange range);
    void removeAllObjects();
    /// Takes the other's elements in place of its own.
    void setArray(const NSArray& other);

    /// The present contents, unaffected by later changes.
    NSArray copy() const { return array_; }
    operator NSArray() const { return array_; }

    friend bool operator==(const NSMutableArray& left, const NSMutableArray& right) {
        return left.array_ == right.array_;
    }

private:
    std::vector<Value>& ownValues();

    NSArray array_;
};

} // namespace kelvo
