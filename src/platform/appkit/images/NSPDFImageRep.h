#pragma once

#include "platform/appkit/images/NSImageRep.h"
#include "platform/pdfkit/PDFDocument.h"

#include <memory>

namespace kelvo {

/// The first page of a PDF.
class NSPDFImageRep : public NSImageRep {
public:
    /// Null when the data is no PDF, or one that is locked or has no first page with an extent.
    static std::shared_ptr<NSPDFImageRep> imageRepWithData(const NSData& pdf);

    NSString className() const override { return u"NSPDFImageRep"; }
    bool isVector() const override { return true; }
    bool hasAlpha() const override { return true; }
    BitmapRef pixelsForSize(NSSize pixels, ImageGround ground) const override;
    /// The document as it was given, all pages.
    const NSData& PDFRepresentation() const noexcept { return data_; }

private:
    NSPDFImageRep(NSData data, PDFPage page, NSSize size);

    NSData data_;
    PDFPage page_;
};

} // namespace kelvo
