#include "platform/appkit/images/NSPDFImageRep.h"

#include "platform/ledger/RequestNotes.h"

#include <cmath>
#include <utility>

namespace kelvo {

NSPDFImageRep::NSPDFImageRep(NSData data, PDFPage page, NSSize size)
    : NSImageRep(size, 0, 0), data_(std::move(data)), page_(std::move(page)) {}

std::shared_ptr<NSPDFImageRep> NSPDFImageRep::imageRepWithData(const NSData& pdf) {
    const PDFDocument document = PDFDocument::initWithData(pdf);
    if (document.isLocked())
        noteOutcome(Outcome::locked, u"the document is encrypted");
    if (document.isNil() || document.isLocked() || document.pageCount() == 0)
        return nullptr;
    PDFPage page = document.pageAtIndex(0);
    const NSSize size = page.sizeAsRead();
    if (!(size.width > 0 && size.height > 0))
        return nullptr;
    return std::shared_ptr<NSPDFImageRep>(new NSPDFImageRep(pdf, std::move(page), size));
}

BitmapRef NSPDFImageRep::pixelsForSize(NSSize pixels, ImageGround ground) const {
    const auto whole = [](float length) {
        return static_cast<std::size_t>(std::ceil(std::max(length, 1.0F)));
    };
    return bitmapOfImage(
        page_.imageOfSize(whole(pixels.width), whole(pixels.height),
                          ground == ImageGround::white ? PDFPageGround::white : PDFPageGround::transparent));
}

} // namespace kelvo
