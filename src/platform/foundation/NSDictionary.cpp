#include "platform/foundation/NSDictionary.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <vector>

namespace kelvo {

/// Entries in their order, and an index by hash once a walk would be slow. The index maps a hash to positions
/// and is rebuilt after a removal has moved them.
struct DictionaryStorage {
    static constexpr std::size_t indexedFrom = 16;

    std::vector<NSDictionary::Entry> entries;
    std::unordered_multimap<std::size_t, std::size_t> positions;

    template <typename Matches>
    std::size_t find(std::size_t hash, Matches&& matches) const {
        if (positions.empty()) {
            const auto found = std::ranges::find_if(
                entries, [&](const NSDictionary::Entry& entry) { return matches(entry.first); });
            return found == entries.end() ? NSNotFound : static_cast<std::size_t>(found - entries.begin());
        }
        const auto [first, last] = positions.equal_range(hash);
        const auto found = std::find_if(
            first, last, [&](const auto& position) { return matches(entries[position.second].first); });
        return found == last ? NSNotFound : found->second;
    }

    std::size_t find(const Value& key) const {
        return find(positions.empty() ? 0 : key.hash(), [&](const Value& held) { return held == key; });
    }

    void append(Value key, Value object) {
        entries.emplace_back(std::move(key), std::move(object));
        if (!positions.empty())
            positions.emplace(entries.back().first.hash(), entries.size() - 1);
        else if (entries.size() >= indexedFrom)
            rebuildIndex();
    }

    void rebuildIndex() {
        positions.clear();
        if (entries.size() < indexedFrom)
            return;
        for (std::size_t position = 0; position < entries.size(); ++position)
            positions.emplace(entries[position].first.hash(), position);
    }
};

namespace {

const Value& nilValue() {
    static const Value nil;
    return nil;
}

} // namespace

NSDictionary NSDictionary::dictionary() {
    NSDictionary result;
    result.storage_ = std::make_shared<DictionaryStorage>();
    return result;
}

std::size_t NSDictionary::count() const noexcept {
    return storage_ ? storage_->entries.size() : 0;
}

const Value& NSDictionary::objectForKey(const Value& key) const {
    const std::size_t position = storage_ ? storage_->find(key) : NSNotFound;
    return position == NSNotFound ? nilValue() : storage_->entries[position].second;
}

const Value& NSDictionary::objectForKey(std::u16string_view key) const {
    if (!storage_)
        return nilValue();
    const std::size_t position =
        storage_->find(std::hash<std::u16string_view>()(key), [&](const Value& held) {
            return held.isString() && held.string().characters() == key;
        });
    return position == NSNotFound ? nilValue() : storage_->entries[position].second;
}

NSArray NSDictionary::allKeys() const {
    std::vector<Value> keys;
    for (const Entry& entry : *this)
        keys.push_back(entry.first);
    return NSArray::arrayWithValues(std::move(keys));
}

NSArray NSDictionary::allValues() const {
    std::vector<Value> values;
    for (const Entry& entry : *this)
        values.push_back(entry.second);
    return NSArray::arrayWithValues(std::move(values));
}

const NSDictionary::Entry* NSDictionary::begin() const noexcept {
    return storage_ ? storage_->entries.data() : nullptr;
}

const NSDictionary::Entry* NSDictionary::end() const noexcept {
    return storage_ ? storage_->entries.data() + storage_->entries.size() : nullptr;
}

bool operator==(const NSDictionary& left, const NSDictionary& right) {
    if (left.storage_ == right.storage_)
        return true;
    if (left.isNil() || right.isNil() || left.count() != right.count())
        return false;
    return std::all_of(left.begin(), left.end(), [&](const NSDictionary::Entry& entry) {
        return right.objectForKey(entry.first) == entry.second;
    });
}

NSMutableDictionary NSMutableDictionary::dictionary() {
    return NSMutableDictionary(NSDictionary::dictionary());
}

NSMutableDictionary NSMutableDictionary::dictionaryWithObjectsAndKeys(std::initializer_list<Pair> pairs) {
    NSMutableDictionary result = dictionary();
    for (const Pair& pair : pairs) {
        if (pair.object.isNil())
            break;
        result.setObject_forKey(pair.object, pair.key);
    }
    return result;
}

DictionaryStorage& NSMutableDictionary::ownStorage() {
    if (dictionary_.storage_.use_count() != 1)
        dictionary_.storage_ = std::make_shared<DictionaryStorage>(*dictionary_.storage_);
    // Made as storage that is not const, and seen by nobody else now.
    return const_cast<DictionaryStorage&>(*dictionary_.storage_);
}

void NSMutableDictionary::setObject_forKey(Value object, Value key) {
    if (object.isNil() || key.isNil())
        throw NSException(NSInvalidArgumentException,
                          u"A dictionary can hold neither a nil key nor a nil object.");
    if (isNil())
        return;
    DictionaryStorage& storage = ownStorage();
    const std::size_t position = storage.find(key);
    if (position == NSNotFound)
        storage.append(std::move(key), std::move(object));
    else
        storage.entries[position].second = std::move(object);
}

void NSMutableDictionary::removeObjectForKey(const Value& key) {
    const std::size_t position = isNil() ? NSNotFound : dictionary_.storage_->find(key);
    if (position == NSNotFound)
        return;
    DictionaryStorage& storage = ownStorage();
    storage.entries.erase(storage.entries.begin() + static_cast<std::ptrdiff_t>(position));
    storage.rebuildIndex();
}

void NSMutableDictionary::removeAllObjects() {
    if (!isNil())
        dictionary_ = NSDictionary::dictionary();
}

} // namespace kelvo
