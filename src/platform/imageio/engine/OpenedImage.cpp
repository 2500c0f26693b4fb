#include "platform/imageio/engine/OpenedImage.h"

#include "platform/imageio/CGImageProperties.h"
#include "platform/imageio/ImageEngineMessages.h"
#include "platform/imageio/engine/ContainerFacts.h"
#include "platform/imageio/engine/GIFRows.h"

#include <algorithm>
#include <string>
#include <utility>

namespace kelvo {
namespace {

using namespace imageengine;
using namespace std::string_view_literals;

constexpr double centimetresInInch = 2.54;
constexpr double metresInInch = 0.0254;

bool isOfType(const ImageKind& kind, std::u16string_view type) {
    return kind.type == type;
}

std::string_view inPlace(const NSData& data) {
    return data.characters();
}

double numberIn(const NSDictionary& group, const char16_t* key) {
    const NSNumber* const number = group.objectForKey(key).numberIfAny();
    return number ? number->doubleValue() : 0;
}

void setResolution(NSMutableDictionary& properties, double across, double down) {
    if (across <= 0 || down <= 0)
        return;
    properties.setObject_forKey(NSNumber::numberWithDouble(across), kCGImagePropertyDPIWidth);
    properties.setObject_forKey(NSNumber::numberWithDouble(down), kCGImagePropertyDPIHeight);
}

/// From the first of the groups that tells.
void addResolution(NSMutableDictionary& properties) {
    const NSDictionary tiff = properties.objectForKey(kCGImagePropertyTIFFDictionary).dictionary();
    const NSDictionary jfif = properties.objectForKey(kCGImagePropertyJFIFDictionary).dictionary();
    const NSDictionary png = properties.objectForKey(kCGImagePropertyPNGDictionary).dictionary();
    // 1 of both units is none; inches are 2 in one, 1 in the other, and centimetres follow.
    const double tiffUnit =
        tiff.objectForKey(u"ResolutionUnit").isNil() ? 2 : numberIn(tiff, u"ResolutionUnit");
    const double jfifUnit = numberIn(jfif, u"DensityUnit");
    if (tiffUnit >= 2 && numberIn(tiff, u"XResolution") > 0) {
        const double factor = tiffUnit == 3 ? centimetresInInch : 1;
        setResolution(properties, numberIn(tiff, u"XResolution") * factor,
                      numberIn(tiff, u"YResolution") * factor);
    } else if (jfifUnit >= 1) {
        const double factor = jfifUnit == 2 ? centimetresInInch : 1;
        setResolution(properties, numberIn(jfif, u"XDensity") * factor, numberIn(jfif, u"YDensity") * factor);
    } else {
        setResolution(properties, numberIn(png, u"XPixelsPerMeter") * metresInInch,
                      numberIn(png, u"YPixelsPerMeter") * metresInInch);
    }
}

void addIfAny(NSMutableDictionary& properties, const NSMutableDictionary& group, const char16_t* key) {
    if (group.count() > 0)
        properties.setObject_forKey(group.copy(), key);
}

ImageFacts factsOfFrame(const Frame& frame) {
    ImageFacts facts;
    facts.width = static_cast<std::int64_t>(frame.size.width);
    facts.height = static_cast<std::int64_t>(frame.size.height);
    facts.bitsOfSample = frame.bitsOfSample;
    facts.hasAlpha = frame.hasAlpha;
    facts.isFloat = frame.isFloat;
    facts.isIndexed = frame.isIndexed;
    facts.model = frame.isGray ? u"Gray" : u"RGB";
    return facts;
}

/// libvips takes several times as long, because it reads the metadata as well.
std::optional<ImageFacts> factsOfJPEG(std::string_view bytes) {
    auto head = headOfJPEG(bytes);
    if (!head || (head->channels != 1 && head->channels != 3 && head->channels != 4))
        return std::nullopt;
    ImageFacts facts;
    facts.width = head->width;
    facts.height = head->height;
    facts.model = head->channels == 1 ? u"Gray" : head->channels == 3 ? u"RGB" : u"CMYK";
    facts.profile = std::move(head->profile);
    return facts;
}

} // namespace

void prepareImageLibraries() {
    prepareVips();
    prepareMetadata();
}

NSArray readableImageTypes() {
    auto types = NSMutableArray::array();
    for (const ImageKind& kind : imageKinds()) {
        const bool isThere = kind.reader == ImageReader::vips     ? hasVipsLoader(kind)
                             : kind.reader == ImageReader::frames ? hasFrameDecoder(kind.loader)
                                                                  : true;
        if (isThere)
            types.addObject(kind.type);
    }
    return types;
}

std::unique_ptr<OpenedImage> OpenedImage::open(const NSData& data, std::u16string_view hint) {
    const ImageKind* const kind = kindOfImage(inPlace(data), hint);
    if (!kind)
        return nullptr;
    std::unique_ptr<OpenedImage> image(new OpenedImage(data, *kind));
    if (kind->reader == ImageReader::icons)
        image->icons_ = iconsOfFolder(inPlace(data));
    if (kind->reader == ImageReader::iconFamily)
        image->icons_ = iconsOfFamily(inPlace(data));
    if (kind->reader == ImageReader::icons || kind->reader == ImageReader::iconFamily) {
        image->count_ = static_cast<std::int64_t>(image->icons_.size());
    } else if (isOfType(*kind, u"public.tiff") && image->metadata().isOfSensor()) {
        image->kind_ = *kindOfCamera(image->metadata().maker(), image->metadata().isDigitalNegative());
    } else if (kind->mayHaveMany) {
        image->count_ = image->headFacts(0).count;
    }
    if (image->count_ <= 0)
        return nullptr;
    return image;
}

bool OpenedImage::isCutOff() {
    const std::string_view bytes = inPlace(data_);
    if (!isCutOff_)
        isCutOff_ = isOfType(kind_, u"public.jpeg")             ? isCutOffJPEG(bytes)
                    : isOfType(kind_, u"public.png")            ? isCutOffPNG(bytes)
                    : isOfType(kind_, u"com.compuserve.gif")    ? isCutOffGIF(bytes)
                    : isOfType(kind_, u"com.ilm.openexr-image") ? isCutOffEXR(bytes)
                                                                : false;
    return *isCutOff_;
}

NSDictionary OpenedImage::facts() {
    return NSMutableDictionary::dictionaryWithObjectsAndKeys(
        {{NSString(kind_.type), typeKey},
         {NSNumber::numberWithLongLong(count_), countKey},
         {NSNumber::numberWithBool(isCutOff()), incompleteKey}});
}

const ImageMetadata& OpenedImage::metadata() {
    if (!metadata_)
        metadata_ = std::make_unique<ImageMetadata>(kind_.hasMetadata ? inPlace(data_) : std::string_view());
    return *metadata_;
}

const ImageFacts& OpenedImage::headFacts(std::int64_t index) {
    if (!facts_ || factsIndex_ != index) {
        facts_ = isOfType(kind_, u"public.jpeg") ? factsOfJPEG(inPlace(data_)) : std::nullopt;
        if (!facts_)
            facts_ = kind_.reader == ImageReader::vips ? VipsImage(data_, kind_).facts(index)
                                                       : factsOfFrame(head(index));
        factsIndex_ = index;
    }
    return *facts_;
}

Frame OpenedImage::frame(std::int64_t index) const {
    return kind_.reader == ImageReader::frames ? decodedFrame(kind_.loader, inPlace(data_))
                                               : decodedIcon(icons_[static_cast<std::size_t>(index)]);
}

Frame OpenedImage::head(std::int64_t index) const {
    if (kind_.reader == ImageReader::frames) {
        Frame head = headOfFrame(kind_.loader, inPlace(data_));
        // Whether alpha is used the pixels alone tell, but where it is a channel with a name.
        if (!head.hasAlpha || head.isFloat)
            return head;
    }
    return frame(index);
}

int OpenedImage::orientation(std::int64_t index) {
    // The libraries for those turn them themselves, by what they know better than Exif.
    if (kind_.loader == "VipsForeignLoadHeif"sv || kind_.loader == "VipsForeignLoadJxl"sv)
        return metadata().orientation() != 0 ? uprightOrientation : 0;
    return index > 0 && isOfType(kind_, u"public.tiff") ? headFacts(index).orientation
                                                        : metadata().orientation();
}

std::unique_ptr<OpenedImage> OpenedImage::fileOfIcon(std::int64_t index) const {
    if (icons_.empty() || icons_[static_cast<std::size_t>(index)].form != IconEntry::Form::file)
        return nullptr;
    const std::string_view bytes = icons_[static_cast<std::size_t>(index)].bytes;
    auto file = open(NSData::dataWithBytes(bytes), {});
    // Nothing that holds files again.
    if (!file || file->kind_.reader != ImageReader::vips)
        throw ImageFailure(Outcome::broken, u"the icon cannot be decoded");
    return file;
}

std::optional<DecodedImage> OpenedImage::embeddedThumbnail(const PixelDemand& demand) {
    const NSData thumbnail = metadata().thumbnail();
    if (thumbnail.isNil())
        return std::nullopt;
    const ImageKind* const kind = kindOfImage(thumbnail.characters(), {});
    if (!kind || kind->reader != ImageReader::vips)
        return std::nullopt;
    PixelDemand inColors = demand;
    inColors.profile = metadata().profile();
    try {
        return VipsImage(thumbnail, *kind).decode(0, inColors);
    } catch (const ImageFailure&) {
        return std::nullopt;
    }
}

DecodedImage OpenedImage::fromPreview(const PixelDemand& demand) {
    const NSData preview = metadata().preview(demand.mostPixels);
    const ImageKind* const kind = preview.isNil() ? nullptr : kindOfImage(preview.characters(), {});
    if (!kind || kind->reader != ImageReader::vips)
        throw ImageFailure(Outcome::unsupported,
                           u"the camera has put no picture into the file that can be shown");
    PixelDemand own = demand;
    own.isCutOff = isOfType(*kind, u"public.jpeg") && isCutOffJPEG(preview.characters());
    return VipsImage(preview, *kind).decode(0, own);
}

DecodedImage OpenedImage::fromImage(std::int64_t index, PixelDemand demand) {
    if (const auto file = fileOfIcon(index))
        return file->fromImage(0, demand);
    if (kind_.reader == ImageReader::preview)
        return fromPreview(demand);
    if (kind_.reader != ImageReader::vips) {
        const Frame decoded = frame(index);
        facts_ = factsOfFrame(decoded);
        factsIndex_ = index;
        DecodedImage image = shrunk(decoded.size, decoded.hasAlpha, decoded.pixels, demand);
        image.isPartial = image.isPartial || decoded.isPartial || isCutOff() ||
                          (!icons_.empty() && icons_[static_cast<std::size_t>(index)].isCutOff);
        return image;
    }
    demand.isCutOff = isCutOff();
    DecodedImage image = VipsImage(data_, kind_).decode(index, demand);
    if (demand.isCutOff && isOfType(kind_, u"com.compuserve.gif")) {
        // The library fills what is missing.
        const auto height = static_cast<std::size_t>(headFacts(index).height);
        image.goodRows = std::min(decodedRowsOfGIF(inPlace(data_), index), height);
        image.isPartial = image.isPartial || *image.goodRows < height;
    }
    // Whether anything that a smaller picture is made of was missing nobody has counted.
    image.isPartial = image.isPartial || (demand.isCutOff && !image.goodRows);
    return image;
}

std::optional<DecodedImage> OpenedImage::decode(std::int64_t index, const DecodeRequest& request) {
    if (index < 0 || index >= count_)
        return std::nullopt;
    PixelDemand demand;
    demand.mostPixels = request.mostPixels;
    const auto turning = [&](int orientation) {
        return request.isUpright && orientation != 0 ? orientation : uprightOrientation;
    };
    if (request.mayBeEmbedded && index == 0) {
        demand.orientation = turning(metadata().orientation());
        if (auto thumbnail = embeddedThumbnail(demand))
            return thumbnail;
    }
    if (!request.mayBeFromImage)
        return std::nullopt;
    demand.orientation = turning(orientation(index));
    DecodedImage image = fromImage(index, demand);
    if (demand.mostPixels == 0) {
        goodRows_ = image.goodRows;
        goodRowsIndex_ = index;
    }
    return image;
}

std::size_t OpenedImage::goodRows(std::int64_t index) {
    if (index < 0 || index >= count_)
        return 0;
    if (const auto file = fileOfIcon(index))
        return file->goodRows(0);
    const bool isEXR = isOfType(kind_, u"com.ilm.openexr-image");
    if (isEXR && isCutOff())
        return 0;
    if (kind_.reader == ImageReader::frames && !isEXR)
        return settledRows(kind_.loader, inPlace(data_));
    if (!icons_.empty())
        return icons_[static_cast<std::size_t>(index)].isCutOff ? 0 : frame(index).size.height;
    if (!goodRows_ || goodRowsIndex_ != index) {
        const DecodedImage image = fromImage(index, {});
        goodRows_ = image.goodRows.value_or(image.size.height);
        goodRowsIndex_ = index;
    }
    return *goodRows_;
}

Value OpenedImage::properties(std::int64_t index) {
    if (index < 0 || index >= count_)
        return {};
    if (const auto file = fileOfIcon(index))
        return file->properties(0);
    auto properties = NSMutableDictionary::dictionary();
    const bool isOfCamera = kind_.reader == ImageReader::preview;
    if (isOfCamera && metadata().size().width > 0 && metadata().size().height > 0) {
        const ImageSize size = metadata().size();
        properties.setObject_forKey(NSNumber::numberWithInt(static_cast<int>(size.width)),
                                    kCGImagePropertyPixelWidth);
        properties.setObject_forKey(NSNumber::numberWithInt(static_cast<int>(size.height)),
                                    kCGImagePropertyPixelHeight);
    }
    if (!isOfCamera) {
        const ImageFacts& facts = headFacts(index);
        properties.setObject_forKey(NSNumber::numberWithInt(static_cast<int>(facts.width)),
                                    kCGImagePropertyPixelWidth);
        properties.setObject_forKey(NSNumber::numberWithInt(static_cast<int>(facts.height)),
                                    kCGImagePropertyPixelHeight);
        properties.setObject_forKey(NSNumber::numberWithInt(facts.bitsOfSample), kCGImagePropertyDepth);
        properties.setObject_forKey(facts.model, kCGImagePropertyColorModel);
        if (facts.hasAlpha || !isOfType(kind_, u"public.jpeg"))
            properties.setObject_forKey(NSNumber::numberWithBool(facts.hasAlpha), kCGImagePropertyHasAlpha);
        if (facts.isFloat)
            properties.setObject_forKey(NSNumber::numberWithBool(true), kCGImagePropertyIsFloat);
        if (facts.isIndexed)
            properties.setObject_forKey(NSNumber::numberWithBool(true), kCGImagePropertyIsIndexed);
        const std::string profile = descriptionOfProfile(facts.profile);
        if (!profile.empty())
            properties.setObject_forKey(NSString::stringByRepairingUTF8String(profile),
                                        kCGImagePropertyProfileName);
    }
    if (index == 0)
        metadata().addGroups(properties);
    if (const int turned = orientation(index); turned != 0)
        properties.setObject_forKey(NSNumber::numberWithInt(turned), kCGImagePropertyOrientation);
    const std::string_view bytes = inPlace(data_);
    if (isOfType(kind_, u"public.jpeg"))
        addIfAny(properties, groupOfJFIF(bytes), kCGImagePropertyJFIFDictionary);
    else if (isOfType(kind_, u"public.png"))
        addIfAny(properties, groupOfPNG(bytes, facts_->texts), kCGImagePropertyPNGDictionary);
    else if (isOfType(kind_, u"com.compuserve.gif"))
        addIfAny(properties, groupOfGIF(bytes, index), kCGImagePropertyGIFDictionary);
    addResolution(properties);
    return properties.copy();
}

} // namespace kelvo
