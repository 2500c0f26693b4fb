#pragma once

#include "platform/appkit/images/NSImageRep.h"
#include "platform/appkit/images/NSTIFFCompression.h"
#include "platform/coregraphics/Bitmap.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/imageio/CGImageSource.h"

#include <cstdint>
#include <memory>
#include <span>

namespace kelvo {

/// What a bitmap is encoded as; the numbers are the platform's.
enum NSBitmapImageFileType : std::uint8_t {
    NSTIFFFileType = 0,
    NSBMPFileType = 1,
    NSGIFFileType = 2,
    NSJPEGFileType = 3,
    NSPNGFileType = 4,
    NSJPEG2000FileType = 5
};

/// Key of properties: a number from 0 (small) to 1 (good), for what loses something.
inline constexpr const char16_t* NSImageCompressionFactor = u"NSImageCompressionFactor";

// What comes of an incremental load that has not completed; what is above 0 is a number of rows.
inline constexpr int NSImageRepLoadStatusUnknownType = -1;
inline constexpr int NSImageRepLoadStatusWillNeedAllData = -3;
inline constexpr int NSImageRepLoadStatusInvalidData = -4;
inline constexpr int NSImageRepLoadStatusCompleted = -6;

/// Pixels, which are shared and never changed. Those of a file are decoded when they are needed, as large as they are
/// needed.
class NSBitmapImageRep : public NSImageRep {
public:
    /// A point for each pixel. Null when the image is none or not whole.
    static std::shared_ptr<NSBitmapImageRep> initWithBitmap(const BitmapRef& image);
    /// An image of a file, upright, in points by its resolution. Null when there is none, or it does not say how large it
    /// is. Nothing is decoded yet.
    static std::shared_ptr<NSBitmapImageRep> imageRepWithSource(const CGImageSource& source,
                                                                std::size_t index);
    /// Empty, for incrementalLoadFromData_complete.
    static std::shared_ptr<NSBitmapImageRep> initForIncrementalLoad();
    /// The image of which all bytes are given that are there by now. Without all of them nothing is decoded. Else the
    /// number of rows from the top that could be, NSImageRepLoadStatusCompleted when the file is whole, or why there is
    /// none.
    int incrementalLoadFromData_complete(const NSData& data, bool complete);

    NSString className() const override { return u"NSBitmapImageRep"; }
    bool hasAlpha() const override;
    BitmapRef pixelsForSize(NSSize pixels, ImageGround ground) const override;
    /// All pixels. Null when they cannot be decoded.
    const BitmapRef& bitmap() const;

    /// Those of the list as the pages of a TIFF file, in their order, each with the resolution that its size in points
    /// gives it. The factor is for JPEG, which is not there. What cannot be decoded is left out; nil when nothing is left.
    /// Throws NSException (NSMallocException) when the file would pass maximumSizeInBytes.
    static NSData TIFFRepresentationOfImageRepsInArray_usingCompression_factor(
        std::span<const std::shared_ptr<const NSBitmapImageRep>> reps, NSTIFFCompression compression,
        float factor);
    /// Not compressed.
    NSData TIFFRepresentation() const;
    NSData TIFFRepresentationUsingCompression_factor(NSTIFFCompression compression, float factor) const;
    /// By an NSBitmapImageFileType, with the properties named above (may be nil). Nil for another type, and when the
    /// engine did not encode it.
    NSData representationUsingType_properties(int type, const NSDictionary& properties) const;

private:
    explicit NSBitmapImageRep(const BitmapRef& image);
    NSBitmapImageRep(const CGImageSource& source, std::size_t index, NSSize size, std::uint32_t pixelsWide,
                     std::uint32_t pixelsHigh, bool hasAlpha);

    CGImageSource source_;
    std::size_t index_ = 0;
    bool hasAlpha_ = false;
    /// Decoded when it is first needed.
    mutable BitmapRef image_;
};

} // namespace kelvo
