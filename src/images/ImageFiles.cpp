#include "images/ImageFiles.h"

#include "images/ImageContents.h"
#include "platform/foundation/Value.h"
#include "platform/imageio/CGImageSource.h"

namespace kelvo::NSImageKelvoExtensions {
namespace {

Value valueOf(bool flag) {
    return NSNumber::numberWithBool(flag);
}

/// The first image of the file as `create` makes it of a source.
template <typename Create>
std::shared_ptr<NSImage> imageOfFile(const NSString& path, NSDictionary* properties, const Create& create) {
    if (properties)
        *properties = nullptr;
    if (path.isEmpty())
        return nullptr;
    const NSData data = NSData::dataWithContentsOfFileWhenNeeded(path);
    const CGImageSource source = CGImageSourceCreateWithData(data, nullptr);
    if (CGImageSourceGetCount(source) == 0)
        return nullptr;
    const CGImage decoded = create(source);
    if (decoded.isNil())
        return nullptr;
    if (properties)
        *properties = CGImageSourceCopyPropertiesAtIndex(source, 0, nullptr);
    return imageWithCGImageRef(decoded);
}

} // namespace

std::shared_ptr<NSImage> thumbnailForFile_maxSize_alwaysFromImage_withTransform_properties(
    const NSString& path, int maxSize, bool alwaysFromImage, bool withTransform, NSDictionary* properties) {
    return imageOfFile(path, properties, [&](const CGImageSource& source) {
        return CGImageSourceCreateThumbnailAtIndex(
            source, 0,
            NSMutableDictionary::dictionaryWithObjectsAndKeys(
                {{NSNumber::numberWithInt(maxSize), kCGImageSourceThumbnailMaxPixelSize},
                 {valueOf(true), kCGImageSourceCreateThumbnailFromImageIfAbsent},
                 {valueOf(withTransform), kCGImageSourceCreateThumbnailWithTransform},
                 {valueOf(alwaysFromImage), kCGImageSourceCreateThumbnailFromImageAlways}}));
    });
}

std::shared_ptr<NSImage> thumbnailForFile_maxSize(const NSString& path, int maxSize) {
    return thumbnailForFile_maxSize_alwaysFromImage_withTransform_properties(path, maxSize, false, false,
                                                                             nullptr);
}

std::shared_ptr<NSImage> imageForFile_withTransform_properties(const NSString& path, bool withTransform,
                                                               NSDictionary* properties) {
    return imageOfFile(path, properties, [&](const CGImageSource& source) {
        return CGImageSourceCreateImageAtIndex(
            source, 0,
            NSMutableDictionary::dictionaryWithObjectsAndKeys(
                {{valueOf(withTransform), kCGImageSourceCreateThumbnailWithTransform}}));
    });
}

std::shared_ptr<NSImage> imageForFile(const NSString& path) {
    return imageForFile_withTransform_properties(path, false, nullptr);
}

} // namespace kelvo::NSImageKelvoExtensions
