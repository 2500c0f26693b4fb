#include "platform/foundation/propertylists/XMLPropertyListWriter.h"

#include "platform/foundation/propertylists/PropertyListBuilder.h"
#include "platform/foundation/units/UTF8.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <string>
#include <string_view>

namespace kelvo {
namespace {

/// 0001-01-01 and 10000-01-01 in seconds from the reference date of NSDate.
constexpr double yearOne = -63113904000.0;
constexpr double yearTenThousand = 252423993600.0;

/// Characters of base64 in a line.
constexpr std::size_t lineLength = 76;

std::string textOfDate(NSDate date) {
    const double seconds = std::floor(date.timeIntervalSinceReferenceDate());
    if (!(seconds >= yearOne && seconds < yearTenThousand))
        throwPropertyListError(u"XML holds no dates outside of the years 1 to 9999.");
    using namespace std::chrono;
    constexpr sys_seconds reference = sys_days{2001y / January / 1};
    const sys_seconds point = reference + std::chrono::seconds(static_cast<std::int64_t>(seconds));
    const auto day = floor<days>(point);
    const year_month_day calendar(day);
    const hh_mm_ss time(point - day);
    char text[32];
    std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(calendar.year()),
                  static_cast<unsigned>(calendar.month()), static_cast<unsigned>(calendar.day()),
                  static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                  static_cast<int>(time.seconds().count()));
    return text;
}

/// In the shortest form that is read back as the same number.
std::string textOfReal(double number) {
    if (std::isnan(number))
        return "nan";
    if (std::isinf(number))
        return number > 0 ? "+infinity" : "-infinity";
    char text[32];
    return {text, std::to_chars(text, text + sizeof text, number).ptr};
}

class Writer {
public:
    NSData write(const Value& root) {
        xml_ = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
               "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
               "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n<plist version=\"1.0\">\n";
        writeValue(root, 0);
        xml_ += "</plist>\n";
        return NSData::dataWithBytesNoCopy(std::move(xml_));
    }

private:
    void writeValue(const Value& value, std::size_t depth) {
        if (++valueCount_ > maximumPropertyListValueCount)
            throwPropertyListError(u"The property list has more than 4194304 values.");
        if (xml_.size() > maximumSizeInBytes)
            throwPropertyListError(u"The property list is too large for XML.");
        switch (value.kind()) {
        case Value::Kind::number:
            return writeNumber(*value.numberIfAny(), depth);
        case Value::Kind::string:
            return writeText("string", value.string(), depth);
        case Value::Kind::data:
            return writeData(value.data(), depth);
        case Value::Kind::date:
            return writeLine("<date>" + textOfDate(*value.dateIfAny()) + "</date>", depth);
        case Value::Kind::array:
        case Value::Kind::dictionary:
            return writeContainer(value, depth);
        default:
            throwPropertyListError(u"A property list holds only strings, numbers, dates, data, arrays and "
                                   u"dictionaries.");
        }
    }

    void writeContainer(const Value& container, std::size_t depth) {
        if (depth == Value::maximumDepth)
            throwPropertyListError(u"The property list is more than 512 levels deep.");
        const std::string name = container.isArray() ? "array" : "dict";
        if (container.array().count() == 0 && container.dictionary().count() == 0)
            return writeLine('<' + name + "/>", depth);
        writeLine('<' + name + '>', depth);
        for (const Value& element : container.array())
            writeValue(element, depth + 1);
        for (const auto& [key, object] : container.dictionary()) {
            if (!key.isString())
                throwPropertyListError(u"A property list has strings for keys only.");
            writeText("key", key.string(), depth + 1);
            writeValue(object, depth + 1);
        }
        writeLine("</" + name + '>', depth);
    }

    void writeNumber(const NSNumber& number, std::size_t depth) {
        switch (number.kind()) {
        case NSNumber::Kind::boolean:
            return writeLine(number.boolValue() ? "<true/>" : "<false/>", depth);
        case NSNumber::Kind::int32:
        case NSNumber::Kind::int64:
            return writeLine("<integer>" + std::to_string(number.longLongValue()) + "</integer>", depth);
        case NSNumber::Kind::float32:
        case NSNumber::Kind::float64:
            return writeLine("<real>" + textOfReal(number.doubleValue()) + "</real>", depth);
        }
    }

    void writeText(std::string_view name, std::u16string_view units, std::size_t depth) {
        xml_.append(depth, '\t').append("<").append(name).append(">");
        for (std::size_t index = 0; index < units.size();) {
            const char32_t character = nextCharacter(units, index);
            if ((character < 0x20 && character != '\t' && character != '\n' && character != '\r') ||
                isSurrogate(character) || character == 0xFFFE || character == 0xFFFF)
                throwPropertyListError(u"XML cannot hold a character of the property list.");
            switch (character) {
            case '&':
                xml_ += "&amp;";
                break;
            case '<':
                xml_ += "&lt;";
                break;
            case '>':
                xml_ += "&gt;";
                break;
            case '\r':
                // Read back as a line feed if it stood as it is.
                xml_ += "&#13;";
                break;
            default:
                appendUTF8Character(xml_, character);
            }
        }
        xml_.append("</").append(name).append(">\n");
    }

    void writeData(const NSData& data, std::size_t depth) {
        writeLine("<data>", depth);
        const std::string base64 = data.base64EncodedString().UTF8String();
        for (std::size_t start = 0; start < base64.size(); start += lineLength)
            writeLine(std::string_view(base64).substr(start, lineLength), depth);
        writeLine("</data>", depth);
    }

    void writeLine(std::string_view text, std::size_t depth) {
        xml_.append(depth, '\t').append(text).append("\n");
    }

    std::string xml_;
    std::size_t valueCount_ = 0;
};

} // namespace

NSData XMLPropertyListFromValue(const Value& value) {
    return Writer().write(value);
}

} // namespace kelvo
