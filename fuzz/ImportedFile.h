#pragma once

#include "Input.h"
#include "support/Importing.h"

#include <string_view>

namespace kelvo {

/// Whatever the bytes are, either something is set or a note says why not; no note is empty, and neither is an array, nor a
/// string but for the text.
inline void importFuzzed(importers::Import& import, const std::uint8_t* bytes, std::size_t size,
                         std::string_view contentType) {
    bool isNoted = false;
    const NSMutableDictionary attributes = attributesByImporter(
        import, NSData::dataWithBytes(bytes, size), contentType, [&](Outcome, const NSString& sentence) {
            require(!sentence.isEmpty());
            isNoted = true;
        });
    require(isNoted || attributes.count() > 0);
    for (const Value& name : attributes.allKeys()) {
        const Value& value = attributes.objectForKey(name);
        if (value.isArray())
            require(value.array().count() > 0);
        else if (value.isString() && name != u"kMDItemTextContent")
            require(!value.string().isEmpty() && value.string() == importers::trimmed(value.string()));
    }
}

} // namespace kelvo
