#include "importers/images/CameraFacts.h"

#include "platform/imageio/CGImageProperties.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::importers {
namespace {

std::optional<double> numberIn(const NSDictionary& group, const char16_t* key) {
    const Value& value = group.objectForKey(key);
    const Value first = value.isArray() && value.array().count() > 0 ? value.array().objectAtIndex(0) : value;
    const NSNumber* const number = first.numberIfAny();
    return number && std::isfinite(number->doubleValue()) ? std::optional(number->doubleValue())
                                                          : std::nullopt;
}

std::string decimal(double number) {
    char text[64];
    std::snprintf(text, sizeof text, "%.7f", number);
    std::string result = text;
    result.erase(result.find_last_not_of('0') + 1);
    if (result.ends_with('.'))
        result.pop_back();
    return result == "-0" ? "0" : result;
}

void setText(Attributes& attributes, const char* name, const std::string& text) {
    attributes.set(name, NSString::stringWithUTF8String(text));
}

struct NumberRow {
    const char16_t* key;
    const char* name;
};
/// What is 0 where a device does not know it.
constexpr NumberRow positiveRows[] = {
    {u"FNumber", "kMDItemFNumber"},
    {u"FocalLength", "kMDItemFocalLength"},
    {u"FocalLenIn35mmFilm", "kMDItemFocalLength35mm"},
    {u"ExposureTime", "kMDItemExposureTimeSeconds"},
};
constexpr NumberRow otherRows[] = {
    {u"ApertureValue", "kMDItemAperture"},
    {u"MaxApertureValue", "kMDItemMaxAperture"},
};
constexpr NumberRow choiceRows[] = {
    {u"WhiteBalance", "kMDItemWhiteBalance"},
    {u"ExposureMode", "kMDItemExposureMode"},
};

constexpr std::array meteringModes{"",        "Average", "Center-weighted average", "Spot", "Multi-spot",
                                   "Pattern", "Partial"};
constexpr std::array exposurePrograms{
    "",         "Manual", "Normal",   "Aperture priority", "Shutter priority",
    "Creative", "Action", "Portrait", "Landscape"};

template <std::size_t count>
void setWord(Attributes& attributes, const char* name, const std::array<const char*, count>& words,
             std::optional<double> number) {
    if (number && *number >= 0 && *number < static_cast<double>(count))
        setText(attributes, name, words[static_cast<std::size_t>(*number)]);
}

/// Small whole numbers with points between them: "2.3".
void setVersion(Attributes& attributes, const char* name, const Value& parts) {
    std::string text;
    if (!parts.isArray())
        return;
    for (const Value& part : parts.array()) {
        if (const NSNumber* const number = part.numberIfAny())
            text += (text.empty() ? "" : ".") + std::to_string(number->longLongValue());
    }
    setText(attributes, name, text);
}

/// As cameras show it: "1/250", "2.5".
std::string textOfExposure(double seconds) {
    constexpr double longestFraction = 0.3;
    if (seconds > longestFraction)
        return decimal(seconds);
    char text[64];
    std::snprintf(text, sizeof text, "1/%.0f", 1 / seconds);
    return text;
}

void setSensitivity(Attributes& attributes, const NSDictionary& exif) {
    // The first of these has 16 bits; what does not fit stands in the others.
    constexpr double unfit = 65535;
    for (const char16_t* const key :
         {u"ISOSpeedRatings", u"ISOSpeed", u"RecommendedExposureIndex", u"StandardOutputSensitivity"}) {
        const auto speed = numberIn(exif, key);
        if (speed && *speed > 0 && *speed != unfit)
            return attributes.setInteger("kMDItemISOSpeed", static_cast<std::int64_t>(*speed));
    }
}

void setExposure(Attributes& attributes, const NSDictionary& exif) {
    for (const NumberRow& row : positiveRows) {
        if (const auto number = numberIn(exif, row.key); number && *number > 0)
            attributes.setReal(row.name, *number);
    }
    for (const NumberRow& row : otherRows) {
        if (const auto number = numberIn(exif, row.key))
            attributes.setReal(row.name, *number);
    }
    for (const NumberRow& row : choiceRows) {
        if (const auto number = numberIn(exif, row.key); number && *number >= 0 && *number <= 0xFFFF)
            attributes.setInteger(row.name, static_cast<std::int64_t>(*number));
    }
    if (const auto seconds = numberIn(exif, u"ExposureTime"); seconds && *seconds > 0)
        setText(attributes, "kMDItemExposureTimeString", textOfExposure(*seconds));
    setSensitivity(attributes, exif);
    if (const auto flash = numberIn(exif, u"Flash"); flash && *flash >= 0 && *flash <= 0xFFFF) {
        const auto bits = static_cast<unsigned>(*flash);
        attributes.setInteger("kMDItemFlashOnOff", bits & 1U);
        attributes.setBoolean("kMDItemRedEyeOnOff", (bits & 0x40U) != 0);
    }
    setWord(attributes, "kMDItemMeteringMode", meteringModes, numberIn(exif, u"MeteringMode"));
    setWord(attributes, "kMDItemExposureProgram", exposurePrograms, numberIn(exif, u"ExposureProgram"));
    setVersion(attributes, "kMDItemEXIFVersion", exif.objectForKey(u"ExifVersion"));
}

/// An angle with the letter that says on which side of 0 it is.
void setAngle(Attributes& attributes, const NSDictionary& gps, const char16_t* key,
              const char16_t* keyOfLetter, char16_t negative, double most, const char* name) {
    const auto angle = numberIn(gps, key);
    const NSString letter = gps.objectForKey(keyOfLetter).string();
    if (!angle || letter.isNil() || std::abs(*angle) > most)
        return;
    const bool isNegative = !letter.isEmpty() && (letter.characters()[0] & ~0x20) == negative;
    setText(attributes, name, decimal(isNegative ? -*angle : *angle));
}

double kilometresIn(const NSString& unit) {
    constexpr double kilometresInMile = 1.609344;
    constexpr double kilometresInKnot = 1.852;
    if (unit.isNil() || unit.isEmpty())
        return 1;
    return unit.characters()[0] == u'M'   ? kilometresInMile
           : unit.characters()[0] == u'N' ? kilometresInKnot
                                          : 1;
}

struct TextRow {
    const char16_t* key;
    const char* name;
};
constexpr TextRow placeTexts[] = {
    {u"TimeStamp", "kMDItemTimestamp"},
    {u"DateStamp", "kMDItemGPSDateStamp"},
    {u"Status", "kMDItemGPSStatus"},
    {u"MeasureMode", "kMDItemGPSMeasureMode"},
    {u"MapDatum", "kMDItemGPSMapDatum"},
    {u"ProcessingMethod", "kMDItemGPSProcessingMethod"},
    {u"AreaInformation", "kMDItemGPSAreaInformation"},
};

void setPlace(Attributes& attributes, const NSDictionary& gps) {
    setAngle(attributes, gps, u"Latitude", u"LatitudeRef", u'S', 90, "kMDItemLatitude");
    setAngle(attributes, gps, u"Longitude", u"LongitudeRef", u'W', 180, "kMDItemLongitude");
    setAngle(attributes, gps, u"DestLatitude", u"DestLatitudeRef", u'S', 90, "kMDItemGPSDestLatitude");
    setAngle(attributes, gps, u"DestLongitude", u"DestLongitudeRef", u'W', 180, "kMDItemGPSDestLongitude");
    if (const auto altitude = numberIn(gps, u"Altitude")) {
        const bool isBelowSea = numberIn(gps, u"AltitudeRef") == 1.0;
        setText(attributes, "kMDItemAltitude", decimal(isBelowSea ? -*altitude : *altitude));
    }
    if (const auto speed = numberIn(gps, u"Speed"))
        setText(attributes, "kMDItemSpeed",
                decimal(*speed * kilometresIn(gps.objectForKey(u"SpeedRef").string())));
    constexpr TextRow numbers[] = {{u"ImgDirection", "kMDItemImageDirection"},
                                   {u"Track", "kMDItemGPSTrack"},
                                   {u"DestBearing", "kMDItemGPSDestBearing"},
                                   {u"DestDistance", "kMDItemGPSDestDistance"},
                                   {u"DOP", "kMDItemGPSDOP"}};
    for (const TextRow& row : numbers) {
        if (const auto number = numberIn(gps, row.key))
            setText(attributes, row.name, decimal(*number));
    }
    for (const TextRow& row : placeTexts)
        attributes.set(row.name, gps.objectForKey(row.key).string());
    setVersion(attributes, "kMDItemEXIFGPSVersion", gps.objectForKey(u"GPSVersion"));
}

NSString firstOfXMP(const ImageMetadata& metadata, const char* key) {
    const std::vector<NSString> found = metadata.textsOfXMP(key);
    return found.empty() ? NSString() : found.front();
}

/// "48,51,27.72N" or "48,51.462N"; some leave the letter out where it would not be the negative one.
void setAngleOfXMP(Attributes& attributes, const ImageMetadata& metadata, const char* key, char negative,
                   double most, const char* name) {
    const NSString found = firstOfXMP(metadata, key);
    const std::string text = found.isNil() ? std::string() : found.UTF8String();
    double angle = 0;
    double unit = 1;
    const char* place = text.data();
    const char* const end = text.data() + text.size();
    do {
        double part = 0;
        const auto [next, error] = std::from_chars(place, end, part);
        if (error != std::errc() || !(part >= 0))
            return;
        angle += part / unit;
        unit *= 60;
        place = next;
    } while (place != end && *place == ',' && ++place);
    if (angle <= most)
        setText(attributes, name, decimal(place != end && *place == negative ? -angle : angle));
}

/// "37", or "74/2".
std::optional<double> fractionOfXMP(const ImageMetadata& metadata, const char* key) {
    const NSString found = firstOfXMP(metadata, key);
    const std::string text = found.isNil() ? std::string() : found.UTF8String();
    double parts[2]{0, 1};
    if (std::sscanf(text.c_str(), "%lf/%lf", &parts[0], &parts[1]) < 1 || !std::isfinite(parts[0] / parts[1]))
        return std::nullopt;
    return parts[0] / parts[1];
}

void setPlaceOfXMP(Attributes& attributes, const ImageMetadata& metadata) {
    setAngleOfXMP(attributes, metadata, "Xmp.exif.GPSLatitude", 'S', 90, "kMDItemLatitude");
    setAngleOfXMP(attributes, metadata, "Xmp.exif.GPSLongitude", 'W', 180, "kMDItemLongitude");
    const NSString side = firstOfXMP(metadata, "Xmp.exif.GPSAltitudeRef");
    if (const auto altitude = fractionOfXMP(metadata, "Xmp.exif.GPSAltitude"))
        setText(attributes, "kMDItemAltitude",
                decimal(!side.isNil() && side == u"1" ? -*altitude : *altitude));
}

} // namespace

