#include "platform/foundation/propertylists/BinaryPropertyListReader.h"

#include "platform/foundation/propertylists/PropertyListBuilder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::size_t headerSize = 8;
constexpr std::size_t trailerSize = 32;
/// What a list may stand for once its shared references are counted each time they occur. Honest writers
/// share strings and numbers, never containers: a key of 30 bytes named by references of one byte is their
/// extreme.
constexpr std::size_t maximumExpansionFactor = 256;
constexpr std::size_t alwaysAllowedExpansion = 65536;

class Reader {
public:
    explicit Reader(const NSData& data) : data_(data), bytes_(data.bytes()) {}

    Value read() {
        readTrailer();
        entries_.resize(objectCount_);
        visit(topObject_);
        while (!open_.empty())
            advance();
        return entries_[topObject_].value;
    }

private:
    enum class State : std::uint8_t { unseen, open, done };
    /// What is known of one object. The tree below it is measured as if nothing in it were shared.
    struct Entry {
        Value value;
        std::size_t treeSizeInBytes = 0;
        std::uint32_t treeValueCount = 0;
        std::uint16_t height = 0;
        State state = State::unseen;
    };
    /// A container whose members are being read.
    struct Open {
        std::size_t object;
        std::size_t references;
        std::size_t referenceCount;
        std::size_t next;
        bool isDictionary;
    };

    /// `size` bytes, at most 8, most significant first; the caller has checked that they are there.
    std::uint64_t unsignedAt(std::size_t position, std::size_t size) const {
        std::uint64_t value = 0;
        for (std::size_t index = 0; index < size; ++index)
            value = value << 8 | bytes_[position + index];
        return value;
    }

    void readTrailer() {
        if (bytes_.size() < headerSize + trailerSize + 2)
            throwPropertyListError(u"The binary property list is cut short.");
        if (data_.characters().substr(0, headerSize) != "bplist00")
            throwPropertyListError(u"The binary property list is of an unknown version.");
        const std::size_t trailer = bytes_.size() - trailerSize;
        offsetSize_ = bytes_[trailer + 6];
        referenceSize_ = bytes_[trailer + 7];
        const std::uint64_t objectCount = unsignedAt(trailer + 8, 8);
        const std::uint64_t topObject = unsignedAt(trailer + 16, 8);
        const std::uint64_t offsetTable = unsignedAt(trailer + 24, 8);
        if (offsetSize_ < 1 || offsetSize_ > 8 || referenceSize_ < 1 || referenceSize_ > 8 ||
            offsetTable <= headerSize || offsetTable > trailer ||
            objectCount > (trailer - offsetTable) / offsetSize_ || topObject >= objectCount)
            throwPropertyListError(u"The trailer of the binary property list is broken or cut off.");
        if (objectCount > maximumPropertyListValueCount)
            throwPropertyListError(u"The property list has more than 4194304 values.");
        objectCount_ = static_cast<std::size_t>(objectCount);
        topObject_ = static_cast<std::size_t>(topObject);
        objectsEnd_ = static_cast<std::size_t>(offsetTable);
    }

    /// Claims the bytes of one object. Objects never overlap, so all of them together fit the file; without
    /// that rule many offsets could name one long string, which would be decoded for each.
    void claim(std::size_t object, std::size_t start, std::size_t end) {
        entries_[object].treeSizeInBytes = end - start;
        claimedSize_ += end - start;
        if (claimedSize_ > bytes_.size())
            throwPropertyListError(u"Objects of the binary property list overlap.");
    }

    void requireBytes(std::size_t position, std::uint64_t count, std::size_t unitSize) const {
        if (count > (objectsEnd_ - position) / unitSize)
            throwPropertyListError(u"An object of the binary property list passes its end.");
    }

    /// The length in the marker at `position`, which moves to the contents.
    std::uint64_t readLength(std::size_t& position) const {
        const unsigned low = bytes_[position++] & 0x0F;
        if (low != 0x0F)
            return low;
        requireBytes(position, 1, 1);
        const unsigned marker = bytes_[position++];
        if (marker < 0x10 || marker > 0x13)
            throwPropertyListError(u"A length in the binary property list is broken.");
        const std::size_t size = std::size_t(1) << (marker & 0x0F);
        requireBytes(position, size, 1);
        position += size;
        return unsignedAt(position - size, size);
    }

