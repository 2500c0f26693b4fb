// Whatever the bytes are, either there is a text or a note says why not, and no attribute is one that nobody can show.

#include "Input.h"
#include "importers/pdf/PDFImport.h"
#include "support/Importing.h"

#include <cmath>

using namespace kelvo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData file = NSData::dataWithBytes(bytes, size);
    std::size_t notes = 0;
    const NSMutableDictionary attributes = attributesByImporter(importers::importPDF, file, "com.adobe.pdf",
                                                                [&](Outcome, const NSString& sentence) {
                                                                    require(!sentence.isEmpty());
                                                                    ++notes;
                                                                });
    // There is something to say of every file, if only that it is broken.
    const bool isRead = !attributes.objectForKey(u"kMDItemTextContent").isNil();
    require(isRead || notes > 0);
    if (const NSNumber* const pages = attributes.objectForKey(u"kMDItemNumberOfPages").numberIfAny())
        require(pages->longLongValue() > 0);
    for (const char16_t* const name : {u"kMDItemPageWidth", u"kMDItemPageHeight"}) {
        if (const NSNumber* const length = attributes.objectForKey(name).numberIfAny())
            require(std::isfinite(length->doubleValue()) && length->doubleValue() > 0);
    }
    for (const char16_t* const name : {u"kMDItemTitle", u"kMDItemSubject", u"kMDItemCreator"}) {
        const NSString text = attributes.objectForKey(name).string();
        require(text == importers::trimmed(text));
    }
    return 0;
}
