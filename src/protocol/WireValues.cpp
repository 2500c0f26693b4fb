#include "protocol/WireValues.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/SealedMemory.h"
#include "platform/foundation/Value.h"
#include "platform/foundation/connections/NSConnection.h"
#include "protocol/WireAttributedText.h"

#include <bit>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

static_assert(std::endian::native == std::endian::little, "units travel low byte first");

void checkDepth(std::size_t depth) {
    if (depth > Value::maximumDepth)
        throw NSException(NSInvalidArgumentException, u"The value is nested too deeply to be sent.");
}

template <typename Count>
unsigned listSize(Count count) {
    if (count > std::numeric_limits<unsigned>::max() >> 4)
        throw NSException(NSInvalidArgumentException, u"The collection has too many elements to be sent.");
    return static_cast<unsigned>(count);
}

capnp::Data::Reader checkedBytes(const void* bytes, std::size_t length) {
    if (length >= NSConnection::fieldLimitInBytes)
        throw NSException(NSInvalidArgumentException,
                          u"Text or data of 536870912 bytes (512 MiB) or more cannot be sent.");
    return {static_cast<const capnp::byte*>(bytes), length};
}

void encodeEntries(const NSDictionary& dictionary, wire::Dictionary::Builder builder, std::size_t depth);

void encodeNumber(const NSNumber& number, wire::Value::Builder builder) {
    switch (number.kind()) {
    case NSNumber::Kind::boolean:
        return builder.setBoolean(number.boolValue());
    case NSNumber::Kind::int32:
        return builder.setInt32(number.intValue());
    case NSNumber::Kind::int64:
        return builder.setInt64(number.longLongValue());
    case NSNumber::Kind::float32:
        return builder.setFloat32(number.floatValue());
    case NSNumber::Kind::float64:
        return builder.setFloat64(number.doubleValue());
    }
}

void encodeValue(const Value& value, wire::Value::Builder builder, std::size_t depth) {
    checkDepth(depth);
    switch (value.kind()) {
    case Value::Kind::nil:
        return builder.setNil();
    case Value::Kind::null:
        return builder.setNull();
    case Value::Kind::number:
        return encodeNumber(*value.numberIfAny(), builder);
    case Value::Kind::string:
        return builder.setString(wireString(value.string()));
    case Value::Kind::data:
        return builder.setData(wireData(value.data()));
    case Value::Kind::date:
        return builder.setDate(value.dateIfAny()->timeIntervalSinceReferenceDate());
    case Value::Kind::url:
        return encodeURL(value.url(), builder.initUrl());
    case Value::Kind::array: {
        const NSArray array = value.array();
        auto elements = builder.initArray(listSize(array.count()));
        for (unsigned index = 0; index < elements.size(); ++index)
            encodeValue(array.objectAtIndex(index), elements[index], depth + 1);
        return;
    }
    case Value::Kind::dictionary:
        return encodeEntries(value.dictionary(), builder.initDictionary(), depth);
    case Value::Kind::size: {
        auto size = builder.initSize();
        size.setWidth(value.sizeIfAny()->width);
        size.setHeight(value.sizeIfAny()->height);
        return;
    }
    case Value::Kind::color: {
        const NSColor& held = *value.colorIfAny();
        auto color = builder.initColor();
        color.setRed(held.red);
        color.setGreen(held.green);
        color.setBlue(held.blue);
        color.setAlpha(held.alpha);
        return;
    }
    case Value::Kind::attributedText:
        return encodeAttributedString(NSAttributedString::withValue(value), builder.initAttributedString());
    case Value::Kind::object:
        throw NSException(NSInvalidArgumentException, u"An object has no copy that could be sent.");
    }
}

void encodeEntries(const NSDictionary& dictionary, wire::Dictionary::Builder builder, std::size_t depth) {
    auto entries = builder.initEntries(listSize(dictionary.count()));
    unsigned index = 0;
    for (const auto& [key, object] : dictionary) {
        encodeValue(key, entries[index].initKey(), depth + 1);
        encodeValue(object, entries[index].initValue(), depth + 1);
        ++index;
    }
}

NSDictionary decodeEntries(wire::Dictionary::Reader reader, std::size_t depth);

