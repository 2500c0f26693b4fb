// Whatever the bytes are, reading them gives a value or a reason. What was read can be written as a binary
// list, and in every form that takes it, and comes back equal but for what that form has not.

#include "platform/foundation/propertylists/NSPropertyListSerialization.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>

using namespace kelvo;

namespace {

void require(bool condition, const char* what) {
    if (condition)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

Value read(const NSData& data) {
    NSString reason;
    const Value value =
        NSPropertyListSerialization::propertyListFromData_mutabilityOption_format_errorDescription(
            data, NSPropertyListMutabilityOptions::immutable, nullptr, &reason);
    require(value.isNil() == !reason.isNil(), "a value or a reason, and never both");
    return value;
}

/// The scalar as it is after a trip through the format.
Value scalarIn(NSPropertyListFormat format, const Value& value) {
    if (format == NSPropertyListXMLFormat_v1_0 && value.isDate())
        return NSDate::dateWithTimeIntervalSinceReferenceDate(
            std::floor(value.dateIfAny()->timeIntervalSinceReferenceDate()));
    if (format == NSPropertyListOpenStepFormat && (value.isDate() || value.isNumber()))
        return value.description();
    return value;
}

// Readers bound the depth, so recursion is safe.
Value treeIn(NSPropertyListFormat format, const Value& value) {
    if (value.isArray()) {
        std::vector<Value> elements;
        for (const Value& element : value.array())
            elements.push_back(treeIn(format, element));
        return NSArray::arrayWithValues(elements);
    }
    if (value.isDictionary()) {
        NSMutableDictionary entries = NSMutableDictionary::dictionary();
        for (const auto& [key, object] : value.dictionary())
            entries.setObject_forKey(treeIn(format, object), key);
        return entries;
    }
    return scalarIn(format, value);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const Value value = read(NSData::dataWithBytes(bytes, size));
    if (value.isNil())
        return 0;
    value.description();
    for (const NSPropertyListFormat format :
         {NSPropertyListOpenStepFormat, NSPropertyListXMLFormat_v1_0, NSPropertyListBinaryFormat_v1_0}) {
        NSString reason;
        const NSData written =
            NSPropertyListSerialization::dataFromPropertyList_format_errorDescription(value, format, &reason);
        require(written.isNil() == !reason.isNil(), "data or a reason, and never both");
        require(!written.isNil() || format == NSPropertyListXMLFormat_v1_0, "only XML lacks anything");
        if (!written.isNil())
            require(read(written) == treeIn(format, value), "what is written is read back equal");
    }
    return 0;
}
