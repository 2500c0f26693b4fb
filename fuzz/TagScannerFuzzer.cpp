#include "Input.h"
#include "markup/TagAttributes.h"
#include "markup/TagScanner.h"
#include "support/ReferenceMarkup.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace kelvo {
namespace {

/// Reads attributes of every tag; each value must lie inside the tag.
bool readAttributes(const NSString& string, char16_t* characters, std::size_t, std::size_t,
                    std::size_t tagLocation, std::size_t tagLength, std::size_t textLocation, TagKind,
                    void*) {
    require(textLocation <= tagLocation && rangeFits({tagLocation, tagLength}, string.length()));
    const NSRange range{tagLocation, tagLength};
    for (const char* name : {"a", "content"}) {
        for (const NSString& value :
             {_attributeOfTagCharactersWithName(characters, tagLocation, tagLength, name, true),
              _attributeOfTagCharactersWithName(characters, tagLocation, tagLength, name, false),
              attributeOfTagInRange_withName(string, range, name),
              attributeOfStyleInRange_withName(string, range, name)}) {
            const auto tag = string.characters().substr(tagLocation, tagLength);
            require(value.isNil() || (!value.isEmpty() && tag.find(value.characters()) != tag.npos));
        }
    }
    return false;
}

} // namespace
} // namespace kelvo

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace kelvo;
    // The first byte says whether the rest are Latin 1 or UTF-16.
    if (size == 0)
        return 0;
    const NSString string = textOfInput(bytes, size);
    std::vector<reference::Call> calls;
    const bool isScanned = GetTagsOfString(string, reference::record, &calls, (bytes[0] & 2) != 0);
    require(isScanned == !string.isEmpty());
    if (isScanned)
        require(calls == reference::scan(string));
    GetTagsOfString(string, readAttributes, nullptr, false);
    _copyOfAttributeOfString(string, "A", 1, u'\'', (bytes[0] & 4) != 0);
    return 0;
}
