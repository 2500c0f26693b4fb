#include "cli/JSONView.h"

#include "cli/ExitStatus.h"
#include "cli/Files.h"
#include "cli/Printable.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/NSFileManager.h"
#include "platform/foundation/NSMutableString.h"
#include "platform/foundation/propertylists/NSJSONSerialization.h"

namespace kelvo::cli {
namespace {

NSString stringOfDate(NSDate date) {
    // "2026-11-21 09:30:00 +0000", or a number of seconds outside the years that have four digits.
    std::string text = date.description().UTF8String();
    if (text.size() == 25 && text[10] == ' ')
        text = text.substr(0, 10) + "T" + text.substr(11, 8) + "Z";
    return NSString::stringByRepairingUTF8String(text);
}

Value valueOfData(const NSData& data, const WrittenBytes& written) {
    NSMutableDictionary result = NSMutableDictionary::dictionary();
    result.setObject_forKey(NSNumber::numberWithLongLong(static_cast<std::int64_t>(data.length())), u"bytes");
    if (!written.fileName.empty() && data.isIdenticalTo(written.data))
        result.setObject_forKey(
            NSFileManager::defaultManager().stringWithFileSystemRepresentation(written.fileName), u"file");
    else
        result.setObject_forKey(data.base64EncodedString(), u"base64");
    return result;
}

Value valueOfColor(NSColor color) {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithFloat(color.red), u"red"},
         {NSNumber::numberWithFloat(color.green), u"green"},
         {NSNumber::numberWithFloat(color.blue), u"blue"},
         {NSNumber::numberWithFloat(color.alpha), u"alpha"}});
}

} // namespace

Value valueForJSON(const Value& value, const WrittenBytes& written) {
    switch (value.kind()) {
    case Value::Kind::nil:
    case Value::Kind::null:
    case Value::Kind::number:
    case Value::Kind::string:
        return value;
    case Value::Kind::data:
        return valueOfData(value.data(), written);
    case Value::Kind::date:
        return stringOfDate(*value.dateIfAny());
    case Value::Kind::url:
        return value.url().absoluteString();
    case Value::Kind::size:
        return NSStringFromSize(*value.sizeIfAny());
    case Value::Kind::color:
        return valueOfColor(*value.colorIfAny());
    case Value::Kind::array: {
        NSMutableArray result = NSMutableArray::array();
        for (const Value& element : value.array())
            result.addObject(valueForJSON(element, written));
        return result;
    }
    case Value::Kind::dictionary: {
        NSMutableDictionary result = NSMutableDictionary::dictionary();
        for (const auto& [key, object] : value.dictionary())
            result.setObject_forKey(valueForJSON(object, written), key.description());
        return result;
    }
    default:
        return value.description();
    }
}

std::string lineOfJSON(const Value& value, const WrittenBytes& written) {
    try {
        const NSData line = NSJSONSerialization::dataWithJSONObject_options(valueForJSON(value, written),
                                                                            NSJSONWritingOptions::compact);
        return std::string(line.characters()) + "\n";
    } catch (const NSException& exception) {
        throw CommandError(ExitStatus::file,
                           "the answer cannot be written as JSON: " + printable(exception.reason()));
    }
}

NSDictionary withFile(const std::string& file, const NSDictionary& entries) {
    constexpr const char16_t* keyOfFile = u"file";
    NSMutableDictionary result = NSMutableDictionary::dictionary();
    result.setObject_forKey(pathOfFile(file), keyOfFile);
    for (const auto& [name, value] : entries) {
        if (name.string() != keyOfFile)
            result.setObject_forKey(value, name);
    }
    return result;
}

} // namespace kelvo::cli
