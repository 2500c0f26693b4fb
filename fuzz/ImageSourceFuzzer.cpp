// Whatever stands in a file, the engine's own functions answer: what kind of image it is, how many there are, thumbnails of
// the first and the last, whole images and how many rows of them there are, properties.

#include "Input.h"
#include "platform/foundation/NSException.h"
#include "platform/imageio/engine/OpenedImage.h"

using namespace kelvo;

namespace {

/// What takes long is for the limits of the process, which are not here.
constexpr std::int64_t mostPixels = 1'000'000;

bool isSmall(const Value& properties) {
    const NSDictionary facts = properties.dictionary();
    const auto numberAt = [&facts](const char16_t* key) {
        const NSNumber* const number = facts.objectForKey(key).numberIfAny();
        return number ? number->longLongValue() : 0;
    };
    const std::int64_t width = numberAt(u"PixelWidth");
    const std::int64_t height = numberAt(u"PixelHeight");
    return width < mostPixels && height < mostPixels && width * height < mostPixels;
}

void requireWhole(const std::optional<DecodedImage>& image, const DecodeRequest& request) {
    if (!image)
        return;
    require(image->size.width > 0 && image->size.height > 0);
    require(image->bytes.length() == image->size.width * image->size.height * imageengine::bytesOfPixel);
    require(request.mostPixels == 0 || std::max(image->size.width, image->size.height) <= request.mostPixels);
}

void decode(OpenedImage& image, std::int64_t index, const DecodeRequest& request) {
    try {
        requireWhole(image.decode(index, request), request);
    } catch (const ImageFailure&) {
    }
}

void countRows(OpenedImage& image, std::int64_t index) {
    try {
        require(image.goodRows(index) <= static_cast<std::size_t>(mostPixels));
    } catch (const ImageFailure&) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const bool isReady = (prepareImageLibraries(), true);
    require(isReady);
    if (size == 0)
        return 0;
    const NSData data = NSData::dataWithBytes(bytes + 1, size - 1);
    const bool isUpright = (bytes[0] & 1U) != 0;
    try {
        const auto image = OpenedImage::open(data, (bytes[0] & 2U) != 0 ? u"com.truevision.tga-image" : u"");
        if (!image)
            return 0;
        const NSDictionary facts = image->facts();
        const NSNumber* const count = facts.objectForKey(imageengine::countKey).numberIfAny();
        require(count && count->longLongValue() > 0);
        for (const std::int64_t index : {std::int64_t{0}, count->longLongValue() - 1}) {
            const Value properties = image->properties(index);
            if (!isSmall(properties))
                continue;
            decode(*image, index, {.mostPixels = 64, .mayBeEmbedded = true, .isUpright = isUpright});
            decode(*image, index, {.isUpright = isUpright});
            countRows(*image, index);
        }
    } catch (const ImageFailure&) {
    } catch (const NSException&) {
    }
    return 0;
}