    void visit(std::size_t object) {
        const std::uint64_t offset = unsignedAt(objectsEnd_ + object * offsetSize_, offsetSize_);
        if (offset < headerSize || offset >= objectsEnd_)
            throwPropertyListError(u"An offset in the binary property list lies outside of it.");
        const auto start = static_cast<std::size_t>(offset);
        const unsigned kind = bytes_[start] >> 4;
        if (kind == 0xA || kind == 0xC || kind == 0xD)
            openContainer(object, start, kind == 0xD);
        else
            readScalar(object, start);
    }

    void openContainer(std::size_t object, std::size_t start, bool isDictionary) {
        std::size_t position = start;
        const std::uint64_t count = readLength(position);
        requireBytes(position, count, referenceSize_ * (isDictionary ? 2 : 1));
        const std::size_t referenceCount = static_cast<std::size_t>(count) * (isDictionary ? 2 : 1);
        claim(object, start, position + referenceCount * referenceSize_);
        if (open_.size() == Value::maximumDepth)
            throwPropertyListError(u"The property list is more than 512 levels deep.");
        entries_[object].state = State::open;
        open_.push_back({object, position, referenceCount, 0, isDictionary});
    }

    std::size_t referenceAt(const Open& container, std::size_t index) const {
        const std::uint64_t object =
            unsignedAt(container.references + index * referenceSize_, referenceSize_);
        if (object >= objectCount_)
            throwPropertyListError(u"A reference in the binary property list names no object.");
        return static_cast<std::size_t>(object);
    }

    /// Takes one step in the innermost container: on to its next member, or out of it.
    void advance() {
        Open& container = open_.back();
        if (container.next == container.referenceCount) {
            const Open finished = container;
            open_.pop_back();
            close(finished);
            return;
        }
        const std::size_t member = referenceAt(container, container.next);
        switch (entries_[member].state) {
        case State::unseen:
            visit(member);
            break;
        case State::open:
            throwPropertyListError(u"The binary property list contains itself.");
        case State::done:
            ++container.next;
            measure(entries_[container.object], entries_[member]);
            break;
        }
    }

    void measure(Entry& container, const Entry& member) const {
        container.treeSizeInBytes += member.treeSizeInBytes;
        container.treeValueCount += member.treeValueCount;
        container.height = std::max(container.height, member.height);
        if (container.height >= Value::maximumDepth)
            throwPropertyListError(u"The property list is more than 512 levels deep.");
        if (container.treeValueCount >= maximumPropertyListValueCount ||
            container.treeSizeInBytes >
                std::max(alwaysAllowedExpansion, bytes_.size() * maximumExpansionFactor))
            throwPropertyListError(u"The binary property list stands for far more than its size.");
    }

    void close(const Open& container) {
        Entry& entry = entries_[container.object];
        if (container.isDictionary) {
            NSMutableDictionary entries = NSMutableDictionary::dictionary();
            const std::size_t count = container.referenceCount / 2;
            for (std::size_t index = 0; index < count; ++index) {
                const Value& key = entries_[referenceAt(container, index)].value;
                if (!key.isString())
                    throwPropertyListError(u"A key in the binary property list is not a string.");
                entries.setObject_forKey(entries_[referenceAt(container, count + index)].value, key);
            }
            entry.value = entries.copy();
        } else {
            std::vector<Value> elements;
            elements.reserve(container.referenceCount);
            for (std::size_t index = 0; index < container.referenceCount; ++index)
                elements.push_back(entries_[referenceAt(container, index)].value);
            entry.value = NSArray::arrayWithValues(std::move(elements));
        }
        ++entry.height;
        ++entry.treeValueCount;
        entry.state = State::done;
    }

    void readScalar(std::size_t object, std::size_t start) {
        std::size_t end = start;
        Entry& entry = entries_[object];
        entry.value = scalarAt(start, end);
        claim(object, start, end);
        const bool isReference = entry.value.isDictionary();
        entry.height = isReference ? 1 : 0;
        entry.treeValueCount = isReference ? 3 : 1;
        entry.state = State::done;
    }

