#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSGeometry.h"

namespace kelvo {

// How large images are and become. All of it is arithmetic of 32-bit floats.

namespace NSImageKelvoExtensions {

/// The size as it is when it fits into the maximum; else the largest of the same shape that does, in whole numbers
/// rounded down, but at least 1 by 1.
NSSize thumb_forSize(NSSize maximum, NSSize size);
/// The size times the factor, in whole numbers rounded down, which may be 0; the size as it is when the factor is not
/// positive.
NSSize scale_forSize(float factor, NSSize size);

} // namespace NSImageKelvoExtensions

/// The pixels of the representation that has the most in a row, the first of equals; the size in points when none has
/// any.
NSSize pixelSize(const NSImage& image);
/// thumb_forSize and scale_forSize of the pixel size.
NSSize thumbSize(const NSImage& image, NSSize maximum);
NSSize scaledSize(const NSImage& image, float factor);
/// Makes the image itself as large as its thumbSize, and its representations with it.
void scaleToThumbSize(NSImage& image, NSSize maximum);
/// Width by height of the size in points, 0 when the height is not positive.
float aspectRatio(const NSImage& image);

} // namespace kelvo
