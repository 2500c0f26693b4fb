// Whatever the bytes are, they make a tree of files or none; a tree is written and comes back equal, and
// writing never leaves its folder. The rich text in it comes back too: once it has been written and read,
// writing it changes nothing any more.

#include "Input.h"
#include "platform/appkit/NSFileWrapper.h"
#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"

#include <algorithm>

using namespace kelvo;

namespace {

NSData rtfd(const NSAttributedString& text, const NSDictionary& attributes) {
    return RTFDFromRange_documentAttributes(text, {0, text.length()}, attributes);
}

std::u16string withoutLineFeeds(const NSAttributedString& text) {
    std::u16string units(text.string().characters());
    std::erase(units, u'\n');
    return units;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const NSData data = NSData::dataWithBytes(bytes, size);
    if (const auto tree = NSFileWrapper::initWithSerializedRepresentation(data)) {
        const auto again = NSFileWrapper::initWithSerializedRepresentation(tree->serializedRepresentation());
        require(again && *again == *tree);
    }
    NSDictionary attributes;
    const NSAttributedString text =
        NSAttributedStringKitAdditions::initWithRTFD_documentAttributes(data, &attributes);
    require(text.isNil() == attributes.isNil());
    if (text.isNil())
        return 0;
    NSDictionary attributesAgain;
    const NSAttributedString once = NSAttributedStringKitAdditions::initWithRTFD_documentAttributes(
        rtfd(text, attributes), &attributesAgain);
    require(withoutLineFeeds(once) == withoutLineFeeds(text));
    const NSAttributedString twice =
        NSAttributedStringKitAdditions::initWithRTFD_documentAttributes(rtfd(once, attributesAgain), nullptr);
    require(twice.string() == once.string());
    require(twice == once);
    return 0;
}
