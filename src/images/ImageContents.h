#pragma once

#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSImage.h"
#include "platform/coregraphics/Bitmap.h"
#include "platform/coregraphics/CGImage.h"
#include "platform/foundation/NSData.h"

#include <memory>

namespace kelvo {

/// Whether something could be seen through the image: a representation has alpha, or is drawn from a description, which
/// need not cover all of it.
bool hasAlpha(const NSImage& image);
/// Whether it can be drawn: it has an extent, and a representation.
bool isReallyValid(const NSImage& image);

/// The pixels as they are, row by row, with what stands between the rows; shared, not copied. Nil when they cannot be
/// decoded.
NSData data(const NSBitmapImageRep& rep);

namespace NSImageKelvoExtensions {

/// An image of a point for each pixel, with the decoded image as its only representation, whose pixels are shared. Null
/// for nil.
std::shared_ptr<NSImage> imageWithCGImageRef(const CGImage& decoded);
/// The same of pixels from elsewhere; without a representation, which isReallyValid tells, when they are not whole. Null
/// for none and for what has no extent.
std::shared_ptr<NSImage> imageWithBitmap(const BitmapRef& decoded);

} // namespace NSImageKelvoExtensions

} // namespace kelvo
