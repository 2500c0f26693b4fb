// Rich text in one file, or as the text of a package. Whatever the bytes are, either there is a text or a note says why not.

#include "Input.h"
#include "importers/richtext/RichTextImport.h"
#include "support/Importing.h"

using namespace kelvo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData file = NSData::dataWithBytes(bytes, size);
    for (const bool isPackage : {false, true}) {
        std::size_t notes = 0;
        const NSMutableDictionary attributes = attributesByImporter(
            importers::importRichText, isPackage ? NSData() : file,
            isPackage ? "com.apple.rtfd" : "public.rtf",
            [&](Outcome, const NSString& sentence) {
                require(!sentence.isEmpty());
                ++notes;
            },
            [&](const NSDictionary&) { return file; });
        const NSString text = attributes.objectForKey(u"kMDItemTextContent").string();
        require(!text.isNil() || notes > 0);
        require(text.isNil() || text.characters().find(u'\uFFFC') == std::u16string_view::npos);
    }
    return 0;
}
