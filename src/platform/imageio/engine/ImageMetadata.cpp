#include "platform/imageio/engine/ImageMetadata.h"

#include "platform/imageio/CGImageProperties.h"
#include "platform/imageio/engine/MetadataValues.h"

#include <exiv2/exiv2.hpp>

#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

constexpr std::uint16_t kindOfPageTag = 0x00FE;
constexpr std::uint16_t widthTag = 0x0100;
constexpr std::uint16_t heightTag = 0x0101;
constexpr std::uint16_t orientationTag = 0x0112;
constexpr std::uint16_t photometryTag = 0x0106;
constexpr std::uint16_t makerTag = 0x010F;
constexpr std::uint16_t digitalNegativeTag = 0xC612;
constexpr std::uint16_t recordOfApplication = 2;
constexpr long mostTexts = 4096;
constexpr long mostBytesOfWideText = 1 << 20;

void setIfAny(NSMutableDictionary& to, const Value& value, const char16_t* key) {
    if (!value.isNil() && to.objectForKey(key).isNil())
        to.setObject_forKey(value, key);
}

void addGroup(NSMutableDictionary& properties, const NSMutableDictionary& group, const char16_t* key) {
    if (group.count() > 0)
        properties.setObject_forKey(group.copy(), key);
}

const Exiv2::Exifdatum* find(const Exiv2::ExifData& data, const char* group, std::uint16_t tag) {
    for (const Exiv2::Exifdatum& datum : data) {
        if (datum.tag() == tag && datum.groupName() == group)
            return &datum;
    }
    return nullptr;
}

/// Whether it says of an image in the file that it is what a sensor has seen.
bool isPhotometryOfSensor(const Exiv2::Exifdatum& datum) {
    constexpr long colorFilterArray = 32803;
    constexpr long linear = 34892;
    if (datum.tag() != photometryTag || datum.count() < 1)
        return false;
    const std::string group = datum.groupName();
    const long photometry = datum.toLong();
    return (group == "Image" || group.starts_with("SubImage")) &&
           (photometry == colorFilterArray || photometry == linear);
}

Value numberOrText(const std::string& text) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0')
        return textOf(text);
    return number == std::floor(number) && std::abs(number) < 1e9
               ? NSNumber::numberWithInt(static_cast<std::int32_t>(number))
               : NSNumber::numberWithDouble(number);
}

/// "24/1 70/1 28/10 28/10".
Value lensInfoOf(const std::string& text) {
    Exiv2::RationalValue value;
    return value.read(text) == 0 ? valueOf(value, ValueForm::array) : Value();
}

struct XMPRow {
    const char* key;
    const char16_t* name;
};
constexpr XMPRow auxiliaryRows[] = {
    {"Xmp.aux.Lens", u"LensModel"},          {"Xmp.aux.SerialNumber", u"SerialNumber"},
    {"Xmp.aux.LensID", u"LensID"},           {"Xmp.aux.LensSerialNumber", u"LensSerialNumber"},
    {"Xmp.aux.ImageNumber", u"ImageNumber"}, {"Xmp.aux.FlashCompensation", u"FlashCompensation"},
    {"Xmp.aux.OwnerName", u"OwnerName"},     {"Xmp.aux.Firmware", u"Firmware"},
};
constexpr XMPRow contactRows[] = {
    {"Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrCity", u"CiAdrCity"},
    {"Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrCtry", u"CiAdrCtry"},
    {"Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrExtadr", u"CiAdrExtadr"},
    {"Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrPcode", u"CiAdrPcode"},
    {"Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrRegion", u"CiAdrRegion"},
    {"Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiEmailWork", u"CiEmailWork"},
    {"Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiTelWork", u"CiTelWork"},
    {"Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiUrlWork", u"CiUrlWork"},
};

std::string textOfXMP(const Exiv2::XmpData& data, const char* key) {
    const auto found = data.findKey(Exiv2::XmpKey(key));
    if (found == data.end())
        return {};
    // Of texts in several languages the one for all.
    if (const auto* const languages = dynamic_cast<const Exiv2::LangAltValue*>(&found->value()))
        return languages->toString("x-default");
    return found->toString();
}

