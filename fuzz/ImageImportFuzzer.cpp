// Whatever the bytes are, there is a size or a note, and no attribute is one that nobody can show.

#include "Input.h"
#include "importers/images/ImageImport.h"
#include "support/Importing.h"

#include <cmath>

using namespace kelvo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData file = NSData::dataWithBytes(bytes, size);
    std::size_t notes = 0;
    const NSMutableDictionary attributes = attributesByImporter(importers::importImage, file, "public.image",
                                                                [&](Outcome, const NSString& sentence) {
                                                                    require(!sentence.isEmpty());
                                                                    ++notes;
                                                                });
    const NSNumber* const width = attributes.objectForKey(u"kMDItemPixelWidth").numberIfAny();
    require(!width || width->longLongValue() > 0);
    for (const Value& name : attributes.allKeys()) {
        const Value& value = attributes.objectForKey(name);
        if (const NSNumber* const number = value.numberIfAny())
            require(std::isfinite(number->doubleValue()));
        require(!value.isString() || value.string() == importers::trimmed(value.string()));
    }
    require(attributes.count() > 0 || notes > 0);
    return 0;
}
