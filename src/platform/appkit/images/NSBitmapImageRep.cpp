#include "platform/appkit/images/NSBitmapImageRep.h"

#include "platform/appkit/images/SourceFacts.h"
#include "platform/appkit/images/TIFFWriter.h"
#include "platform/foundation/Value.h"
#include "platform/imageio/CGImageDestination.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace kelvo {
namespace {

constexpr float pointsPerInch = 72;

float dotsPerInchOf(std::uint32_t pixels, float points) {
    return points > 0 ? static_cast<float>(pixels) * pointsPerInch / points : pointsPerInch;
}

NSDictionary optionsForDecoding(std::uint32_t longerSide) {
    auto options = NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSNumber::numberWithBool(true), kCGImageSourceCreateThumbnailWithTransform},
         {NSNumber::numberWithBool(true), kCGImageSourceCreateThumbnailFromImageAlways}});
    if (longerSide > 0)
        options.setObject_forKey(NSNumber::numberWithLongLong(longerSide),
                                 kCGImageSourceThumbnailMaxPixelSize);
    return options;
}

/// By NSBitmapImageFileType; nil for TIFF, which has a writer of its own.
constexpr std::array<const char16_t*, 6> identifiersOfFileTypes{
    nullptr, u"com.microsoft.bmp", u"com.compuserve.gif", u"public.jpeg", u"public.png", u"public.jpeg-2000"};

} // namespace

NSBitmapImageRep::NSBitmapImageRep(const BitmapRef& image)
    : NSImageRep({static_cast<float>(image->width), static_cast<float>(image->height)}, image->width,
                 image->height),
      hasAlpha_(kelvo::hasAlpha(*image)),
      image_(image) {}

NSBitmapImageRep::NSBitmapImageRep(const CGImageSource& source, std::size_t index, NSSize size,
                                   std::uint32_t pixelsWide, std::uint32_t pixelsHigh, bool hasAlpha)
    : NSImageRep(size, pixelsWide, pixelsHigh), source_(source), index_(index), hasAlpha_(hasAlpha) {}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::initWithBitmap(const BitmapRef& image) {
    return image && isWhole(*image) ? std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(image))
                                    : nullptr;
}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::imageRepWithSource(const CGImageSource& source,
                                                                       std::size_t index) {
    const auto facts = SourceFacts::read(source, index);
    if (!facts)
        return nullptr;
    return std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(
        source, index, facts->size, facts->pixelsWide, facts->pixelsHigh, facts->hasAlpha));
}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::initForIncrementalLoad() {
    return std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(CGImageSource(), 0, {}, 0, 0, false));
}

int NSBitmapImageRep::incrementalLoadFromData_complete(const NSData& data, bool complete) {
    if (!complete)
        return NSImageRepLoadStatusWillNeedAllData;
    const CGImageSource source = CGImageSourceCreateWithData(data, nullptr);
    if (source.isNil())
        return NSImageRepLoadStatusUnknownType;
    const BitmapRef image = bitmapOfImage(CGImageSourceCreateImageAtIndex(source, 0, nullptr));
    if (!image)
        return NSImageRepLoadStatusInvalidData;
    image_ = image;
    hasAlpha_ = kelvo::hasAlpha(*image);
    setPixels(image->width, image->height);
    setSize({static_cast<float>(image->width), static_cast<float>(image->height)});
    const std::size_t rows = CGImageSourceCountDecodedRows(source, 0);
    return CGImageSourceGetStatus(source) == kCGImageStatusComplete && rows == image->height
               ? NSImageRepLoadStatusCompleted
               : static_cast<int>(rows);
}

bool NSBitmapImageRep::hasAlpha() const {
    return hasAlpha_;
}

const BitmapRef& NSBitmapImageRep::bitmap() const {
    if (!image_)
        image_ = bitmapOfImage(CGImageSourceCreateThumbnailAtIndex(source_, index_, optionsForDecoding(0)));
    return image_;
}

BitmapRef NSBitmapImageRep::pixelsForSize(NSSize pixels, ImageGround) const {
    const auto width = static_cast<float>(pixelsWide());
    const auto height = static_cast<float>(pixelsHigh());
    const float scale = std::max(pixels.width / width, pixels.height / height);
    if (image_ || !(scale < 1))
        return bitmap();
    const auto longerSide = static_cast<std::uint32_t>(std::ceil(std::max(width, height) * scale));
    return bitmapOfImage(
        CGImageSourceCreateThumbnailAtIndex(source_, index_, optionsForDecoding(std::max(longerSide, 1U))));
}

NSData NSBitmapImageRep::TIFFRepresentationOfImageRepsInArray_usingCompression_factor(
    std::span<const std::shared_ptr<const NSBitmapImageRep>> reps, NSTIFFCompression compression,
    float /*factor*/) {
    TIFFWriter writer(compression);
    bool hasPages = false;
    for (const auto& rep : reps) {
        const BitmapRef& image = rep->bitmap();
        if (!image)
            continue;
        writer.addPage(*image, {dotsPerInchOf(image->width, rep->size().width),
                                dotsPerInchOf(image->height, rep->size().height)});
        hasPages = true;
    }
    return hasPages ? writer.takeData() : nullptr;
}

NSData NSBitmapImageRep::TIFFRepresentation() const {
    return TIFFRepresentationUsingCompression_factor(NSTIFFCompressionNone, 0);
}

NSData NSBitmapImageRep::TIFFRepresentationUsingCompression_factor(NSTIFFCompression compression,
                                                                   float factor) const {
    // It is only read, for as long as this call.
    const std::shared_ptr<const NSBitmapImageRep> self(std::shared_ptr<const void>(), this);
    return TIFFRepresentationOfImageRepsInArray_usingCompression_factor({&self, 1}, compression, factor);
}

NSData NSBitmapImageRep::representationUsingType_properties(int type, const NSDictionary& properties) const {
    if (type == NSTIFFFileType)
        return TIFFRepresentation();
    if (type < 0 || type >= static_cast<int>(identifiersOfFileTypes.size()))
        return nullptr;
    auto options = NSMutableDictionary::dictionary();
    if (const Value& factor = properties.objectForKey(NSImageCompressionFactor); factor.isNumber())
        options.setObject_forKey(factor, kCGImageDestinationLossyCompressionQuality);
    return dataOfImage(imageOfBitmap(bitmap()), identifiersOfFileTypes[static_cast<std::size_t>(type)],
                       options);
}

} // namespace kelvo
