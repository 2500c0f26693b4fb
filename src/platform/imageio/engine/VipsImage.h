#pragma once

#include "platform/foundation/NSData.h"
#include "platform/imageio/engine/DecodedImage.h"
#include "platform/imageio/engine/ImageKind.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kelvo {

/// Starts the library, so that it reads nothing but what the table of kinds names. Throws NSException
/// (EngineMissingException).
void prepareVips();
/// Whether the library has a loader for it.
bool hasVipsLoader(const ImageKind& kind);

/// What pixels are to be made into.
struct PixelDemand {
    /// The longer side at most; 0: as large as the image is.
    std::size_t mostPixels = 0;
    /// As the file says, or upright when it is to stay as it is.
    int orientation = uprightOrientation;
    /// For images without a profile of their own; may be empty.
    std::string profile;
    /// Whether the end of the file is missing.
    bool isCutOff = false;
};

/// What the head of a file says of an image.
struct ImageFacts {
    std::int64_t width = 0;
    std::int64_t height = 0;
    std::int64_t count = 1;
    int bitsOfSample = 8;
    bool hasAlpha = false;
    bool isFloat = false;
    bool isIndexed = false;
    /// As it is stated for this very image; 0 when it is not.
    int orientation = 0;
    /// "RGB", "Gray", "CMYK", "Lab".
    const char16_t* model = u"RGB";
    std::string profile;
    /// Texts in PNGs, by their keywords.
    std::vector<std::pair<std::string, std::string>> texts;
};

/// An image that libvips reads. What it throws is ImageFailure.
class VipsImage {
public:
    /// The data is read in place, or, when it is large and stands on a descriptor, through that.
    VipsImage(NSData data, const ImageKind& kind);

    ImageFacts facts(std::int64_t index) const;
    /// The pixels; the image is shrunk while it is read where the format lets it. Of a whole image the rows that were
    /// read are counted.
    DecodedImage decode(std::int64_t index, const PixelDemand& demand) const;

private:
    DecodedImage decodeWhole(std::int64_t index, const PixelDemand& demand) const;

    NSData data_;
    ImageKind kind_;
};

/// Pixels as imageengine describes them that have been decoded otherwise.
DecodedImage shrunk(ImageSize size, bool hasAlpha, std::span<const std::uint8_t> pixels,
                    const PixelDemand& demand);

/// The description of an ICC profile ("sRGB IEC61966-2.1"); empty when it has none that can be read.
std::string descriptionOfProfile(std::string_view profile);

} // namespace kelvo