    /// `end` becomes the position after the object.
    Value scalarAt(std::size_t start, std::size_t& end) const {
        const unsigned marker = bytes_[start];
        const unsigned low = marker & 0x0F;
        end = start + 1;
        switch (marker >> 4) {
        case 0x0:
            if (low == 8 || low == 9)
                return NSNumber::numberWithBool(low == 9);
            break;
        case 0x1:
            if (low <= 4)
                return integerAt(take(end, std::size_t(1) << low), std::size_t(1) << low);
            break;
        case 0x2:
            if (low == 2)
                return NSNumber::numberWithFloat(
                    std::bit_cast<float>(static_cast<std::uint32_t>(unsignedAt(take(end, 4), 4))));
            if (low == 3)
                return NSNumber::numberWithDouble(std::bit_cast<double>(unsignedAt(take(end, 8), 8)));
            break;
        case 0x3:
            if (low == 3)
                return dateAt(take(end, 8));
            break;
        case 0x4: {
            const std::size_t length = takeLength(start, end, 1);
            return data_.subdataWithRange({take(end, length), length});
        }
        case 0x5: {
            const std::size_t length = takeLength(start, end, 1);
            return NSString::stringWithLatin1Bytes(data_.characters().substr(take(end, length), length));
        }
        case 0x6: {
            const std::size_t length = takeLength(start, end, 2);
            return stringAt(take(end, 2 * length), length);
        }
        case 0x8:
            if (low < 8)
                return referenceObject(unsignedAt(take(end, low + 1), low + 1));
            break;
        default:
            break;
        }
        throwPropertyListError(u"An object of the binary property list is of an unknown kind.");
    }

    /// Moves `end` over `size` bytes and returns where they begin.
    std::size_t take(std::size_t& end, std::size_t size) const {
        requireBytes(end, size, 1);
        return std::exchange(end, end + size);
    }

    std::size_t takeLength(std::size_t start, std::size_t& end, std::size_t unitSize) const {
        end = start;
        const std::uint64_t length = readLength(end);
        requireBytes(end, length, unitSize);
        return static_cast<std::size_t>(length);
    }

    /// One, two and four bytes are unsigned, eight and sixteen are signed.
    NSNumber integerAt(std::size_t position, std::size_t size) const {
        const std::uint64_t low =
            unsignedAt(position + size - std::min<std::size_t>(size, 8), std::min<std::size_t>(size, 8));
        const auto value = static_cast<std::int64_t>(low);
        if (size == 16) {
            const auto high = static_cast<std::int64_t>(unsignedAt(position, 8));
            if (high != (value < 0 ? -1 : 0))
                return NSNumber::numberWithDouble(std::ldexp(static_cast<double>(high), 64) +
                                                  static_cast<double>(low));
        }
        if (value >= std::numeric_limits<std::int32_t>::min() &&
            value <= std::numeric_limits<std::int32_t>::max())
            return NSNumber::numberWithInt(static_cast<std::int32_t>(value));
        return NSNumber::numberWithLongLong(value);
    }

    Value dateAt(std::size_t position) const {
        const auto seconds = std::bit_cast<double>(unsignedAt(position, 8));
        // A date that does not equal itself would make its collection differ from its own copy.
        if (std::isnan(seconds))
            throwPropertyListError(u"A date in the binary property list is not a number.");
        return NSDate::dateWithTimeIntervalSinceReferenceDate(seconds);
    }

    Value stringAt(std::size_t position, std::size_t length) const {
        auto* units =
            static_cast<char16_t*>(std::malloc(std::max<std::size_t>(length, 1) * sizeof(char16_t)));
        if (!units)
            throw std::bad_alloc();
        for (std::size_t index = 0; index < length; ++index)
            units[index] = static_cast<char16_t>(unsignedAt(position + 2 * index, 2));
        return NSString::stringWithCharactersNoCopy(units, length);
    }

    static Value referenceObject(std::uint64_t number) {
        NSMutableDictionary reference = NSMutableDictionary::dictionary();
        reference.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(number)),
                                   u"CF$UID");
        return reference;
    }

    const NSData& data_;
    std::span<const std::uint8_t> bytes_;
    std::size_t offsetSize_ = 0;
    std::size_t referenceSize_ = 0;
    std::size_t objectCount_ = 0;
    std::size_t topObject_ = 0;
    /// The offset table begins where the objects end.
    std::size_t objectsEnd_ = 0;
    std::size_t claimedSize_ = 0;
    std::vector<Entry> entries_;
    std::vector<Open> open_;
};

} // namespace

Value valueFromBinaryPropertyList(const NSData& data) {
    return Reader(data).read();
}

} // namespace kelvo