/// Each element of an array by itself, any other value as one text.
std::vector<Value> textsOfXMPProperty(const Exiv2::XmpData& data, const char* key) {
    std::vector<Value> texts;
    const auto add = [&](const std::string& bytes) {
        if (Value text = textOf(bytes); !text.isNil())
            texts.push_back(std::move(text));
    };
    const auto found = data.findKey(Exiv2::XmpKey(key));
    const Exiv2::TypeId type = found == data.end() ? Exiv2::invalidTypeId : found->typeId();
    if (type == Exiv2::xmpBag || type == Exiv2::xmpSeq || type == Exiv2::xmpAlt) {
        for (long index = 0; index < std::min(found->count(), mostTexts); ++index)
            add(found->toString(index));
    } else if (found != data.end()) {
        // What the library counts in a text are its bytes.
        add(textOfXMP(data, key));
    }
    return texts;
}

NSMutableDictionary auxiliaryOf(const Exiv2::XmpData& data) {
    auto group = NSMutableDictionary::dictionary();
    if (const std::string lens = textOfXMP(data, "Xmp.aux.LensInfo"); !lens.empty())
        setIfAny(group, lensInfoOf(lens), u"LensInfo");
    for (const XMPRow& row : auxiliaryRows) {
        const std::string text = textOfXMP(data, row.key);
        const bool isText = row.name == std::u16string_view(u"SerialNumber") ||
                            row.name == std::u16string_view(u"LensSerialNumber");
        if (!text.empty())
            setIfAny(group, isText ? textOf(text) : numberOrText(text), row.name);
    }
    return group;
}

void addFromXMP(NSMutableDictionary& group, const Exiv2::XmpData& data) {
    if (const std::string rating = textOfXMP(data, "Xmp.xmp.Rating"); !rating.empty())
        setIfAny(group, numberOrText(rating), u"StarRating");
    if (std::vector<Value> scenes = textsOfXMPProperty(data, "Xmp.iptc.Scene"); !scenes.empty())
        setIfAny(group, NSArray::arrayWithValues(std::move(scenes)), u"Scene");
    setIfAny(group, textOf(textOfXMP(data, "Xmp.xmpRights.UsageTerms")), u"UsageTerms");
    auto contact = NSMutableDictionary::dictionary();
    for (const XMPRow& row : contactRows)
        setIfAny(contact, textOf(textOfXMP(data, row.key)), row.name);
    if (contact.count() > 0)
        setIfAny(group, contact.copy(), u"CreatorContactInfo");
}

NSMutableDictionary iptcOf(const Exiv2::IptcData& data) {
    auto group = NSMutableDictionary::dictionary();
    std::vector<std::pair<const TagRow*, std::vector<Value>>> lists;
    for (const Exiv2::Iptcdatum& datum : data) {
        const TagRow* const row =
            datum.record() == recordOfApplication ? rowOfTag(tagsOfIPTC(), datum.tag()) : nullptr;
        if (!row)
            continue;
        // As it stands in the file: the library shows dates with signs between their parts.
        std::string bytes(static_cast<std::size_t>(std::max(datum.value().size(), 0L)), '\0');
        datum.value().copy(reinterpret_cast<Exiv2::byte*>(bytes.data()), Exiv2::bigEndian);
        const Value text = textOf(bytes);
        if (text.isNil())
            continue;
        if (row->form != ValueForm::array) {
            setIfAny(group, text, row->name);
            continue;
        }
        auto list =
            std::find_if(lists.begin(), lists.end(), [row](const auto& one) { return one.first == row; });
        if (list == lists.end())
            list = lists.insert(lists.end(), {row, {}});
        list->second.push_back(text);
    }
    for (auto& [row, values] : lists)
        setIfAny(group, NSArray::arrayWithValues(std::move(values)), row->name);
    return group;
}

} // namespace

