#include "platform/appkit/images/NSBitmapImageRep.h"

#include "platform/appkit/images/TIFFWriter.h"

#include <vector>

namespace kelvo {

namespace {

constexpr float pointsPerInch = 72;

float pointsOf(std::uint32_t pixels, float dotsPerInch) {
    const auto count = static_cast<float>(pixels);
    return dotsPerInch > 0 ? count * pointsPerInch / dotsPerInch : count;
}

float dotsPerInchOf(std::uint32_t pixels, float points) {
    return points > 0 ? static_cast<float>(pixels) * pointsPerInch / points : pointsPerInch;
}

/// No product of these numbers passes 64 bits but the last, which is compared by division.
bool isWhole(const Bitmap& image) {
    if (image.width == 0 || image.height == 0 || (image.bitsPerSample != 8 && image.bitsPerSample != 16))
        return false;
    const std::uint64_t used =
        std::uint64_t{image.width} * samplesPerPixel(image) * (image.bitsPerSample / 8);
    const std::size_t length = image.data.length();
    return image.bytesPerRow >= used && length >= used &&
           (image.height - 1 == 0 || (length - used) / (image.height - 1) >= image.bytesPerRow);
}

} // namespace

NSSize sizeInPoints(std::uint32_t pixelsWide, std::uint32_t pixelsHigh, NSSize dotsPerInch) {
    return {pointsOf(pixelsWide, dotsPerInch.width), pointsOf(pixelsHigh, dotsPerInch.height)};
}

NSBitmapImageRep::NSBitmapImageRep(const BitmapRef& image)
    : NSImageRep({static_cast<float>(image->width), static_cast<float>(image->height)}, image->width,
                 image->height),
      image_(image) {}

std::shared_ptr<NSBitmapImageRep> NSBitmapImageRep::initWithBitmap(const BitmapRef& image) {
    return image && isWhole(*image) ? std::shared_ptr<NSBitmapImageRep>(new NSBitmapImageRep(image))
                                    : nullptr;
}

NSData NSBitmapImageRep::TIFFRepresentationOfImageRepsInArray_usingCompression_factor(
    std::span<const std::shared_ptr<const NSBitmapImageRep>> reps, NSTIFFCompression compression,
    float /*factor*/) {
    if (reps.empty())
        return nullptr;
    TIFFWriter writer(compression);
    for (const auto& rep : reps)
        writer.addPage(*rep->image_, {dotsPerInchOf(rep->pixelsWide(), rep->size().width),
                                      dotsPerInchOf(rep->pixelsHigh(), rep->size().height)});
    return writer.takeData();
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

} // namespace kelvo
