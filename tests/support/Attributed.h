#pragma once

#include "platform/foundation/Value.h"
#include "support/Importing.h"

#include <map>
#include <string>
#include <string_view>

namespace kelvo::tests {

/// A value in one line: strings as they are, arrays with each value in angle brackets.
inline std::string inWords(const Value& value) {
    if (const NSDate* const date = value.dateIfAny())
        return date->description().UTF8String();
    if (!value.isArray())
        return value.description().UTF8String();
    std::string joined;
    for (const Value& each : value.array())
        joined += '<' + inWords(each) + '>';
    return joined;
}

/// By their names without "kMDItem"; "note": what else there is to say.
using Attributed = std::map<std::string, std::string>;

inline Attributed attributesOf(importers::Import& import, const std::string& file, std::string_view type) {
    Attributed result;
    // An empty file has no bytes anywhere.
    const NSDictionary attributes =
        attributesByImporter(import, file.empty() ? NSData() : NSData::dataWithBytes(file), type,
                             [&](Outcome outcome, const NSString& why) {
                                 result["note"] += (result["note"].empty() ? "" : "; ") +
                                                   wordOfOutcome(outcome).UTF8String() + ": " +
                                                   why.UTF8String();
                             });
    for (const Value& key : attributes.allKeys()) {
        const std::string name = key.string().UTF8String();
        result[name.starts_with("kMDItem") ? name.substr(7) : name] = inWords(attributes.objectForKey(key));
    }
    return result;
}

inline std::string one(const Attributed& attributes, const std::string& name) {
    const auto found = attributes.find(name);
    return found == attributes.end() ? "absent" : found->second;
}

} // namespace kelvo::tests
