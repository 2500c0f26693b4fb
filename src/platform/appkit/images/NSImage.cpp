#include "platform/appkit/images/NSImage.h"

#include "platform/appkit/images/NSBitmapImageRep.h"

#include <utility>

namespace kelvo {

NSSize NSImage::size() const {
    if (size_)
        return *size_;
    return representations_.empty() ? NSSize{} : representations_.front()->size();
}

void NSImage::addRepresentation(std::shared_ptr<NSImageRep> rep) {
    if (rep)
        representations_.push_back(std::move(rep));
}

void NSImage::removeRepresentation(const std::shared_ptr<NSImageRep>& rep) {
    std::erase(representations_, rep);
}

NSData NSImage::TIFFRepresentation() const {
    return TIFFRepresentationUsingCompression_factor(NSTIFFCompressionNone, 0);
}

NSData NSImage::TIFFRepresentationUsingCompression_factor(NSTIFFCompression compression, float factor) const {
    std::vector<std::shared_ptr<const NSBitmapImageRep>> bitmaps;
    for (const auto& rep : representations_) {
        if (auto bitmap = std::dynamic_pointer_cast<const NSBitmapImageRep>(rep))
            bitmaps.push_back(std::move(bitmap));
    }
    return NSBitmapImageRep::TIFFRepresentationOfImageRepsInArray_usingCompression_factor(
        bitmaps, compression, factor);
}

} // namespace kelvo
