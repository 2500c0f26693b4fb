#pragma once

#include "importers/support/Importer.h"
#include "platform/foundation/NSException.h"
#include "platform/foundation/Value.h"
#include "platform/plugins/engine/PlugInAttributes.h"

#include <utility>

namespace kelvo {

/// What an importer sets of a file of these bytes, in this process. What else there is to say goes to `note`, what it has
/// to ask to `ask`.
inline NSMutableDictionary attributesByImporter(
    importers::Import& import, NSData file, std::string_view contentType,
    PlugInAttributes::Note note = [](Outcome, const NSString&) {}, PlugInAttributes::Ask ask = {}) {
    NSMutableDictionary result = NSMutableDictionary::dictionary();
    PlugInAttributes filled(
        std::move(file),
        [&](const NSArray& attribute) {
            result.setObject_forKey(attribute.count() > 1 ? attribute.objectAtIndex(1) : Value(NSNull()),
                                    attribute.objectAtIndex(0));
        },
        std::move(note), std::move(ask));
    importers::Attributes attributes(&filled, contentType);
    try {
        import(attributes);
    } catch (const NSException&) {
        // What was set is kept.
    }
    return result;
}

} // namespace kelvo