void setCameraFacts(Attributes& attributes, const NSDictionary& properties, const ImageMetadata& metadata) {
    const NSDictionary tiff = properties.objectForKey(kCGImagePropertyTIFFDictionary).dictionary();
    const NSDictionary exif = properties.objectForKey(kCGImagePropertyExifDictionary).dictionary();
    const NSDictionary more = properties.objectForKey(kCGImagePropertyExifAuxDictionary).dictionary();
    const auto setTold = [&](const char* name, const Value& told, const char* keyOfXMP) {
        attributes.set(name, told.isString() ? told.string() : firstOfXMP(metadata, keyOfXMP));
    };
    setTold("kMDItemAcquisitionMake", tiff.objectForKey(u"Make"), "Xmp.tiff.Make");
    setTold("kMDItemAcquisitionModel", tiff.objectForKey(u"Model"), "Xmp.tiff.Model");
    const auto setEither = [&](const char* name, const Value& first, const Value& second) {
        attributes.set(name, (first.isString() ? first : second).string());
    };
    setEither("kMDItemLensModel", exif.objectForKey(u"LensModel"), more.objectForKey(u"LensModel"));
    setEither("kMDItemCameraOwner", exif.objectForKey(u"CameraOwnerName"), more.objectForKey(u"OwnerName"));
    setExposure(attributes, exif);
    const NSDictionary gps = properties.objectForKey(kCGImagePropertyGPSDictionary).dictionary();
    if (gps.objectForKey(u"Latitude").isNil())
        setPlaceOfXMP(attributes, metadata);
    setPlace(attributes, gps);
}

} // namespace kelvo::importers
