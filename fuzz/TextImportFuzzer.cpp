// Whatever the bytes are, they are text in the encoding that they are taken for, or none; a Markdown title is part of it.

#include "Input.h"
#include "importers/text/TextImport.h"
#include "platform/filekinds/FileKind.h"
#include "platform/foundation/encodings/EncodingGuess.h"
#include "support/Importing.h"

using namespace kelvo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData file = NSData::dataWithBytes(bytes, size);
    const NSDictionary attributes =
        attributesByImporter(importers::importText, file, "net.daringfireball.markdown");
    NSStringEncoding encoding = 0;
    const NSString expected =
        isText(FileContents(file.characters())) ? stringWithTextOfAnyLanguage(file, &encoding) : NSString();
    const NSString text = attributes.objectForKey(u"kMDItemTextContent").string();
    require(text.isNil() == expected.isNil());
    // Surrogates without their other half do not travel.
    require(text.UTF8String() == expected.UTF8String());
    const NSString title = attributes.objectForKey(u"kMDItemTitle").string();
    require(title.isNil() || (!title.isEmpty() && title.length() <= text.length()));
    return 0;
}
