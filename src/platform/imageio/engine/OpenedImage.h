#pragma once

#include "platform/foundation/Value.h"
#include "platform/imageio/engine/DecodedImage.h"
#include "platform/imageio/engine/IconFiles.h"
#include "platform/imageio/engine/ImageKind.h"
#include "platform/imageio/engine/ImageMetadata.h"
#include "platform/imageio/engine/VipsImage.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace kelvo {

/// Which pixels of an image are wanted.
struct DecodeRequest {
    /// The longer side at most; 0: as large as the image is.
    std::size_t mostPixels = 0;
    bool mayBeEmbedded = false;
    bool mayBeFromImage = true;
    bool isUpright = false;
};

/// Starts the libraries; throws NSException (EngineMissingException).
void prepareImageLibraries();
/// The types that the libraries here can read.
NSArray readableImageTypes();

/// A file of images that the engine has open. What it throws is ImageFailure.
class OpenedImage {
public:
    /// Null when the bytes are no image. The data is kept and read in place.
    static std::unique_ptr<OpenedImage> open(const NSData& data, std::u16string_view hint);

    /// All answers are as ImageEngineMessages.h describes them.
    NSDictionary facts();
    /// Absent when nothing that was allowed is there.
    std::optional<DecodedImage> decode(std::int64_t index, const DecodeRequest& request);
    /// Nil when there is no such image.
    Value properties(std::int64_t index);
    /// See CGImageSourceCountDecodedRows.
    std::size_t goodRows(std::int64_t index);
    /// Empty for kinds that have none.
    const ImageMetadata& metadata();

private:
    OpenedImage(NSData data, const ImageKind& kind) : data_(std::move(data)), kind_(kind) {}

    const ImageFacts& headFacts(std::int64_t index);
    Frame frame(std::int64_t index) const;
    /// May lack the pixels.
    Frame head(std::int64_t index) const;
    std::optional<DecodedImage> embeddedThumbnail(const PixelDemand& demand);
    bool isCutOff();
    /// How the pixels as they come out of fromImage() are to be turned; 0 when the file says nothing of it.
    int orientation(std::int64_t index);
    DecodedImage fromPreview(const PixelDemand& demand);
    DecodedImage fromImage(std::int64_t index, PixelDemand demand);
    std::unique_ptr<OpenedImage> fileOfIcon(std::int64_t index) const;

    NSData data_;
    ImageKind kind_;
    std::int64_t count_ = 1;
    std::vector<IconEntry> icons_;
    std::unique_ptr<ImageMetadata> metadata_;
    std::optional<bool> isCutOff_;
    /// Of the image that was asked about last.
    std::optional<ImageFacts> facts_;
    std::int64_t factsIndex_ = -1;
    /// Of the image that was decoded whole last.
    std::optional<std::size_t> goodRows_;
    std::int64_t goodRowsIndex_ = -1;
};

} // namespace kelvo
