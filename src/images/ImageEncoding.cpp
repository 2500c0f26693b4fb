#include "images/ImageEncoding.h"

#include "images/PDFRepresentations.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/Value.h"

namespace kelvo {

NSData representationUsingType_compression(const NSBitmapImageRep& rep, int type, float compression) {
    NSData data = rep.representationUsingType_properties(
        type, NSMutableDictionary::dictionaryWithObjectsAndKeys(
                  {{NSNumber::numberWithFloat(compression), NSImageCompressionFactor}}));
    if (!data.isNil() || type != NSBMPFileType)
        return data;
    // What is too much for the encoder may be an image that it can take when another has simplified it.
    const NSData png = rep.representationUsingType_properties(NSPNGFileType, nullptr);
    if (png.isEmpty())
        return nullptr;
    const auto simplified =
        NSBitmapImageRep::imageRepWithSource(CGImageSourceCreateWithData(png, nullptr), 0);
    return simplified ? simplified->representationUsingType_properties(type, nullptr) : NSData();
}

NSData representationUsingType_compression(const NSImage& image, int type, float compression) {
    const auto best = image.bestRepresentationForDevice();
    if (!best)
        return nullptr;
    auto bitmap = std::dynamic_pointer_cast<const NSBitmapImageRep>(best);
    if (!bitmap)
        bitmap = imageRepOfClass<NSBitmapImageRep>(image);
    return bitmap ? representationUsingType_compression(*bitmap, type, compression) : NSData();
}

std::shared_ptr<NSImage>
NSImageKelvoExtensions::initWithDownloadedData_cachedSeparately(const NSData& data, bool cachedSeparately) {
    const auto bitmap = NSBitmapImageRep::initForIncrementalLoad();
    const int status = bitmap->incrementalLoadFromData_complete(data, true);
    const auto width = static_cast<float>(bitmap->pixelsWide());
    const auto height = static_cast<float>(bitmap->pixelsHigh());
    if (!(width > 0 && height > 0))
        return nullptr;
    if (status != NSImageRepLoadStatusCompleted && status < static_cast<int>(bitmap->pixelsHigh()))
        return nullptr;
    auto image = std::make_shared<NSImage>(NSSize{width, height});
    image->setCachedSeparately(cachedSeparately);
    image->addRepresentation(bitmap);
    return image;
}

} // namespace kelvo
