#include "platform/engine/EngineFrames.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include <algorithm>
#include <utility>

namespace kelvo {
namespace {

constexpr unsigned char inMemoryFlag = 1;
constexpr unsigned char placesFlag = 2;
constexpr unsigned char peakFlag = 4;

/// Smaller data shares the memory of the contents.
constexpr std::size_t leastBytesApart = std::size_t{1} << 20;

void appendNumber(std::string& bytes, std::uint64_t number) {
    for (int shift = 0; shift < 64; shift += 8)
        bytes.push_back(static_cast<char>(number >> shift));
}

std::uint64_t numberAt(std::string_view bytes, std::size_t place) {
    std::uint64_t number = 0;
    for (std::size_t i = 8; i > 0; --i)
        number = number << 8 | static_cast<unsigned char>(bytes[place + i - 1]);
    return number;
}

/// Takes the data that stands on descriptors out of a value.
class Extraction {
public:
    // Recursion: the value is a property list of at most Value::maximumDepth levels, which is checked here because its
    // encoding checks it later.
    Value without(const Value& value) {
        if (value.isData())
            return taken(value.data());
        if (path_.size() > Value::maximumDepth)
            throw NSException(NSInvalidArgumentException, u"A message is nested too deeply.");
        if (value.isArray())
            return withoutInArray(value.array());
        if (value.isDictionary())
            return withoutInDictionary(value.dictionary());
        return value;
    }

    std::vector<NSData> data;
    std::vector<Value> paths;

private:
    Value taken(const NSData& found) {
        if (data.size() + 1 >= EngineFrameHead::mostDescriptors)
            return found;
        // What is large is sealed by itself, which saves a copy into the property list.
        const NSData shared = found.descriptor() < 0 && found.length() >= leastBytesApart
                                  ? dataForOtherProcesses(found.characters())
                                  : found;
        if (shared.descriptor() < 0)
            return found;
        data.push_back(shared);
        paths.emplace_back(NSArray::arrayWithValues(path_));
        return NSData::data();
    }

    Value withoutInArray(const NSArray& array) {
        std::vector<Value> elements;
        elements.reserve(array.count());
        const std::size_t before = data.size();
        for (std::size_t index = 0; index < array.count(); ++index) {
            path_.emplace_back(NSNumber::numberWithLongLong(static_cast<long long>(index)));
            elements.push_back(without(array.objectAtIndex(index)));
            path_.pop_back();
        }
        return data.size() == before ? Value(array) : Value(NSArray::arrayWithValues(std::move(elements)));
    }

    Value withoutInDictionary(const NSDictionary& dictionary) {
        NSMutableDictionary result = NSMutableDictionary(dictionary);
        for (const auto& [key, object] : dictionary) {
            path_.push_back(key);
            if (Value changed = without(object); !changed.isIdenticalTo(object))
                result.setObject_forKey(std::move(changed), key);
            path_.pop_back();
        }
        return result;
    }

