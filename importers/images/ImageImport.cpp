#include "importers/images/ImageImport.h"

#include "importers/images/CameraFacts.h"
#include "importers/images/Captions.h"
#include "platform/imageio/CGImageProperties.h"
#include "platform/imageio/ImageEngineMessages.h"
#include "platform/imageio/engine/OpenedImage.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kelvo::importers {
namespace {

/// From here on the rows of an image are the columns that people see.
constexpr int firstOrientationOnItsSide = 5;

std::optional<std::int64_t> integerIn(const NSDictionary& properties, const char16_t* key) {
    const NSNumber* const number = properties.objectForKey(key).numberIfAny();
    return number ? std::optional(number->longLongValue()) : std::nullopt;
}

void setReal(Attributes& attributes, const NSDictionary& properties, const char16_t* key, const char* name) {
    if (const NSNumber* const number = properties.objectForKey(key).numberIfAny())
        attributes.setReal(name, number->doubleValue());
}

void setSize(Attributes& attributes, const NSDictionary& properties) {
    const auto width = integerIn(properties, kCGImagePropertyPixelWidth);
    const auto height = integerIn(properties, kCGImagePropertyPixelHeight);
    if (!width || !height || *width <= 0 || *height <= 0)
        return;
    attributes.setInteger("kMDItemPixelWidth", *width);
    attributes.setInteger("kMDItemPixelHeight", *height);
    attributes.setInteger("kMDItemPixelCount", *width * *height);
    const bool isOnItsSide =
        integerIn(properties, kCGImagePropertyOrientation).value_or(1) >= firstOrientationOnItsSide;
    attributes.setInteger("kMDItemOrientation", (*width < *height) != isOnItsSide && *width != *height);
}

void setColors(Attributes& attributes, const NSDictionary& properties) {
    attributes.set("kMDItemColorSpace", properties.objectForKey(kCGImagePropertyColorModel).string());
    attributes.set("kMDItemProfileName", properties.objectForKey(kCGImagePropertyProfileName).string());
    const auto depth = integerIn(properties, kCGImagePropertyDepth);
    if (!depth)
        return;
    attributes.setInteger("kMDItemBitsPerSample", *depth);
    attributes.setBoolean("kMDItemHasAlphaChannel",
                          integerIn(properties, kCGImagePropertyHasAlpha).value_or(0) != 0);
}

/// Of the first image, which is the file's to people.
void setProperties(Attributes& attributes, const NSDictionary& properties, const ImageMetadata& metadata) {
    setSize(attributes, properties);
    setColors(attributes, properties);
    setReal(attributes, properties, kCGImagePropertyDPIWidth, "kMDItemResolutionWidthDPI");
    setReal(attributes, properties, kCGImagePropertyDPIHeight, "kMDItemResolutionHeightDPI");
    setCameraFacts(attributes, properties, metadata);
    setCaptions(attributes, properties, metadata);
}

void note(Attributes& attributes, const ImageFailure& failure) {
    const int kind = failure.outcome() == Outcome::missingEngine ? MDNoteUnsupported
                     : failure.outcome() == Outcome::outOfMemory ? MDNoteIncomplete
                                                                 : MDNoteBroken;
    attributes.note(kind, NSString(failure.sentence()).UTF8String().c_str());
}

} // namespace

void importImage(Attributes& attributes) {
    [[maybe_unused]] static const bool isPrepared = (prepareImageLibraries(), true);
    const std::string_view file = attributes.file();
    const NSData data = NSData::dataWithBytesNoCopy(
        std::span(reinterpret_cast<const std::uint8_t*>(file.data()), file.size()), nullptr);
    const NSString type = NSString::stringWithUTF8String(attributes.contentType());
    std::unique_ptr<OpenedImage> image;
    try {
        image = OpenedImage::open(data, type);
        if (!image) {
            const bool isOfNoKind = attributes.contentType() == "public.image";
            attributes.note(isOfNoKind ? MDNoteUnsupported : MDNoteBroken,
                            "the file is no image that can be read");
            return;
        }
        const NSDictionary properties = image->properties(0).dictionary();
        if (properties.objectForKey(kCGImagePropertyPixelWidth).isNil())
            attributes.note(properties.count() == 0 ? MDNoteBroken : MDNoteIncomplete,
                            "the file does not say how large the image is");
        setProperties(attributes, properties, image->metadata());
        if (image->metadata().isDamaged())
            attributes.note(MDNoteIncomplete, "what is written on the image cannot be read");
        if (const auto count = integerIn(image->facts(), imageengine::countKey); count && *count > 1)
            attributes.setInteger("kMDItemNumberOfPages", *count);
    } catch (const ImageFailure& failure) {
        note(attributes, failure);
        // What has been written on a picture outlives its pixels.
        const ImageMetadata metadata(file);
        auto properties = NSMutableDictionary::dictionary();
        metadata.addGroups(properties);
        properties.setObject_forKey(
            NSNumber::numberWithLongLong(static_cast<std::int64_t>(metadata.size().width)),
            kCGImagePropertyPixelWidth);
        properties.setObject_forKey(
            NSNumber::numberWithLongLong(static_cast<std::int64_t>(metadata.size().height)),
            kCGImagePropertyPixelHeight);
        setProperties(attributes, properties, metadata);
    }
}

} // namespace kelvo::importers
