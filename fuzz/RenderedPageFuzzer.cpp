// Whatever a web process says of a page, it makes attributed text or none: runs and paragraphs cover the
// text, cells stand within their tables, and the text can be written.

#include "Input.h"
#include "platform/appkit/NSTextTable.h"
#include "platform/appkit/html/HTMLAttributes.h"
#include "platform/appkit/html/HTMLParagraphs.h"
#include "platform/appkit/rtfwriter/RTFWriting.h"

using namespace kelvo;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    // Separators that dictionaries and terminals can hold.
    std::string fields(reinterpret_cast<const char*>(bytes), size);
    for (char& unit : fields)
        unit = unit == '|' ? '\0' : unit;
    auto page = renderedPageWithFields(NSData::dataWithBytes(fields));
    if (!page)
        return 0;
    for (RenderedPage::Image& image : page->images)
        image.data = image.alternative.isEmpty() ? NSData::dataWithBytes("x") : NSData();

    const HTMLParagraphs paragraphs = paragraphsOfPage(*page);
    std::size_t end = 0;
    std::size_t at = 0;
    auto run = paragraphs.runs.begin();
    for (const HTMLParagraphs::Paragraph& paragraph : paragraphs.paragraphs) {
        require(paragraph.length > 0);
        end += paragraph.length;
        for (; at < end; ++run) {
            require(run != paragraphs.runs.end() && run->length > 0);
            at += run->length;
        }
        require(at == end);
        for (const auto& cell : paragraph.style.textBlocks) {
            require(cell->rowSpan >= 1 && cell->columnSpan >= 1);
            require(cell->startingColumn + cell->columnSpan <= cell->table->numberOfColumns);
        }
    }
    require(run == paragraphs.runs.end() && end == paragraphs.text.size());

    const NSAttributedString text = attributedStringOfPage(*page);
    require(text.string().characters() == paragraphs.text);
    require(!RTFDFromRange_documentAttributes(text, {0, text.length()}, nullptr).isNil());
    return 0;
}