    std::vector<Value> path_;
};

/// The value with the data put where the path leads; absent when that is not a place with empty data.
std::optional<Value> placed(const Value& value, const NSArray& path, std::size_t level, const NSData& data) {
    if (level == path.count())
        return value.isData() && value.data().isEmpty() ? std::optional<Value>(data) : std::nullopt;
    const Value& step = path.objectAtIndex(level);
    if (value.isArray()) {
        const NSNumber* const index = step.numberIfAny();
        const auto place = static_cast<std::uint64_t>(index ? index->longLongValue() : -1);
        if (place >= value.array().count())
            return std::nullopt;
        auto inner =
            placed(value.array().objectAtIndex(static_cast<std::size_t>(place)), path, level + 1, data);
        if (!inner)
            return std::nullopt;
        NSMutableArray array(value.array());
        array.replaceObjectAtIndex_withObject(static_cast<std::size_t>(place), *std::move(inner));
        return array;
    }
    if (!value.isDictionary())
        return std::nullopt;
    auto inner = placed(value.dictionary().objectForKey(step), path, level + 1, data);
    if (!inner)
        return std::nullopt;
    NSMutableDictionary dictionary(value.dictionary());
    dictionary.setObject_forKey(*std::move(inner), step);
    return dictionary;
}

NSData propertyListOf(const Value& value) {
    NSString reason;
    NSData contents = NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(
        value, NSPropertyListBinaryFormat_v1_0, &reason);
    if (contents.isNil())
        throw NSException(NSInvalidArgumentException, reason);
    return contents;
}

} // namespace

std::string EngineFrameHead::bytes() const {
    std::string result{static_cast<char>(kind), static_cast<char>(descriptorCount),
                       static_cast<char>((isInMemory ? inMemoryFlag : 0) | (hasPlaces ? placesFlag : 0) |
                                         (asksForPeak ? peakFlag : 0))};
    result.resize(8);
    for (const std::uint64_t number : {length, cpuMicroseconds, peakBytes})
        appendNumber(result, number);
    return result;
}

std::optional<EngineFrameHead> EngineFrameHead::withBytes(std::string_view bytes) {
    if (bytes.size() < size || bytes[0] < static_cast<char>(EngineFrameKind::message) ||
        bytes[0] > static_cast<char>(EngineFrameKind::report) ||
        (static_cast<unsigned char>(bytes[2]) & ~(inMemoryFlag | placesFlag | peakFlag)) != 0 ||
        bytes.substr(3, 5) != std::string_view("\0\0\0\0\0", 5))
        return std::nullopt;
    EngineFrameHead head;
    head.kind = static_cast<EngineFrameKind>(bytes[0]);
    head.descriptorCount = static_cast<std::uint8_t>(bytes[1]);
    head.isInMemory = (bytes[2] & inMemoryFlag) != 0;
    head.asksForPeak = (static_cast<unsigned char>(bytes[2]) & peakFlag) != 0;
    head.hasPlaces = (bytes[2] & placesFlag) != 0;
    head.length = numberAt(bytes, 8);
    head.cpuMicroseconds = numberAt(bytes, 16);
    head.peakBytes = numberAt(bytes, 24);
    const std::uint64_t most = head.isInMemory ? maximumSizeInBytes : leastSealedBytes;
    if (head.descriptorCount > mostDescriptors || head.length > most ||
        head.descriptorCount < (head.isInMemory ? 1 : 0) + (head.hasPlaces ? 1 : 0) ||
        (head.descriptorCount > (head.isInMemory ? 1 : 0)) != head.hasPlaces)
        return std::nullopt;
    return head;
}

EncodedEngineFrame::EncodedEngineFrame(EngineFrameHead head, const Value& value) {
    NSData contents = NSData::data();
    if (!value.isNil()) {
        Extraction extraction;
        const Value rest = extraction.without(value);
        held = std::move(extraction.data);
        head.hasPlaces = !held.empty();
        contents = propertyListOf(head.hasPlaces
                                      ? Value(NSArray::arrayWithObjects(
                                            {rest, NSArray::arrayWithValues(std::move(extraction.paths))}))
                                      : rest);
    }
    head.length = contents.length();
    head.isInMemory = contents.length() > leastSealedBytes;
    if (head.isInMemory) {
        contents = dataForOtherProcesses(contents.characters());
        if (contents.descriptor() < 0)
            throw NSException(NSMallocException, u"There is no memory for a message.");
        held.insert(held.begin(), contents);
    }
    head.descriptorCount = static_cast<std::uint8_t>(held.size());
    for (const NSData& data : held)
        descriptors.push_back(data.descriptor());
    bytes = head.bytes();
    if (!head.isInMemory)
        bytes.append(contents.characters());
}

std::optional<EngineFrame> decodedEngineFrame(const EngineFrameHead& head, std::string contents,
                                              std::vector<FileDescriptor> descriptors,
                                              EngineFrameData accepted) {
    if (descriptors.size() != head.descriptorCount)
        return std::nullopt;
    std::vector<NSData> data;
    for (FileDescriptor& descriptor : descriptors) {
        if (accepted == EngineFrameData::sealedMemory || isSealedMemory(descriptor.get()))
            data.push_back(dataWithSealedMemory(std::move(descriptor)));
        else
            data.push_back(accepted == EngineFrameData::filesAndSealedMemory
                               ? dataWithMappedFile(std::move(descriptor))
                               : dataWithOpenFile(std::move(descriptor)));
        if (data.back().isNil())
            return std::nullopt;
    }
    EngineFrame frame{head.kind, Value()};
    NSData list = NSData::dataWithBytesNoCopy(std::move(contents));
    if (head.isInMemory) {
        list = data.front();
        data.erase(data.begin());
    }
    if (list.length() != head.length)
        return std::nullopt;
    if (head.length == 0)
        return frame;
    Value value = NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
        list, NSPropertyListMutabilityOptions::immutable, nullptr, nullptr);
    if (value.isNil())
        return std::nullopt;
    if (head.hasPlaces) {
        const NSArray both = value.array();
        const NSArray paths = both.count() == 2 ? both.objectAtIndex(1).array() : NSArray();
        if (paths.count() != data.size())
            return std::nullopt;
        std::optional<Value> whole = both.objectAtIndex(0);
        for (std::size_t index = 0; whole && index < data.size(); ++index) {
            const NSArray path = paths.objectAtIndex(index).array();
            whole = path.isNil() || path.count() > Value::maximumDepth ? std::nullopt
                                                                       : placed(*whole, path, 0, data[index]);
        }
        if (!whole)
            return std::nullopt;
        value = *std::move(whole);
    }
    frame.value = std::move(value);
    return frame;
}

} // namespace kelvo
