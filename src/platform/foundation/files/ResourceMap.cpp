#include "platform/foundation/files/ResourceMap.h"

#include "platform/foundation/BigEndian.h"
#include "platform/foundation/files/FileForks.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace kelvo {

namespace {

constexpr std::size_t headerSize = 16, firstDataOffset = 256, lengthSize = 4;
// In the map: a copy of the header, six bytes for the system, then these.
constexpr std::size_t attributesOffset = 22, typeListPlaceOffset = 24, nameListPlaceOffset = 26;
constexpr std::size_t mapHeaderSize = 28, countSize = 2, typeSize = 8, referenceSize = 12;
constexpr std::uint32_t noName = 0xFFFF;
constexpr std::size_t largest16 = 0xFFFF, largest24 = 0xFF'FFFF;

using Bytes = std::span<const std::uint8_t>;

/// Reads one map, and holds where its lists stand.
class MapReader {
public:
    MapReader(const NSData& fork, NSRange data, NSRange map)
        : fork_(fork), data_(data), map_(fork.bytes().subspan(map.location, map.length)) {}

    bool readInto(std::vector<Resource>& resources) {
        if (map_.size() < mapHeaderSize)
            return false;
        typeList_ = bigEndian16(map_, typeListPlaceOffset);
        nameList_ = bigEndian16(map_, nameListPlaceOffset);
        if (!fits(typeList_, countSize))
            return false;
        const std::size_t count = countAt(typeList_);
        if (!fits(typeList_ + countSize, count * typeSize))
            return false;
        for (std::size_t k = 0; k < count; ++k) {
            if (!readType(typeList_ + countSize + k * typeSize, resources))
                return false;
        }
        return true;
    }

private:
    bool fits(std::size_t at, std::size_t size) const { return rangeFits({at, size}, map_.size()); }
    /// Counts are one less than what they count, so that 0xFFFF is none.
    std::size_t countAt(std::size_t at) const { return (bigEndian16(map_, at) + 1) & largest16; }

    bool readType(std::size_t at, std::vector<Resource>& resources) const {
        const std::size_t count = bigEndian16(map_, at + 4) + std::size_t{1};
        const std::size_t references = typeList_ + bigEndian16(map_, at + 6);
        if (!fits(references, count * referenceSize) ||
            count > ResourceMap::maximumResourceCount - resources.size())
            return false;
        for (std::size_t k = 0; k < count; ++k) {
            Resource resource;
            resource.type = bigEndian32(map_, at);
            if (!readReference(references + k * referenceSize, resource))
                return false;
            resources.push_back(std::move(resource));
        }
        return true;
    }

    bool readReference(std::size_t at, Resource& resource) const {
        resource.ID = static_cast<std::int16_t>(bigEndian16(map_, at));
        resource.attributes = map_[at + 4];
        const std::size_t place = bigEndian24(map_, at + 5);
        if (!rangeFits({place, lengthSize}, data_.length))
            return false;
        const std::size_t length = bigEndian32(fork_.bytes(), data_.location + place);
        if (!rangeFits({place + lengthSize, length}, data_.length))
            return false;
        resource.data = fork_.subdataWithRange({data_.location + place + lengthSize, length});
        const std::uint32_t name = bigEndian16(map_, at + 2);
        return name == noName || readName(nameList_ + name, resource);
    }

    bool readName(std::size_t at, Resource& resource) const {
        if (!fits(at, 1) || !fits(at + 1, map_[at]))
            return false;
        const Bytes name = map_.subspan(at + 1, map_[at]);
        resource.name.emplace(name.begin(), name.end());
        return true;
    }

