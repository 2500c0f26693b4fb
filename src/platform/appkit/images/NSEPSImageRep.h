#pragma once

#include "platform/appkit/images/NSImageRep.h"
#include "platform/appkit/images/NSPDFImageRep.h"

#include <memory>

namespace kelvo {

/// PostScript, of which the first page is the picture. It is interpreted when it is first drawn, once, as a page of the size
/// that it has then, and is there as a PDF from then on.
class NSEPSImageRep : public NSImageRep {
public:
    /// Null when the data is no PostScript.
    static std::shared_ptr<NSEPSImageRep> imageRepWithData(const NSData& eps);

    NSString className() const override { return u"NSEPSImageRep"; }
    bool isVector() const override { return true; }
    bool hasAlpha() const override { return true; }
    BitmapRef pixelsForSize(NSSize pixels, ImageGround ground) const override;
    /// Makes the PDF as drawing does, without pixels that nobody looks at.
    void interpret() const;
    /// The file as it was given, with a preview if it has one.
    const NSData& EPSRepresentation() const noexcept { return data_; }
    /// "pdfImageRep": the PDF, nil until it was drawn once and when it cannot be interpreted.
    Value valueForKey(const NSString& key) const override;

private:
    NSEPSImageRep(NSData data, NSSize size);

    NSData data_;
    mutable bool wasInterpreted_ = false;
    mutable std::shared_ptr<NSPDFImageRep> pdfImageRep_;
};

} // namespace kelvo
