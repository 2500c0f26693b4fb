#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSGeometry.h"
#include "platform/foundation/NSString.h"

#include <memory>

namespace kelvo {

// A copy of the image with another one on it, whose bottom left corner is at the point. Without an overlay (null) the copy is
// as the image is.

std::shared_ptr<NSImage>
imageWithOverlay_atPoint_operation_fraction(const NSImage& image, const std::shared_ptr<NSImage>& overlay,
                                            NSPoint point, NSCompositingOperation operation, float fraction);
/// Source-over, with the overlay's own opacity.
std::shared_ptr<NSImage> imageWithOverlay_atPoint(const NSImage& image,
                                                  const std::shared_ptr<NSImage>& overlay, NSPoint point);
std::shared_ptr<NSImage> imageWithOverlayNamed_atPoint(const NSImage& image, const NSString& overlayName,
                                                       NSPoint point);

namespace NSImageKelvoExtensions {

/// Null when there is no image of the first name.
std::shared_ptr<NSImage> imageNamed_withOverlayNamed_atPoint(const NSString& name,
                                                             const NSString& overlayName, NSPoint point);

} // namespace NSImageKelvoExtensions

} // namespace kelvo
