#pragma once

#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSGeometry.h"

#include <memory>

namespace kelvo {

// An image drawn at another size. What is drawn from a description comes out on white, what has alpha on the image's
// background colour. A new image is as many pixels large as its size has points; null when that is no size to draw at
// (NSGraphicsContext::contextOfSize), and when the image has something to draw that could not be drawn. TIFF data is nil
// then. An image without representations gives an empty one.
//
// With `shouldAntialias` and `interpolation` the drawing is done with these, otherwise with the defaults of a context.
// `cachedSeparately` is set on the new image.

NSData TIFFRepresentationWithSize_shouldAntialias_interpolation_cachedSeparately(
    const NSImage& image, NSSize size, bool shouldAntialias, NSImageInterpolation interpolation,
    bool cachedSeparately);
std::shared_ptr<NSImage> imageWithSize_shouldAntialias_interpolation_cachedSeparately(
    const NSImage& image, NSSize size, bool shouldAntialias, NSImageInterpolation interpolation,
    bool cachedSeparately);
/// Whose only representation is a bitmap.
std::shared_ptr<NSImage> bitmapImageWithSize_shouldAntialias_interpolation_cachedSeparately(
    const NSImage& image, NSSize size, bool shouldAntialias, NSImageInterpolation interpolation,
    bool cachedSeparately);

std::shared_ptr<NSImage> imageWithSize_cachedSeparately(const NSImage& image, NSSize size,
                                                        bool cachedSeparately);
std::shared_ptr<NSImage> bitmapImageWithSize_cachedSeparately(const NSImage& image, NSSize size,
                                                              bool cachedSeparately);
NSData TIFFRepresentationWithSize(const NSImage& image, NSSize size);
NSData TIFFRepresentationWithSize_cachedSeparately(const NSImage& image, NSSize size, bool cachedSeparately);

// A part of the image, in its points, as large as the size; the whole for a part without an extent.

NSData TIFFRepresentationWithSize_fromRect(const NSImage& image, NSSize size, NSRect part);
NSData TIFFRepresentationWithSize_fromRect_cachedSeparately(const NSImage& image, NSSize size, NSRect part,
                                                            bool cachedSeparately);
NSData TIFFRepresentationFromRect(const NSImage& image, NSRect part);

/// At the size that thumb_forSize gives for the pixel size.
std::shared_ptr<NSImage> thumbForSize_cachedSeparately(const NSImage& image, NSSize maximum,
                                                       bool cachedSeparately);
std::shared_ptr<NSImage> thumbForSize_shouldAntialias_interpolation_cachedSeparately(
    const NSImage& image, NSSize maximum, bool shouldAntialias, NSImageInterpolation interpolation,
    bool cachedSeparately);

namespace NSImageKelvoExtensions {

std::shared_ptr<NSImage> initWithImage_size(const NSImage& image, NSSize size);
std::shared_ptr<NSImage> initWithImage_size_cachedSeparately(const NSImage& image, NSSize size,
                                                             bool cachedSeparately);
std::shared_ptr<NSImage> initWithImage_fromRect(const NSImage& image, NSRect part);
std::shared_ptr<NSImage> initWithImage_fromRect_size(const NSImage& image, NSRect part, NSSize size);
std::shared_ptr<NSImage> initWithImage_fromRect_size_cachedSeparately(const NSImage& image, NSRect part,
                                                                      NSSize size, bool cachedSeparately);

} // namespace NSImageKelvoExtensions

} // namespace kelvo
