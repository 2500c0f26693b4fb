#include "platform/imageio/engine/MetadataValues.h"

#include <algorithm>

namespace kelvo {
namespace {

using enum ValueForm;

// Tags by number, because the library's names for them are not the platform's, and change from version to version.

constexpr TagRow tiff[] = {
    {0x0103, u"Compression"},
    {0x0106, u"PhotometricInterpretation"},
    {0x010D, u"DocumentName"},
    {0x010E, u"ImageDescription"},
    {0x010F, u"Make"},
    {0x0110, u"Model"},
    {0x0112, u"Orientation"},
    {0x011A, u"XResolution"},
    {0x011B, u"YResolution"},
    {0x0128, u"ResolutionUnit"},
    {0x012D, u"TransferFunction", array},
    {0x0131, u"Software"},
    {0x0132, u"DateTime"},
    {0x013B, u"Artist"},
    {0x013C, u"HostComputer"},
    {0x013E, u"WhitePoint", array},
    {0x013F, u"PrimaryChromaticities", array},
    {0x0142, u"TileWidth"},
    {0x0143, u"TileLength"},
    {0x8298, u"Copyright"},
};

constexpr TagRow exif[] = {
    {0x829A, u"ExposureTime"},
    {0x829D, u"FNumber"},
    {0x8822, u"ExposureProgram"},
    {0x8824, u"SpectralSensitivity"},
    {0x8827, u"ISOSpeedRatings", array},
    {0x8830, u"SensitivityType"},
    {0x8831, u"StandardOutputSensitivity"},
    {0x8832, u"RecommendedExposureIndex"},
    {0x8833, u"ISOSpeed"},
    {0x8834, u"ISOSpeedLatitudeyyy"},
    {0x8835, u"ISOSpeedLatitudezzz"},
    {0x9000, u"ExifVersion", version},
    {0x9003, u"DateTimeOriginal"},
    {0x9004, u"DateTimeDigitized"},
    {0x9010, u"OffsetTime"},
    {0x9011, u"OffsetTimeOriginal"},
    {0x9012, u"OffsetTimeDigitized"},
    {0x9101, u"ComponentsConfiguration", array},
    {0x9102, u"CompressedBitsPerPixel"},
    {0x9201, u"ShutterSpeedValue"},
    {0x9202, u"ApertureValue"},
    {0x9203, u"BrightnessValue"},
    {0x9204, u"ExposureBiasValue"},
    {0x9205, u"MaxApertureValue"},
    {0x9206, u"SubjectDistance"},
    {0x9207, u"MeteringMode"},
    {0x9208, u"LightSource"},
    {0x9209, u"Flash"},
    {0x920A, u"FocalLength"},
    {0x9214, u"SubjectArea", array},
    {0x9286, u"UserComment", text},
    {0x9290, u"SubsecTime"},
    {0x9291, u"SubsecTimeOriginal"},
    {0x9292, u"SubsecTimeDigitized"},
    {0xA000, u"FlashPixVersion", version},
    {0xA001, u"ColorSpace"},
    {0xA002, u"PixelXDimension"},
    {0xA003, u"PixelYDimension"},
    {0xA004, u"RelatedSoundFile"},
    {0xA20B, u"FlashEnergy"},
    {0xA20E, u"FocalPlaneXResolution"},
    {0xA20F, u"FocalPlaneYResolution"},
    {0xA210, u"FocalPlaneResolutionUnit"},
    {0xA214, u"SubjectLocation", array},
    {0xA215, u"ExposureIndex"},
    {0xA217, u"SensingMethod"},
    {0xA300, u"FileSource", firstNumber},
    {0xA301, u"SceneType", firstNumber},
    {0xA401, u"CustomRendered"},
    {0xA402, u"ExposureMode"},
    {0xA403, u"WhiteBalance"},
    {0xA404, u"DigitalZoomRatio"},
    {0xA405, u"FocalLenIn35mmFilm"},
    {0xA406, u"SceneCaptureType"},
    {0xA407, u"GainControl"},
    {0xA408, u"Contrast"},
    {0xA409, u"Saturation"},
    {0xA40A, u"Sharpness"},
    {0xA40C, u"SubjectDistRange"},
    {0xA420, u"ImageUniqueID"},
    {0xA430, u"CameraOwnerName"},
    {0xA431, u"BodySerialNumber"},
    {0xA432, u"LensSpecification", array},
    {0xA433, u"LensMake"},
    {0xA434, u"LensModel"},
    {0xA435, u"LensSerialNumber"},
    {0xA460, u"CompositeImage"},
    {0xA461, u"SourceImageNumberOfCompositeImage", array},
    {0xA500, u"Gamma"},
};

constexpr TagRow gps[] = {
    {0x0000, u"GPSVersion", array},
    {0x0001, u"LatitudeRef"},
    {0x0002, u"Latitude", degrees},
    {0x0003, u"LongitudeRef"},
    {0x0004, u"Longitude", degrees},
    {0x0005, u"AltitudeRef", firstNumber},
    {0x0006, u"Altitude"},
    {0x0007, u"TimeStamp", time},
    {0x0008, u"Satellites"},
    {0x0009, u"Status"},
    {0x000A, u"MeasureMode"},
    {0x000B, u"DOP"},
    {0x000C, u"SpeedRef"},
    {0x000D, u"Speed"},
    {0x000E, u"TrackRef"},
    {0x000F, u"Track"},
    {0x0010, u"ImgDirectionRef"},
    {0x0011, u"ImgDirection"},
    {0x0012, u"MapDatum"},
    {0x0013, u"DestLatitudeRef"},
    {0x0014, u"DestLatitude", degrees},
    {0x0015, u"DestLongitudeRef"},
    {0x0016, u"DestLongitude", degrees},
    {0x0017, u"DestBearingRef"},
    {0x0018, u"DestBearing"},
    {0x0019, u"DestDistanceRef"},
    {0x001A, u"DestDistance"},
    {0x001B, u"ProcessingMethod", text},
    {0x001C, u"AreaInformation", text},
    {0x001D, u"DateStamp"},
    {0x001E, u"Differential"},
    {0x001F, u"HPositioningError"},
};

constexpr TagRow iptc[] = {
    {3, u"ObjectTypeReference"},
    {4, u"ObjectAttributeReference", array},
    {5, u"ObjectName"},
    {7, u"EditStatus"},
    {8, u"EditorialUpdate"},
    {10, u"Urgency"},
    {12, u"SubjectReference", array},
    {15, u"Category"},
    {20, u"SupplementalCategory", array},
    {22, u"FixtureIdentifier"},
    {25, u"Keywords", array},
    {26, u"ContentLocationCode", array},
    {27, u"ContentLocationName", array},
    {30, u"ReleaseDate"},
    {35, u"ReleaseTime"},
    {37, u"ExpirationDate"},
    {38, u"ExpirationTime"},
    {40, u"SpecialInstructions"},
    {42, u"ActionAdvised"},
    {45, u"ReferenceService", array},
    {47, u"ReferenceDate", array},
    {50, u"ReferenceNumber", array},
    {55, u"DateCreated"},
    {60, u"TimeCreated"},
    {62, u"DigitalCreationDate"},
    {63, u"DigitalCreationTime"},
    {65, u"OriginatingProgram"},
    {70, u"ProgramVersion"},
    {75, u"ObjectCycle"},
    {80, u"Byline", array},
    {85, u"BylineTitle", array},
    {90, u"City"},
    {92, u"SubLocation"},
    {95, u"Province/State"},
    {100, u"Country/PrimaryLocationCode"},
    {101, u"Country/PrimaryLocationName"},
    {103, u"OriginalTransmissionReference"},
    {105, u"Headline"},
    {110, u"Credit"},
    {115, u"Source"},
    {116, u"CopyrightNotice"},
    {118, u"Contact", array},
    {120, u"Caption/Abstract"},
    {122, u"Writer/Editor", array},
    {130, u"ImageType"},
    {131, u"ImageOrientation"},
    {135, u"LanguageIdentifier"},
};

constexpr bool isSorted(std::span<const TagRow> rows) {
    return std::is_sorted(rows.begin(), rows.end(),
                          [](const TagRow& left, const TagRow& right) { return left.tag < right.tag; });
}
static_assert(isSorted(tiff) && isSorted(exif) && isSorted(gps) && isSorted(iptc));

} // namespace

std::span<const TagRow> tagsOfTIFF() {
    return tiff;
}

std::span<const TagRow> tagsOfExif() {
    return exif;
}

std::span<const TagRow> tagsOfGPS() {
    return gps;
}

std::span<const TagRow> tagsOfIPTC() {
    return iptc;
}

const TagRow* rowOfTag(std::span<const TagRow> rows, std::uint16_t tag) {
    const auto found =
        std::lower_bound(rows.begin(), rows.end(), tag,
                         [](const TagRow& row, std::uint16_t wanted) { return row.tag < wanted; });
    return found != rows.end() && found->tag == tag ? &*found : nullptr;
}

} // namespace kelvo