struct ImageMetadata::Contents {
    std::unique_ptr<Exiv2::Image> image;
};

ImageMetadata::ImageMetadata(std::string_view bytes) {
    try {
        auto contents = std::make_unique<Contents>();
        const auto* const start = reinterpret_cast<const Exiv2::byte*>(bytes.data());
        contents->image.reset(Exiv2::ImageFactory::open(start, static_cast<long>(bytes.size())).release());
        isDamaged_ = true;
        contents->image->readMetadata();
        isDamaged_ = false;
        contents_ = std::move(contents);
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception&) {
        // Whatever is wrong with it, the image may be well.
    }
}

ImageMetadata::~ImageMetadata() = default;

int ImageMetadata::orientation() const {
    if (!contents_)
        return 0;
    const Exiv2::Exifdatum* const datum = find(contents_->image->exifData(), "Image", orientationTag);
    const long orientation = datum && datum->count() > 0 ? datum->toLong() : 0;
    return orientation >= 1 && orientation <= 8 ? static_cast<int>(orientation) : 0;
}

bool ImageMetadata::isDigitalNegative() const {
    return contents_ && find(contents_->image->exifData(), "Image", digitalNegativeTag);
}

bool ImageMetadata::isOfSensor() const {
    if (!contents_)
        return false;
    const Exiv2::ExifData& data = contents_->image->exifData();
    return std::any_of(data.begin(), data.end(), isPhotometryOfSensor);
}

std::string ImageMetadata::maker() const {
    const Exiv2::Exifdatum* const datum =
        contents_ ? find(contents_->image->exifData(), "Image", makerTag) : nullptr;
    return datum ? datum->toString() : std::string();
}

ImageSize ImageMetadata::size() const {
    if (!contents_)
        return {};
    const auto side = [](long pixels) { return static_cast<std::size_t>(std::max(pixels, 0L)); };
    // Of a camera's file that is what the sensor has seen, wherever it stands, and not the thumbnail at its beginning.
    ImageSize largest;
    for (const Exiv2::Exifdatum& datum : contents_->image->exifData()) {
        const std::string group = datum.groupName();
        if (!isPhotometryOfSensor(datum))
            continue;
        const Exiv2::Exifdatum* const width = find(contents_->image->exifData(), group.c_str(), widthTag);
        const Exiv2::Exifdatum* const height = find(contents_->image->exifData(), group.c_str(), heightTag);
        if (width && height && width->count() > 0 && height->count() > 0 &&
            side(width->toLong()) > largest.width)
            largest = {side(width->toLong()), side(height->toLong())};
    }
    if (largest.width > 0)
        return largest;
    return {side(contents_->image->pixelWidth()), side(contents_->image->pixelHeight())};
}

NSData ImageMetadata::thumbnail() const {
    if (!contents_)
        return nullptr;
    const Exiv2::ExifData& data = contents_->image->exifData();
    // In a TIFF what stands there is the second page, unless it says that it is the first one reduced.
    const Exiv2::Exifdatum* const kind = find(data, "Thumbnail", kindOfPageTag);
    const bool isReduced = kind && kind->count() > 0 && (kind->toLong() & 1) != 0;
    if (contents_->image->mimeType() == "image/tiff" && !isReduced)
        return nullptr;
    try {
        const Exiv2::DataBuf bytes = Exiv2::ExifThumbC(data).copy();
        return bytes.size_ > 0 ? NSData::dataWithBytes(bytes.pData_, static_cast<std::size_t>(bytes.size_))
                               : NSData();
    } catch (const Exiv2::Error&) {
        return nullptr;
    }
}

