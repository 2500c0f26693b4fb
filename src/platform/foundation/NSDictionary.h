#pragma once

#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSString.h"
#include "platform/foundation/Visibility.h"

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string_view>
#include <utility>

namespace KELVO_PUBLIC kelvo {

class Value;
struct DictionaryStorage;

/// An immutable map from values (as a rule strings) to values, in the order in which the keys were first
/// stored, shared by reference. Default-constructed it is nil; nil is not the empty dictionary, but both have
/// count 0. Keys and objects are never nil: use NSNull.
class NSDictionary {
public:
    using Entry = std::pair<Value, Value>;

    NSDictionary() noexcept = default;
    NSDictionary(std::nullptr_t) noexcept {}

    static NSDictionary dictionary();

    bool isNil() const noexcept { return !storage_; }
    std::size_t count() const noexcept;
    /// The value of the key, or the nil value. The reference lasts as long as any handle on this dictionary.
    const Value& objectForKey(const Value& key) const;
    const Value& objectForKey(std::u16string_view key) const;
    const Value& objectForKey(const NSString& key) const { return objectForKey(key.characters()); }
    const Value& objectForKey(const char16_t* key) const { return objectForKey(std::u16string_view(key)); }
    NSArray allKeys() const;
    NSArray allValues() const;
    const Entry* begin() const noexcept;
    const Entry* end() const noexcept;
    bool isIdenticalTo(const NSDictionary& other) const noexcept { return storage_ == other.storage_; }

    /// The same keys with equal values, in whatever order. Nil equals nil alone.
    KELVO_PUBLIC_FRIEND bool operator==(const NSDictionary& left, const NSDictionary& right);

private:
    friend class NSMutableDictionary;
    std::shared_ptr<const DictionaryStorage> storage_;
};

/// A map that can be changed. Default-constructed it is nil: changing nil does nothing. Copies are
/// independent of each other, and share storage until one of them is changed.
class NSMutableDictionary {
public:
    using Entry = NSDictionary::Entry;
    struct Pair;

    NSMutableDictionary() noexcept = default;
    NSMutableDictionary(std::nullptr_t) noexcept {}
    /// A mutable copy; nil gives nil.
    explicit NSMutableDictionary(const NSDictionary& dictionary) : dictionary_(dictionary) {}

    static NSMutableDictionary dictionary();
    /// Stores the pairs in order, up to the first nil object, which ends the list.
    static NSMutableDictionary dictionaryWithObjectsAndKeys(std::initializer_list<Pair> pairs);

    bool isNil() const noexcept { return dictionary_.isNil(); }
    std::size_t count() const noexcept { return dictionary_.count(); }
    const Value& objectForKey(const Value& key) const { return dictionary_.objectForKey(key); }
    const Value& objectForKey(std::u16string_view key) const { return dictionary_.objectForKey(key); }
    const Value& objectForKey(const NSString& key) const { return dictionary_.objectForKey(key); }
    const Value& objectForKey(const char16_t* key) const { return dictionary_.objectForKey(key); }
    NSArray allKeys() const { return dictionary_.allKeys(); }
    const Entry* begin() const noexcept { return dictionary_.begin(); }
    const Entry* end() const noexcept { return dictionary_.end(); }

    /// A key that is there already keeps its place. A nil key or object throws NSException
    /// (NSInvalidArgumentException).
    void setObject_forKey(Value object, Value key);
    void removeObjectForKey(const Value& key);
    void removeAllObjects();

    /// The present contents, unaffected by later changes.
    NSDictionary copy() const { return dictionary_; }
    operator NSDictionary() const { return dictionary_; }

    friend bool operator==(const NSMutableDictionary& left, const NSMutableDictionary& right) {
        return left.dictionary_ == right.dictionary_;
    }

private:
    DictionaryStorage& ownStorage();

    NSDictionary dictionary_;
};

} // namespace kelvo
