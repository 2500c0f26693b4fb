#pragma once

#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSData.h"

#include <memory>

namespace kelvo {

/// The bitmap encoded as a file of that type (NSBitmapImageFileType); compression is 0 (small) to 1 (good). Nil for another
/// type, and when it cannot be encoded.
NSData representationUsingType_compression(const NSBitmapImageRep& rep, int type, float compression);
/// The best representation where that is a bitmap, else the last bitmap; nil when there is none.
NSData representationUsingType_compression(const NSImage& image, int type, float compression);

namespace NSImageKelvoExtensions {

/// An image of what was downloaded until now, a point for each pixel. Null when not all rows of it can be decoded.
std::shared_ptr<NSImage> initWithDownloadedData_cachedSeparately(const NSData& data, bool cachedSeparately);

} // namespace NSImageKelvoExtensions

} // namespace kelvo
