#pragma once

#include "platform/coregraphics/CGImage.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"

namespace kelvo {

/// Key of options: a number, 0 (the smallest file) to 1 (the best picture, and without loss where the format can do so);
/// numbers beyond count as these. Of JPEG and JPEG 2000 alone; the others lose nothing but what the format cannot hold.
inline constexpr const char16_t* kCGImageDestinationLossyCompressionQuality =
    u"kCGImageDestinationLossyCompressionQuality";

/// A file of the image, a point for each pixel, by the uniform type identifier: public.png, public.jpeg,
/// com.compuserve.gif, com.microsoft.bmp, public.jpeg-2000. What has no alpha (JPEG, BMP) shows the image on white; GIF
/// has 256 colours, and pixels that are seen or not. Nil for a nil image, another type, an image of more than 100 million
/// pixels or with longer sides than the format allows, and when the engine failed or took more than 10 s.
///
/// Encoded by plumwick-image-engine: runs the current run loop, and what went wrong is noted with the current request.
NSData dataOfImage(const CGImage& image, const NSString& type, const NSDictionary& options);

} // namespace kelvo
