#pragma once

#include "platform/appkit/images/Bitmap.h"
#include "platform/appkit/images/NSImageRep.h"
#include "platform/appkit/images/NSTIFFCompression.h"
#include "platform/foundation/NSData.h"

#include <memory>
#include <span>

namespace kelvo {

/// Pixels, which are shared and never changed.
class NSBitmapImageRep : public NSImageRep {
public:
    /// A point for each pixel. Null when the image is none, has no pixels, has samples of other sizes than 8 and 16 bits,
    /// and when its data is too short for what it says of itself.
    static std::shared_ptr<NSBitmapImageRep> initWithBitmap(const BitmapRef& image);

    NSString className() const override { return u"NSBitmapImageRep"; }
    bool hasAlpha() const override { return kelvo::hasAlpha(*image_); }
    /// Never null.
    const BitmapRef& bitmap() const noexcept { return image_; }

    /// Those of the list as the pages of a TIFF file, in their order, each with the resolution that its size in points
    /// gives it. The factor is for JPEG, which is not there. Nil for an empty list. Throws NSException
    /// (NSMallocException) when the file would pass maximumSizeInBytes.
    static NSData TIFFRepresentationOfImageRepsInArray_usingCompression_factor(
        std::span<const std::shared_ptr<const NSBitmapImageRep>> reps, NSTIFFCompression compression,
        float factor);
    /// Not compressed.
    NSData TIFFRepresentation() const;
    NSData TIFFRepresentationUsingCompression_factor(NSTIFFCompression compression, float factor) const;

private:
    explicit NSBitmapImageRep(const BitmapRef& image);

    BitmapRef image_;
};

} // namespace kelvo