NSData ImageMetadata::preview(std::size_t leastPixels) const {
    if (!contents_)
        return nullptr;
    try {
        const Exiv2::PreviewManager manager(*contents_->image);
        // The smallest first.
        const Exiv2::PreviewPropertiesList all = manager.getPreviewProperties();
        if (all.empty())
            return nullptr;
        const auto fit =
            std::find_if(all.begin(), all.end(), [leastPixels](const Exiv2::PreviewProperties& one) {
                return std::max(one.width_, one.height_) >= leastPixels;
            });
        const Exiv2::PreviewImage image =
            manager.getPreviewImage(leastPixels == 0 || fit == all.end() ? all.back() : *fit);
        return NSData::dataWithBytes(image.pData(), image.size());
    } catch (const Exiv2::Error&) {
        return nullptr;
    }
}

std::string ImageMetadata::profile() const {
    if (!contents_ || !contents_->image->iccProfileDefined())
        return {};
    const Exiv2::DataBuf& bytes = *contents_->image->iccProfile();
    return {reinterpret_cast<const char*>(bytes.pData_), static_cast<std::size_t>(std::max(bytes.size_, 0L))};
}

std::vector<NSString> ImageMetadata::textsOfXMP(const char* key) const {
    std::vector<NSString> texts;
    // Keys take longer to make than to look for.
    if (!contents_ || contents_->image->xmpData().empty())
        return texts;
    try {
        for (const Value& text : textsOfXMPProperty(contents_->image->xmpData(), key))
            texts.push_back(text.string());
    } catch (const Exiv2::Error&) {
        // A name that this version of the library does not know.
    }
    return texts;
}

NSString ImageMetadata::wideText(std::uint16_t tag) const {
    const Exiv2::Exifdatum* const datum =
        contents_ ? find(contents_->image->exifData(), "Image", tag) : nullptr;
    const long size = datum ? datum->size() : 0;
    if (size < 2 || size > mostBytesOfWideText)
        return nullptr;
    std::vector<Exiv2::byte> bytes(static_cast<std::size_t>(size));
    datum->copy(bytes.data(), Exiv2::bigEndian);
    std::u16string units;
    for (std::size_t place = 0; place + 1 < bytes.size(); place += 2)
        units += static_cast<char16_t>(bytes[place] | bytes[place + 1] << 8U);
    units.resize(std::min(units.find(u'\0'), units.size()));
    return units.empty() ? NSString() : NSString(units);
}

NSString ImageMetadata::comment() const {
    const Value text = contents_ ? textOf(contents_->image->comment()) : Value();
    return text.isNil() ? NSString() : text.string();
}

void ImageMetadata::addGroups(NSMutableDictionary& properties) const {
    if (!contents_)
        return;
    struct Group {
        const char* name;
        std::span<const TagRow> rows;
        const char16_t* key;
    };
    const Group groups[] = {
        {"Image", tagsOfTIFF(), kCGImagePropertyTIFFDictionary},
        {"Photo", tagsOfExif(), kCGImagePropertyExifDictionary},
        {"GPSInfo", tagsOfGPS(), kCGImagePropertyGPSDictionary},
    };
    for (const Group& group : groups) {
        auto values = NSMutableDictionary::dictionary();
        for (const Exiv2::Exifdatum& datum : contents_->image->exifData()) {
            const TagRow* const row = rowOfTag(group.rows, datum.tag());
            if (row && datum.groupName() == group.name)
                setIfAny(values, valueOf(datum.value(), row->form), row->name);
        }
        addGroup(properties, values, group.key);
    }
    try {
        const Exiv2::XmpData& xmp = contents_->image->xmpData();
        NSMutableDictionary iptc = iptcOf(contents_->image->iptcData());
        if (!xmp.empty()) {
            addGroup(properties, auxiliaryOf(xmp), kCGImagePropertyExifAuxDictionary);
            addFromXMP(iptc, xmp);
        }
        addGroup(properties, iptc, kCGImagePropertyIPTCDictionary);
    } catch (const Exiv2::Error&) {
        // Names that this version of the library does not know.
    }
}

void prepareMetadata() {
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    Exiv2::XmpParser::initialize();
    Exiv2::enableBMFF(true);
}

} // namespace kelvo
