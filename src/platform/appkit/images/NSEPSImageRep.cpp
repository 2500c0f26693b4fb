#include "platform/appkit/images/NSEPSImageRep.h"

#include "platform/foundation/Value.h"
#include "platform/postscript/PostScriptFile.h"
#include "platform/postscript/PostScriptPDF.h"

#include <utility>

namespace kelvo {

NSEPSImageRep::NSEPSImageRep(NSData data, NSSize size) : NSImageRep(size, 0, 0), data_(std::move(data)) {}

std::shared_ptr<NSEPSImageRep> NSEPSImageRep::imageRepWithData(const NSData& eps) {
    const auto file = PostScriptFile::read(eps);
    if (!file)
        return nullptr;
    return std::shared_ptr<NSEPSImageRep>(new NSEPSImageRep(eps, file->page().size));
}

void NSEPSImageRep::interpret() const {
    // What cannot be interpreted would take its time again.
    if (!std::exchange(wasInterpreted_, true))
        pdfImageRep_ = NSPDFImageRep::imageRepWithData(PDFDataOfPostScript(data_, size()));
}

BitmapRef NSEPSImageRep::pixelsForSize(NSSize pixels, ImageGround ground) const {
    interpret();
    return pdfImageRep_ ? pdfImageRep_->pixelsForSize(pixels, ground) : nullptr;
}

Value NSEPSImageRep::valueForKey(const NSString& key) const {
    if (key == u"pdfImageRep")
        return Value(std::static_pointer_cast<NSObject>(pdfImageRep_));
    return NSImageRep::valueForKey(key);
}

} // namespace kelvo