    const NSData& fork_;
    NSRange data_;
    Bytes map_;
    std::size_t typeList_ = 0, nameList_ = 0;
};

void append(std::vector<std::uint8_t>& bytes, Bytes more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

} // namespace

std::optional<ResourceMap> ResourceMap::withFork(const NSData& fork) {
    const Bytes bytes = fork.bytes();
    if (bytes.size() < headerSize || bytes.size() > maximumResourceForkSizeInBytes)
        return std::nullopt;
    const NSRange data{bigEndian32(bytes, 0), bigEndian32(bytes, 8)};
    const NSRange map{bigEndian32(bytes, 4), bigEndian32(bytes, 12)};
    ResourceMap result;
    if (!rangeFits(data, bytes.size()) || !rangeFits(map, bytes.size()) ||
        !MapReader(fork, data, map).readInto(result.resources_))
        return std::nullopt;
    result.attributes_ = bigEndian16(bytes, map.location + attributesOffset);
    const std::size_t reservedEnd = std::min({firstDataOffset, data.location, map.location});
    if (reservedEnd > headerSize) {
        const Bytes reserved = bytes.subspan(headerSize, reservedEnd - headerSize);
        result.reserved_.assign(reserved.begin(), reserved.end());
    }
    return result;
}

NSData ResourceMap::dataForType_ID(std::uint32_t type, std::int16_t ID) const {
    const auto found = std::ranges::find_if(
        resources_, [&](const Resource& each) { return each.type == type && each.ID == ID; });
    return found == resources_.end() ? NSData() : found->data;
}

bool ResourceMap::removeType_ID(std::uint32_t type, std::int16_t ID) {
    return std::erase_if(resources_,
                         [&](const Resource& each) { return each.type == type && each.ID == ID; }) > 0;
}

void ResourceMap::add(Resource resource) {
    const auto last = std::find_if(resources_.rbegin(), resources_.rend(),
                                   [&](const Resource& each) { return each.type == resource.type; });
    resources_.insert(last == resources_.rend() ? resources_.end() : last.base(), std::move(resource));
}

NSData ResourceMap::fork() const {
    // A type that a fork lists twice stays so: what follows another type begins a list of its own.
    std::vector<std::uint8_t> data, types, references, names;
    std::size_t typeCount = 0;
    for (std::size_t k = 0; k < resources_.size(); ++k)
        typeCount += k == 0 || resources_[k].type != resources_[k - 1].type;
    const std::size_t typesSize = countSize + typeCount * typeSize;
    appendBigEndian(types, typeCount - 1, countSize);
    std::size_t dataSize = 0;
    for (const Resource& resource : resources_)
        dataSize += lengthSize + resource.data.length();
    if (dataSize > maximumResourceForkSizeInBytes)
        return nullptr;
    for (std::size_t k = 0; k < resources_.size();) {
        const std::size_t first = k, place = typesSize + references.size();
        for (; k < resources_.size() && resources_[k].type == resources_[first].type; ++k) {
            const Resource& resource = resources_[k];
            if (data.size() > largest24 || names.size() >= noName)
                return nullptr;
            appendBigEndian(references, static_cast<std::uint16_t>(resource.ID), 2);
            appendBigEndian(references, resource.name ? names.size() : noName, 2);
            appendBigEndian(references, resource.attributes, 1);
            appendBigEndian(references, data.size(), 3);
            appendBigEndian(references, 0, 4);
            if (resource.name) {
                appendBigEndian(names, resource.name->size(), 1);
                names.insert(names.end(), resource.name->begin(), resource.name->end());
            }
            appendBigEndian(data, resource.data.length(), lengthSize);
            append(data, resource.data.bytes());
        }
        if (place > largest16)
            return nullptr;
        appendBigEndian(types, resources_[first].type, 4);
        appendBigEndian(types, k - first - 1, 2);
        appendBigEndian(types, place, 2);
    }
    const std::size_t nameList = mapHeaderSize + typesSize + references.size();
    const std::size_t mapSize = nameList + names.size();
    if (nameList > largest16 || firstDataOffset + data.size() + mapSize > maximumResourceForkSizeInBytes)
        return nullptr;

    std::vector<std::uint8_t> bytes;
    bytes.reserve(firstDataOffset + data.size() + mapSize);
    appendBigEndian(bytes, firstDataOffset, 4);
    appendBigEndian(bytes, firstDataOffset + data.size(), 4);
    appendBigEndian(bytes, data.size(), 4);
    appendBigEndian(bytes, mapSize, 4);
    const std::vector<std::uint8_t> header = bytes;
    append(bytes, reserved_);
    bytes.resize(firstDataOffset);
    append(bytes, data);
    append(bytes, header);
    appendBigEndian(bytes, 0, attributesOffset - headerSize);
    appendBigEndian(bytes, attributes_, 2);
    appendBigEndian(bytes, mapHeaderSize, 2);
    appendBigEndian(bytes, nameList, 2);
    append(bytes, types);
    append(bytes, references);
    append(bytes, names);
    return NSData::dataWithBytesNoCopy(std::move(bytes));
}

} // namespace kelvo
