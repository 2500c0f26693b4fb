#include "platform/foundation/propertylists/NSJSONSerialization.h"

#include "platform/foundation/NSException.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <utility>

namespace kelvo {
namespace {

using JSON = nlohmann::ordered_json;

constexpr std::size_t maximumValueCount = 4'194'304;

[[noreturn]] void refuse(const char16_t* reason) {
    throw NSException(NSInvalidArgumentException, reason);
}

/// The double whose shortest form is that of the 32-bit float: the library knows only doubles, and would give
/// 0.1f seventeen digits.
double doubleWithTextOfFloat(float value) {
    char text[32];
    const char* const end = std::to_chars(text, text + sizeof text, value).ptr;
    double result = 0;
    std::from_chars(text, end, result);
    return result;
}

class Converter {
public:
    JSON convert(const Value& value, std::size_t depth) {
        if (++valueCount_ > maximumValueCount)
            refuse(u"JSON is not written for more than 4194304 values.");
        if ((value.isArray() || value.isDictionary()) && depth == Value::maximumDepth)
            refuse(u"JSON is not written for more than 512 levels.");
        switch (value.kind()) {
        case Value::Kind::nil:
        case Value::Kind::null:
            return nullptr;
        case Value::Kind::number:
            return convertNumber(*value.numberIfAny());
        case Value::Kind::string:
            return value.string().UTF8String();
        case Value::Kind::array:
            return convertArray(value.array(), depth);
        case Value::Kind::dictionary:
            return convertDictionary(value.dictionary(), depth);
        default:
            refuse(u"JSON holds only strings, numbers, null, arrays and dictionaries.");
        }
    }

private:
    static JSON convertNumber(const NSNumber& number) {
        switch (number.kind()) {
        case NSNumber::Kind::boolean:
            return number.boolValue();
        case NSNumber::Kind::float32:
            return doubleWithTextOfFloat(number.floatValue());
        case NSNumber::Kind::float64:
            return number.doubleValue();
        default:
            return number.longLongValue();
        }
    }

    JSON convertArray(const NSArray& array, std::size_t depth) {
        JSON result = JSON::array();
        auto& elements = result.get_ref<JSON::array_t&>();
        elements.reserve(array.count());
        for (const Value& element : array)
            elements.push_back(convert(element, depth + 1));
        return result;
    }

    JSON convertDictionary(const NSDictionary& dictionary, std::size_t depth) {
        JSON result = JSON::object();
        // Storing by key would search through all keys before it. These are distinct already, except for
        // keys that differ in unpaired surrogates only.
        JSON::object_t::Container& entries = result.get_ref<JSON::object_t&>();
        entries.reserve(dictionary.count());
        for (const auto& [key, object] : dictionary) {
            if (!key.isString())
                refuse(u"JSON has strings for keys only.");
            entries.emplace_back(key.string().UTF8String(), convert(object, depth + 1));
        }
        return result;
    }

    std::size_t valueCount_ = 0;
};

} // namespace

NSData NSJSONSerialization::dataWithJSONObject_options(const Value& object, NSJSONWritingOptions options) {
    const JSON json = Converter().convert(object, 0);
    return NSData::dataWithBytesNoCopy(json.dump(options == NSJSONWritingOptions::prettyPrinted ? 2 : -1));
}

} // namespace kelvo
