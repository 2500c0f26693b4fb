// Whatever the bytes are, reading them as RTF, or as RTFD when they are none, gives nil or a text in good order, and
// not one character of it stands for an attachment that is not there.

#include "Input.h"
#include "platform/appkit/rtfreader/RTFReading.h"
#include "platform/foundation/Value.h"

using namespace kelvo;

namespace {

void requireOrder(const NSAttributedString& text) {
    const std::u16string_view units = text.string().characters();
    std::size_t end = 0;
    const NSTextAttributes* last = nullptr;
    for (const auto& [range, attributes] : text.runs()) {
        require(range.location == end && range.length > 0);
        end += range.length;
        require(end <= units.size());
        // Equal neighbours are in two tables or lists.
        require(!last || !(*last == *attributes) ||
                last->style().textLists != attributes->style().textLists ||
                last->style().textBlocks != attributes->style().textBlocks);
        last = attributes.get();
        const std::u16string_view run = units.substr(range.location, range.length);
        const std::size_t other = attributes->attachment ? run.find_first_not_of(NSAttachmentCharacter)
                                                         : run.find(NSAttachmentCharacter);
        require(other == std::u16string_view::npos);
        require(!attributes->attachment || attributes->attachment->fileWrapper);
        require(!attributes->font.familyName.isEmpty() && attributes->font.pointSize > 0);
        for (const auto& block : attributes->style().textBlocks) {
            require(block && block->table && block->rowSpan > 0 && block->columnSpan > 0);
            require(block->startingRow >= 0 && block->startingColumn >= 0);
            require(block->startingColumn + block->columnSpan <= block->table->numberOfColumns);
        }
        for (const auto& list : attributes->style().textLists)
            require(list != nullptr);
    }
    require(end == units.size());
}

/// Every unit of a paragraph has the same style.
void requireWholeParagraphs(const NSAttributedString& text) {
    const std::u16string_view units = text.string().characters();
    const NSParagraphStyle* style = nullptr;
    for (const auto& [range, attributes] : text.runs()) {
        require(!style || attributes->style() == *style);
        const std::u16string_view run = units.substr(range.location, range.length);
        const bool isEnd = run.find_last_of(u"\n\r\u2029") == run.size() - 1;
        style = isEnd ? nullptr : &attributes->style();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    using namespace NSAttributedStringKitAdditions;
    const NSData data = NSData::dataWithBytes(bytes, size);
    NSDictionary attributes;
    NSAttributedString text = initWithRTF_documentAttributes(data, &attributes);
    if (text.isNil())
        text = initWithRTFD_documentAttributes(data, &attributes);
    require(text.isNil() == attributes.isNil());
    requireOrder(text);
    requireWholeParagraphs(text);
    return 0;
}
