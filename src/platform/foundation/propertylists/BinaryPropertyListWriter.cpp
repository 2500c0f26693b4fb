#include "platform/foundation/propertylists/BinaryPropertyListWriter.h"

#include "platform/foundation/propertylists/PropertyListBuilder.h"

#include <algorithm>
#include <bit>
#include <string>
#include <unordered_map>
#include <vector>

namespace kelvo {
namespace {

/// Longer strings are written each time. Sharing them would let honest lists look like those that the reader
/// refuses, which stand for far more than their size.
constexpr std::size_t maximumSharedStringLength = 64;

class Writer {
public:
    NSData write(const Value& root) {
        number(root, 0);
        for (referenceSize_ = 1; objects_.size() >> (8 * referenceSize_) != 0;)
            ++referenceSize_;
        reserve();
        bytes_ = "bplist00";
        std::vector<std::size_t> offsets;
        offsets.reserve(objects_.size());
        for (std::size_t object = 0, firstReference = 0; object < objects_.size(); ++object) {
            offsets.push_back(bytes_.size());
            firstReference += writeObject(objects_[object], firstReference);
        }
        writeTable(offsets);
        return NSData::dataWithBytesNoCopy(std::move(bytes_));
    }

private:
    /// Gives the value, and all below it, their places in the object table. What a container refers to is
    /// kept in references_, in the order of the containers.
    std::uint32_t number(const Value& value, std::size_t depth) {
        if (++valueCount_ > maximumPropertyListValueCount)
            throwPropertyListError(u"The property list has more than 4194304 values.");
        const auto object = static_cast<std::uint32_t>(objects_.size());
        if (value.isString() && value.string().length() <= maximumSharedStringLength) {
            const auto [known, isNew] = strings_.try_emplace(value.string(), object);
            if (!isNew)
                return known->second;
        }
        objects_.push_back(value);
        if (value.isArray() || value.isDictionary())
            numberMembers(value, depth);
        return object;
    }

    void numberMembers(const Value& container, std::size_t depth) {
        if (depth == Value::maximumDepth)
            throwPropertyListError(u"The property list is more than 512 levels deep.");
        const NSArray array = container.array();
        const NSDictionary dictionary = container.dictionary();
        std::size_t reference = references_.size();
        references_.resize(reference + array.count() + 2 * dictionary.count());
        for (const Value& element : array)
            references_[reference++] = number(element, depth + 1);
        for (const auto& [key, object] : dictionary) {
            if (!key.isString())
                throwPropertyListError(u"A property list has strings for keys only.");
            references_[reference] = number(key, depth + 1);
            references_[reference + dictionary.count()] = number(object, depth + 1);
            ++reference;
        }
    }

    /// One allocation of the right size, so that writing a large list takes no more than the list itself.
    void reserve() {
        std::size_t size = 64 + references_.size() * referenceSize_;
        for (const Value& object : objects_)
            size += 18 + object.data().length() + 2 * object.string().length();
        bytes_.reserve(checkedSizeInBytes(size, 1));
    }

    void appendUnsigned(std::uint64_t value, std::size_t size) {
        while (size-- > 0)
            bytes_ += static_cast<char>(value >> (8 * size));
    }

    void appendInteger(std::int64_t value) {
        unsigned power = 3;
        if (value >= 0 && value <= 0xFFFFFFFF)
            power = value <= 0xFF ? 0 : value <= 0xFFFF ? 1 : 2;
        bytes_ += static_cast<char>(0x10 | power);
        appendUnsigned(static_cast<std::uint64_t>(value), std::size_t(1) << power);
    }

    void appendMarker(unsigned kind, std::size_t length) {
        bytes_ += static_cast<char>(kind << 4 | std::min<std::size_t>(length, 0x0F));
        if (length >= 0x0F)
            appendInteger(static_cast<std::int64_t>(length));
    }

    void appendNumber(const NSNumber& number) {
        switch (number.kind()) {
        case NSNumber::Kind::boolean:
            bytes_ += number.boolValue() ? '\x09' : '\x08';
            break;
        case NSNumber::Kind::int32:
        case NSNumber::Kind::int64:
            appendInteger(number.longLongValue());
            break;
        case NSNumber::Kind::float32:
            bytes_ += '\x22';
            appendUnsigned(std::bit_cast<std::uint32_t>(number.floatValue()), 4);
            break;
        case NSNumber::Kind::float64:
            bytes_ += '\x23';
            appendUnsigned(std::bit_cast<std::uint64_t>(number.doubleValue()), 8);
            break;
        }
    }

    void appendString(std::u16string_view units) {
        const bool isASCII = std::ranges::all_of(units, [](char16_t unit) { return unit < 0x80; });
        appendMarker(isASCII ? 0x5 : 0x6, units.size());
        for (const char16_t unit : units)
            appendUnsigned(unit, isASCII ? 1 : 2);
    }

    /// Returns how many references it used.
    std::size_t writeObject(const Value& object, std::size_t firstReference) {
        switch (object.kind()) {
        case Value::Kind::number:
            appendNumber(*object.numberIfAny());
            return 0;
        case Value::Kind::string:
            appendString(object.string());
            return 0;
        case Value::Kind::data:
            appendMarker(0x4, object.data().length());
            bytes_ += object.data().characters();
            return 0;
        case Value::Kind::date: {
            const NSDate date = *object.dateIfAny();
            bytes_ += '\x33';
            appendUnsigned(std::bit_cast<std::uint64_t>(date.timeIntervalSinceReferenceDate()), 8);
            return 0;
        }
        case Value::Kind::array:
            appendMarker(0xA, object.array().count());
            return appendReferences(firstReference, object.array().count());
        case Value::Kind::dictionary:
            appendMarker(0xD, object.dictionary().count());
            return appendReferences(firstReference, 2 * object.dictionary().count());
        default:
            throwPropertyListError(u"A property list holds only strings, numbers, dates, data, arrays and "
                                   u"dictionaries.");
        }
    }

    std::size_t appendReferences(std::size_t first, std::size_t count) {
        for (std::size_t index = first; index < first + count; ++index)
            appendUnsigned(references_[index], referenceSize_);
        return count;
    }

    void writeTable(const std::vector<std::size_t>& offsets) {
        const std::size_t table = bytes_.size();
        std::size_t offsetSize = 1;
        while (table >> (8 * offsetSize) != 0)
            ++offsetSize;
        for (const std::size_t offset : offsets)
            appendUnsigned(offset, offsetSize);
        appendUnsigned(0, 6);
        appendUnsigned(offsetSize, 1);
        appendUnsigned(referenceSize_, 1);
        appendUnsigned(objects_.size(), 8);
        appendUnsigned(0, 8);
        appendUnsigned(table, 8);
    }

    std::vector<Value> objects_;
    std::vector<std::uint32_t> references_;
    std::unordered_map<NSString, std::uint32_t> strings_;
    std::size_t valueCount_ = 0;
    std::size_t referenceSize_ = 1;
    std::string bytes_;
};

} // namespace

NSData binaryPropertyListFromValue(const Value& value) {
    return Writer().write(value);
}

} // namespace kelvo
