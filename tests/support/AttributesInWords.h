#pragma once

#include "support/Importing.h"

#include <map>
#include <string>

namespace kelvo {

inline std::string shown(const Value& value) {
    if (const NSDate* const date = value.dateIfAny())
        return date->description().UTF8String();
    if (!value.isArray())
        return value.description().UTF8String();
    std::string joined;
    for (const Value& each : value.array())
        joined += '<' + shown(each) + '>';
    return joined;
}

/// What an importer sets, by names without what is common to these; "note": what else there is to say.
using Attributed = std::map<std::string, std::string>;

inline Attributed attributesInWords(importers::Import& import, const std::string& file,
                                    std::string_view contentType) {
    Attributed result;
    const NSDictionary attributes =
        attributesByImporter(import, NSData::dataWithBytes(file.data(), file.size()), contentType,
                             [&](Outcome outcome, const NSString& why) {
                                 result["note"] +=
                                     wordOfOutcome(outcome).UTF8String() + ": " + why.UTF8String();
                             });
    const std::string common = "kMDItem";
    for (const Value& name : attributes.allKeys()) {
        const std::string key = name.string().UTF8String();
        result[key.starts_with(common) ? key.substr(common.size()) : key] =
            shown(attributes.objectForKey(name));
    }
    return result;
}

inline std::string one(const Attributed& attributes, const std::string& name) {
    const auto found = attributes.find(name);
    return found == attributes.end() ? "absent" : found->second;
}

} // namespace kelvo
