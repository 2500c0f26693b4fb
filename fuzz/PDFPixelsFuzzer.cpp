// Whatever stands in a PDF, its first and its last page are drawn in as many pixels as were asked for, or not at all.

#include "Input.h"
#include "platform/pdfkit/PDFEngineMessages.h"
#include "platform/pdfkit/engine/OpenDocument.h"

using namespace kelvo;
using namespace kelvo::pdfengine;

namespace {

std::int64_t pageCountIn(const NSDictionary& facts) {
    const NSNumber* const count = facts.objectForKey(pageCountKey).numberIfAny();
    return count ? count->longLongValue() : 0;
}

void draw(const OpenDocument& document, std::int64_t page, const PixelRequest& request) {
    const Value size = document.sizeAsRead(page);
    require(size.isNil() || size.array().count() == 2);
    try {
        const Value answer = document.pixels(page, request);
        if (answer.isNil())
            return;
        const auto pixels = answer.data().bytes();
        require(pixels.size() == request.width * request.height * bytesOfPixel);
        for (std::size_t at = 3; at < pixels.size() && !request.isTransparent; at += bytesOfPixel)
            require(pixels[at] == 0xFF);
    } catch (const PageFailure& failure) {
        require(failure.sentence()[0] != 0);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const bool isReady = (keepPDFLibraryWarm(), true);
    require(isReady);
    if (size == 0)
        return 0;
    const auto document = OpenDocument::open(NSData::dataWithBytes(bytes + 1, size - 1), 1);
    if (!document)
        return 0;
    const PixelRequest request{std::size_t{1} << (bytes[0] & 7U), std::size_t{1} << (bytes[0] >> 4 & 7U),
                               (bytes[0] & 8U) != 0};
    const std::int64_t last = pageCountIn(document->facts()) - 1;
    draw(*document, 0, request);
    if (last > 0)
        draw(*document, last, request);
    return 0;
}
