#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include "platform/foundation/NSException.h"
#include "platform/foundation/OldStylePropertyListWriter.h"
#include "platform/foundation/propertylists/BinaryPropertyListReader.h"
#include "platform/foundation/propertylists/BinaryPropertyListWriter.h"
#include "platform/foundation/propertylists/OldStylePropertyListReader.h"
#include "platform/foundation/propertylists/PropertyListBuilder.h"
#include "platform/foundation/propertylists/XMLPropertyListReader.h"
#include "platform/foundation/propertylists/XMLPropertyListWriter.h"

#include <algorithm>
#include <new>
#include <string>

namespace kelvo {
namespace {

/// Old-style data begins with "<" too, but a digit, a blank or ">" follows.
bool beginsLikeXML(std::string_view bytes) {
    // Every other byte of UTF-16 is NUL here; leaving those out makes the three encodings look alike.
    constexpr std::size_t examined = 4096;
    std::string head(bytes.substr(0, examined));
    if (head.starts_with("\xEF\xBB\xBF"))
        head.erase(0, 3);
    else if (head.starts_with("\xFE\xFF") || head.starts_with("\xFF\xFE"))
        head.erase(0, 2);
    std::erase(head, '\0');
    head.erase(0, std::min(head.find_first_not_of(" \t\r\n"), head.size()));
    return head.starts_with("<?") || head.starts_with("<!") || head.starts_with("<plist");
}

NSPropertyListFormat formatOfData(const NSData& data) {
    if (data.characters().starts_with("bplist"))
        return NSPropertyListBinaryFormat_v1_0;
    return beginsLikeXML(data.characters()) ? NSPropertyListXMLFormat_v1_0 : NSPropertyListOpenStepFormat;
}

Value valueFromData(const NSData& data, NSPropertyListFormat format) {
    switch (format) {
    case NSPropertyListFormat::binary_v1_0:
        return valueFromBinaryPropertyList(data);
    case NSPropertyListFormat::xml_v1_0:
        return valueFromXMLPropertyList(data);
    case NSPropertyListFormat::openStep:
        return valueFromOldStylePropertyList(data);
    }
    throwPropertyListError(u"There is no such format.");
}

NSData dataFromValue(const Value& value, NSPropertyListFormat format) {
    switch (format) {
    case NSPropertyListFormat::binary_v1_0:
        return binaryPropertyListFromValue(value);
    case NSPropertyListFormat::xml_v1_0:
        return XMLPropertyListFromValue(value);
    case NSPropertyListFormat::openStep:
        return NSData::dataWithBytesNoCopy(oldStylePropertyListFromValue(value).UTF8String());
    }
    throwPropertyListError(u"There is no such format.");
}

/// The result of `operation`, or nil and a reason.
template <typename Operation>
auto resultOrReason(NSString* errorDescription, Operation&& operation) -> decltype(operation()) {
    NSString reason;
    try {
        auto result = operation();
        if (errorDescription)
            *errorDescription = nullptr;
        return result;
    } catch (const NSException& error) {
        reason = error.reason();
    } catch (const std::bad_alloc&) {
        reason = u"There is not enough memory for the property list.";
    }
    if (errorDescription)
        *errorDescription = reason;
    return nullptr;
}

} // namespace

Value NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
    const NSData& data, NSPropertyListMutabilityOptions, NSPropertyListFormat* format,
    NSString* errorDescription) {
    return resultOrReason(errorDescription, [&]() -> Value {
        if (data.isNil())
            throwPropertyListError(u"There is no data.");
        const NSPropertyListFormat found = formatOfData(data);
        if (format)
            *format = found;
        return valueFromData(data, found);
    });
}

NSData NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(const Value& propertyList,
                                                                                 NSPropertyListFormat format,
                                                                                 NSString* errorDescription) {
    return resultOrReason(errorDescription, [&]() -> NSData { return dataFromValue(propertyList, format); });
}

} // namespace kelvo