Value decodeValue(wire::Value::Reader reader, std::size_t depth) {
    checkDepth(depth);
    switch (reader.which()) {
    case wire::Value::NIL:
        return nullptr;
    case wire::Value::NULL_:
        return NSNull();
    case wire::Value::BOOLEAN:
        return NSNumber::numberWithBool(reader.getBoolean());
    case wire::Value::INT32:
        return NSNumber::numberWithInt(reader.getInt32());
    case wire::Value::INT64:
        return NSNumber::numberWithLongLong(reader.getInt64());
    case wire::Value::FLOAT32:
        return NSNumber::numberWithFloat(reader.getFloat32());
    case wire::Value::FLOAT64:
        return NSNumber::numberWithDouble(reader.getFloat64());
    case wire::Value::STRING:
        return decodeString(reader.getString());
    case wire::Value::DATA:
        return decodeData(reader.getData());
    case wire::Value::DATE:
        return NSDate::dateWithTimeIntervalSinceReferenceDate(reader.getDate());
    case wire::Value::URL:
        return decodeURL(reader.getUrl());
    case wire::Value::ARRAY: {
        std::vector<Value> values;
        // A list of structs without content can claim any length in a few bytes, so nothing is reserved for
        // it.
        for (wire::Value::Reader element : reader.getArray())
            values.push_back(decodeValue(element, depth + 1));
        return NSArray::arrayWithValues(std::move(values));
    }
    case wire::Value::DICTIONARY:
        return decodeEntries(reader.getDictionary(), depth);
    case wire::Value::SIZE:
        return NSSize{reader.getSize().getWidth(), reader.getSize().getHeight()};
    case wire::Value::COLOR: {
        const auto color = reader.getColor();
        return NSColor{color.getRed(), color.getGreen(), color.getBlue(), color.getAlpha()};
    }
    case wire::Value::ATTRIBUTED_STRING:
        return decodeAttributedString(reader.getAttributedString());
    }
    throw NSException(NSInvalidArgumentException, u"A value of an unknown kind was received.");
}

NSDictionary decodeEntries(wire::Dictionary::Reader reader, std::size_t depth) {
    NSMutableDictionary result = NSMutableDictionary::dictionary();
    for (wire::Dictionary::Entry::Reader entry : reader.getEntries())
        result.setObject_forKey(decodeValue(entry.getValue(), depth + 1),
                                decodeValue(entry.getKey(), depth + 1));
    return result;
}

void encodeURLWithin(const NSURL& url, wire::Url::Builder builder, std::size_t depth) {
    checkDepth(depth);
    builder.setString(wireString(url.relativeString()));
    if (const NSURL base = url.baseURL(); !base.isNil())
        encodeURLWithin(base, builder.initBase(), depth + 1);
}

NSURL decodeURLWithin(wire::Url::Reader reader, std::size_t depth) {
    checkDepth(depth);
    const NSURL base = reader.hasBase() ? decodeURLWithin(reader.getBase(), depth + 1) : NSURL();
    return NSURL::URLWithString_relativeToURL(decodeString(reader.getString()), base);
}

} // namespace

capnp::Data::Reader wireString(const NSString& string) {
    return checkedBytes(string.characters().data(), string.length() * sizeof(char16_t));
}

capnp::Data::Reader wireData(const NSData& data) {
    return checkedBytes(data.bytes().data(), data.length());
}

void encodeURL(const NSURL& url, wire::Url::Builder builder) {
    encodeURLWithin(url, builder, 0);
}

void encodeDictionary(const NSDictionary& dictionary, wire::Dictionary::Builder builder) {
    encodeEntries(dictionary, builder, 0);
}

NSString decodeString(capnp::Data::Reader units) {
    if (units.size() % sizeof(char16_t) != 0)
        throw NSException(NSInvalidArgumentException, u"Text of half a unit was received.");
    // Data begins at a word of its message, so its units are aligned.
    return NSString(std::u16string_view(static_cast<const char16_t*>(static_cast<const void*>(units.begin())),
                                        units.size() / sizeof(char16_t)));
}

NSData decodeData(capnp::Data::Reader bytes) {
    return NSData::dataWithBytes(bytes.begin(), bytes.size());
}

NSData decodeDataForEngines(capnp::Data::Reader bytes) {
    return dataForOtherProcesses({reinterpret_cast<const char*>(bytes.begin()), bytes.size()});
}

NSURL decodeURL(wire::Url::Reader reader) {
    return decodeURLWithin(reader, 0);
}

NSDictionary decodeDictionary(wire::Dictionary::Reader reader) {
    return decodeEntries(reader, 0);
}

} // namespace kelvo
