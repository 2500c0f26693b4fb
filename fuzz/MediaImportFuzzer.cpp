// Whatever the bytes are, there is a track or a note, and no attribute is one that nobody can show.

#include "Input.h"
#include "importers/media/MediaImport.h"
#include "support/Importing.h"

#include <cmath>

using namespace kelvo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData file = NSData::dataWithBytes(bytes, size);
    std::size_t notes = 0;
    const NSMutableDictionary attributes = attributesByImporter(importers::importMedia, file, "public.movie",
                                                                [&](Outcome, const NSString& sentence) {
                                                                    require(!sentence.isEmpty());
                                                                    ++notes;
                                                                });
    for (const Value& name : attributes.allKeys()) {
        if (const NSNumber* const number = attributes.objectForKey(name).numberIfAny())
            require(std::isfinite(number->doubleValue()));
    }
    for (const char16_t* const name :
         {u"kMDItemDurationSeconds", u"kMDItemPixelWidth", u"plumwick_frameRate"}) {
        if (const NSNumber* const number = attributes.objectForKey(name).numberIfAny())
            require(number->doubleValue() > 0);
    }
    require(attributes.objectForKey(u"plumwick_hasCover").isNil() ? notes > 0 : true);
    return 0;
}
