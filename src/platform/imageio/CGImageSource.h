#pragma once

#include "platform/coregraphics/CGImage.h"
#include "platform/foundation/NSArray.h"
#include "platform/foundation/NSData.h"
#include "platform/foundation/NSDictionary.h"
#include "platform/foundation/NSString.h"
#include "platform/imageio/CGImageProperties.h"

#include <cstddef>
#include <cstdint>
#include <memory>

namespace kelvo {

// Keys of options:

/// Of a source: a string, a type that the file may have. Some formats (Targa) do not say themselves what they are.
inline constexpr const char16_t* kCGImageSourceTypeIdentifierHint = u"kCGImageSourceTypeIdentifierHint";
/// Of a thumbnail: a number, the longer side at most; without it a thumbnail is as large as what it is made of.
inline constexpr const char16_t* kCGImageSourceThumbnailMaxPixelSize = u"kCGImageSourceThumbnailMaxPixelSize";
/// Booleans; without any of the two there are embedded thumbnails alone. The second passes these over.
inline constexpr const char16_t* kCGImageSourceCreateThumbnailFromImageIfAbsent =
    u"kCGImageSourceCreateThumbnailFromImageIfAbsent";
inline constexpr const char16_t* kCGImageSourceCreateThumbnailFromImageAlways =
    u"kCGImageSourceCreateThumbnailFromImageAlways";
/// A boolean, for images as well: upright, as the file says. HEIF and JPEG XL come upright in any case.
inline constexpr const char16_t* kCGImageSourceCreateThumbnailWithTransform =
    u"kCGImageSourceCreateThumbnailWithTransform";

enum CGImageSourceStatus : std::int8_t {
    kCGImageStatusInvalidData = -4, ///< nil has this one
    kCGImageStatusIncomplete = -1,  ///< the end of the file is missing
    kCGImageStatusComplete = 0
};

/// A file of images: a handle on its bytes and what the engine said of them. Default-constructed it is nil, which has no
/// images. Its images are decoded by plumwick-image-engine: each call runs the current run loop, and what became of
/// the file is noted with the current request.
class CGImageSource {
public:
    CGImageSource() noexcept = default;
    bool isNil() const noexcept { return !contents_; }

private:
    struct Contents;
    friend CGImageSource CGImageSourceCreateWithData(const NSData& data, const NSDictionary& options);
    friend std::size_t CGImageSourceGetCount(const CGImageSource& source);
    friend NSString CGImageSourceGetType(const CGImageSource& source);
    friend CGImageSourceStatus CGImageSourceGetStatus(const CGImageSource& source);
    friend CGImage CGImageSourceCreateThumbnailAtIndex(const CGImageSource& source, std::size_t index,
                                                       const NSDictionary& options);
    friend CGImage CGImageSourceCreateImageAtIndex(const CGImageSource& source, std::size_t index,
                                                   const NSDictionary& options);
    friend std::size_t CGImageSourceCountDecodedRows(const CGImageSource& source, std::size_t index);
    friend NSDictionary CGImageSourceCopyPropertiesAtIndex(const CGImageSource& source, std::size_t index,
                                                           const NSDictionary& options);

    std::shared_ptr<const Contents> contents_;
};

/// The types that can be read here, as uniform type identifiers; empty when the engine does not answer. Asked once.
NSArray CGImageSourceCopyTypeIdentifiers();

/// Nil when the data is nil or no image, and when the engine failed on it. Data that stands on a descriptor is handed to
/// the engine by that.
CGImageSource CGImageSourceCreateWithData(const NSData& data, const NSDictionary& options);

/// Icons of a file of icons are counted from the largest.
std::size_t CGImageSourceGetCount(const CGImageSource& source);
/// Nil for nil.
NSString CGImageSourceGetType(const CGImageSource& source);
/// Of JPEG, PNG, GIF and OpenEXR alone it is known that they are incomplete.
CGImageSourceStatus CGImageSourceGetStatus(const CGImageSource& source);

/// Not larger than the options say, nor than the image. An embedded thumbnail is taken whatever its size. What is damaged
/// comes as far as it goes, which is noted. Nil when there is no such image or thumbnail, and when it cannot be decoded,
/// takes more than 10 s, or has too many pixels: 1,000 million where the format lets the image be shrunk while it is
/// read (JPEG, PNG, TIFF, PNM, Radiance and SVG), else 100 million.
CGImage CGImageSourceCreateThumbnailAtIndex(const CGImageSource& source, std::size_t index,
                                            const NSDictionary& options);
/// The whole image, of up to 100 million pixels; of a camera's raw image the largest picture that it holds.
CGImage CGImageSourceCreateImageAtIndex(const CGImageSource& source, std::size_t index,
                                        const NSDictionary& options);
/// How many rows of the whole image, from the top of it as it is stored, were decoded from bytes that are there: all of
/// them when only what follows the pixels is missing, and 0 when the image cannot be decoded. A few rows before the first
/// that is missing may not be counted. Of images that come in passes or as a whole (progressive JPEG, interlaced PNG, WebP,
/// HEIF, JPEG XL) no row is counted until the last pass has begun, or all are there; of BMP, Targa and others that are
/// stored from the bottom none until the top is there. Takes a second decoding unless CGImageSourceCreateImageAtIndex was
/// asked for this image last, and for the formats that FFmpeg reads.
std::size_t CGImageSourceCountDecodedRows(const CGImageSource& source, std::size_t index);
/// By the keys of CGImageProperties.h. Nil when there is no such image or the engine failed.
NSDictionary CGImageSourceCopyPropertiesAtIndex(const CGImageSource& source, std::size_t index,
                                                const NSDictionary& options);

} // namespace kelvo
