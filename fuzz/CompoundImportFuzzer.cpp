// A compound file with its sets of properties; the office suite reads nothing of it. Whatever the bytes are, what is set is
// something to show, and a note says that the text is not there.

#include "Input.h"
#include "importers/compound/CompoundImport.h"
#include "support/Importing.h"

using namespace kelvo;

/// libgsf loses values of properties that are damaged. It has no frame pointers, by which these are told from others.
extern "C" const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::size_t notes = 0;
    const NSMutableDictionary attributes =
        attributesByImporter(importers::importCompound, NSData::dataWithBytes(bytes, size),
                             "com.microsoft.word.doc", [&](Outcome, const NSString& sentence) {
                                 require(!sentence.isEmpty());
                                 ++notes;
                             });
    require(!attributes.objectForKey(u"kMDItemTextContent").isNil() || notes > 0);
    for (const char16_t* const name : {u"kMDItemTitle", u"kMDItemSubject", u"kMDItemCreator"}) {
        const NSString text = attributes.objectForKey(name).string();
        require(text == importers::trimmed(text));
    }
    return 0;
}
