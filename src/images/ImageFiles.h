#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"

#include <memory>

namespace kelvo::NSImageKelvoExtensions {

// The first image of a file, decoded by its engine, a point for each pixel. Null without a path, when the file cannot be
// read, and when it is no image; what became of it is noted with the current request. `properties` (may be null) is
// what the image says of itself (CGImageProperties.h), nil when there is no image.

/// At most so many pixels on its longer side: the one that is embedded in the file, if there is one and `alwaysFromImage`
/// does not ask to pass it over. Upright, as the file says, where `withTransform` asks for it.
std::shared_ptr<NSImage> thumbnailForFile_maxSize_alwaysFromImage_withTransform_properties(
    const NSString& path, int maxSize, bool alwaysFromImage, bool withTransform, NSDictionary* properties);
std::shared_ptr<NSImage> thumbnailForFile_maxSize(const NSString& path, int maxSize);

/// As large as it is.
std::shared_ptr<NSImage> imageForFile_withTransform_properties(const NSString& path, bool withTransform,
                                                               NSDictionary* properties);
std::shared_ptr<NSImage> imageForFile(const NSString& path);

} // namespace kelvo::NSImageKelvoExtensions
