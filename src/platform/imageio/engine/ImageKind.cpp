#include "platform/imageio/engine/ImageKind.h"

#include "platform/imageio/engine/ByteReader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr auto vips = ImageReader::vips;
constexpr auto frames = ImageReader::frames;
constexpr auto preview = ImageReader::preview;

constexpr const char16_t* portableBitmap = u"public.pbm";
constexpr const char16_t* targa = u"com.truevision.tga-image";

constexpr ImageKind jpeg{u"public.jpeg", vips, "VipsForeignLoadJpeg", nullptr, false, true, true};
constexpr ImageKind png{u"public.png", vips, "VipsForeignLoadPng", nullptr, false, true, true};
constexpr ImageKind gif{u"com.compuserve.gif", vips, "VipsForeignLoadNsgif", nullptr, true};
constexpr ImageKind tiff{u"public.tiff", vips, "VipsForeignLoadTiff", nullptr, true, true, true};
constexpr ImageKind webp{u"org.webmproject.webp", vips, "VipsForeignLoadWebp", nullptr, true, true};
constexpr ImageKind heic{u"public.heic", vips, "VipsForeignLoadHeif", "vips-heif", true, true};
constexpr ImageKind heif{u"public.heif", vips, "VipsForeignLoadHeif", "vips-heif", true, true};
constexpr ImageKind avif{u"public.avif", vips, "VipsForeignLoadHeif", "vips-heif", true, true};
constexpr ImageKind svg{u"public.svg-image", vips, "VipsForeignLoadSvg"};
constexpr ImageKind jpeg2000{u"public.jpeg-2000", vips, "VipsForeignLoadJp2k", nullptr, false, true};
constexpr ImageKind jpegXL{u"public.jpeg-xl", vips, "VipsForeignLoadJxl", "vips-jxl", false, true};
constexpr ImageKind ppm{portableBitmap, vips, "VipsForeignLoadPpm", nullptr, false, false, true};
constexpr ImageKind radiance{u"public.radiance", vips, "VipsForeignLoadRad", nullptr, false, false, true};
constexpr ImageKind bmp{u"com.microsoft.bmp", frames, "bmp"};
constexpr ImageKind psd{u"com.adobe.photoshop-image", frames, "psd", nullptr, false, true};
constexpr ImageKind tga{targa, frames, "targa"};
constexpr ImageKind sgi{u"com.sgi.sgi-image", frames, "sgi"};
constexpr ImageKind pcx{u"com.zsoft.pcx-image", frames, "pcx"};
constexpr ImageKind exr{u"com.ilm.openexr-image", frames, "exr"};
constexpr ImageKind pict{u"com.apple.pict", frames, "qdraw"};
constexpr ImageKind ico{u"com.microsoft.ico", ImageReader::icons, "bmp", nullptr, true};
constexpr ImageKind cur{u"com.microsoft.cur", ImageReader::icons, "bmp", nullptr, true};
constexpr ImageKind icns{u"com.apple.icns", ImageReader::iconFamily, "", nullptr, true};
constexpr ImageKind cameraOf(const char16_t* type) {
    return {type, preview, "", nullptr, false, true};
}

enum At : std::uint8_t {
    jpegAt,
    pngAt,
    gifAt,
    tiffAt,
    webpAt,
    heicAt,
    heifAt,
    avifAt,
    svgAt,
    jpeg2000At,
    jpegXLAt,
    ppmAt,
    radianceAt,
    bmpAt,
    psdAt,
    tgaAt,
    sgiAt,
    pcxAt,
    exrAt,
    pictAt,
    icoAt,
    curAt,
    icnsAt,
    adobeAt,
    canon2At,
    canon3At,
    canonAt,
    fujiAt,
    minoltaAt,
    nikonAt,
    olympusAt,
    panasonicAt,
    pentaxAt,
    sonyAt,
    samsungAt,
    otherCameraAt
};

constexpr ImageKind kinds[] = {jpeg,
                               png,
                               gif,
                               tiff,
                               webp,
                               heic,
                               heif,
                               avif,
                               svg,
                               jpeg2000,
                               jpegXL,
                               ppm,
                               radiance,
                               bmp,
                               psd,
                               tga,
                               sgi,
                               pcx,
                               exr,
                               pict,
                               ico,
                               cur,
                               icns,
                               cameraOf(u"com.adobe.raw-image"),
                               cameraOf(u"com.canon.cr2-raw-image"),
                               cameraOf(u"com.canon.cr3-raw-image"),
                               cameraOf(u"com.canon.crw-raw-image"),
                               cameraOf(u"com.fuji.raw-image"),
                               cameraOf(u"com.konicaminolta.raw-image"),
                               cameraOf(u"com.nikon.raw-image"),
                               cameraOf(u"com.olympus.raw-image"),
                               cameraOf(u"com.panasonic.rw2-raw-image"),
                               cameraOf(u"com.pentax.raw-image"),
                               cameraOf(u"com.sony.arw-raw-image"),
                               cameraOf(u"com.samsung.raw-image"),
                               cameraOf(u"public.camera-raw-image")};
static_assert(std::size(kinds) == otherCameraAt + 1);

struct Beginning {
    std::string_view bytes;
    At kind;
};
constexpr Beginning beginnings[] = {
    {"\xFF\xD8\xFF"sv, jpegAt},
    {"\x89PNG\r\n\x1A\n"sv, pngAt},
    {"GIF87a"sv, gifAt},
    {"GIF89a"sv, gifAt},
    {"II*\0\x10\0\0\0CR"sv, canon2At},
    {"II*\0"sv, tiffAt},
    {"MM\0*"sv, tiffAt},
    {"II+\0\x08\0\0\0"sv, tiffAt},
    {"MM\0+\0\x08\0\0"sv, tiffAt},
    {"IIRO"sv, olympusAt},
    {"IIRS"sv, olympusAt},
    {"MMOR"sv, olympusAt},
    {"IIU\0"sv, panasonicAt},
    {"FUJIFILMCCD-RAW"sv, fujiAt},
    {"\0MRM"sv, minoltaAt},
    {"\xFF\x4F\xFF\x51"sv, jpeg2000At},
    {"\0\0\0\x0CjP  \r\n\x87\n"sv, jpeg2000At},
    {"\xFF\x0A"sv, jpegXLAt},
    {"\0\0\0\x0CJXL \r\n\x87\n"sv, jpegXLAt},
    {"#?RADIANCE"sv, radianceAt},
    {"#?RGBE"sv, radianceAt},
    // The second form of the last is not read by any library here.
    {"8BPS\0\x01"sv, psdAt},
    {"\x76\x2F\x31\x01"sv, exrAt},
    {"icns"sv, icnsAt},
};

/// Of files of the ISO base media format, by the brand and those that it is said to be compatible with.
const ImageKind* kindOfBrands(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::big);
    const auto length = reader.number32(0);
    if (!length || bytes.substr(4, 4) != "ftyp")
        return nullptr;
    const std::string_view all =
        bytes.substr(8, std::min<std::size_t>(*length, 256) - std::min<std::size_t>(*length, 8));
    struct Brand {
        std::string_view name;
        At kind;
    };
    constexpr Brand brands[] = {{"crx ", canon3At}, {"avif", avifAt}, {"avis", avifAt}, {"heic", heicAt},
                                {"heix", heicAt},   {"heim", heicAt}, {"heis", heicAt}, {"hevc", heicAt},
                                {"hevx", heicAt},   {"mif1", heifAt}, {"msf1", heifAt}};
    for (const Brand& brand : brands) {
        for (std::size_t place = 0; place + 4 <= all.size(); place += 4) {
            // The second number is the version of the first brand.
            if (place != 4 && all.substr(place, 4) == brand.name)
                return &kinds[brand.kind];
        }
    }
    return nullptr;
}

bool isBitmapFile(std::string_view bytes) {
    const auto header = ByteReader(bytes, ByteOrder::little).number32(14);
    return bytes.starts_with("BM") && header && *header >= 12 && *header <= 256;
}

bool isPortableMap(std::string_view bytes) {
    return bytes.size() > 8 && bytes[0] == 'P' && "1234567fF"sv.find(bytes[1]) != std::string_view::npos &&
           " \t\r\n#"sv.find(bytes[2]) != std::string_view::npos;
}

bool isSilicon(std::string_view bytes) {
    return bytes.size() > 512 && bytes.starts_with("\x01\xDA"sv) && bytes[2] <= 1 && bytes[2] >= 0 &&
           (bytes[3] == 1 || bytes[3] == 2);
}

bool isPaintbrush(std::string_view bytes) {
    constexpr std::string_view versions = "\0\2\3\4\5"sv;
    constexpr std::string_view depths = "\1\2\4\10"sv;
    return bytes.size() > 128 && bytes[0] == '\n' && versions.find(bytes[1]) != std::string_view::npos &&
           (bytes[2] == 0 || bytes[2] == 1) && depths.find(bytes[3]) != std::string_view::npos &&
           bytes[65] >= 1 && bytes[65] <= 4;
}

const ImageKind* kindOfIcons(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::little);
    const auto count = reader.number16(4);
    if (!count || *count == 0 || bytes.size() < 22 || bytes[9] != 0)
        return nullptr;
    return bytes.starts_with("\0\0\1\0"sv)   ? &kinds[icoAt]
           : bytes.starts_with("\0\0\2\0"sv) ? &kinds[curAt]
                                             : nullptr;
}

/// The first operation says the version; in files 512 bytes stand before it all.
bool isPicture(std::string_view bytes) {
    for (const std::size_t start : {std::size_t{512}, std::size_t{0}}) {
        if (bytes.size() < start + 16)
            continue;
        const std::string_view operation = bytes.substr(start + 10);
        if (operation.starts_with("\0\x11\2\xFF\x0C\0"sv) || operation.starts_with("\x11\1"sv))
            return true;
    }
    return false;
}

/// The element, after whatever stands before it.
bool isVectorGraphics(std::string_view bytes) {
    constexpr std::size_t looked = 4096;
    if (bytes.starts_with("\x1F\x8B"sv))
        return true;
    std::string beginning(bytes.substr(0, looked));
    // Also in UTF-16.
    if (bytes.starts_with("\xFF\xFE"sv) || bytes.starts_with("\xFE\xFF"sv))
        std::erase(beginning, '\0');
    const std::size_t first = beginning.find_first_not_of("\xEF\xBB\xBF\xFF\xFE \t\r\n");
    if (first == std::string::npos || beginning[first] != '<')
        return false;
    for (std::size_t place = beginning.find("svg"); place != std::string::npos;
         place = beginning.find("svg", place + 1)) {
        const char before = place == 0 ? '\0' : beginning[place - 1];
        const char after = place + 3 < beginning.size() ? beginning[place + 3] : '\0';
        if ((before == '<' || before == ':') && " \t\r\n>:"sv.find(after) != std::string_view::npos)
            return true;
    }
    return false;
}

/// There is no beginning by which it is known: a sign at the end, which old files do not have, and numbers that fit
/// together.
bool isTarga(std::string_view bytes, bool isHinted) {
    if (bytes.size() < 18 || (!isHinted && !bytes.ends_with("TRUEVISION-XFILE.\0"sv)))
        return false;
    const ByteReader reader(bytes, ByteOrder::little);
    constexpr std::string_view types = "\1\2\3\11\12\13"sv;
    constexpr std::string_view depths = "\10\17\20\30\40"sv;
    return (bytes[1] == 0 || bytes[1] == 1) && types.find(bytes[2]) != std::string_view::npos &&
           depths.find(bytes[16]) != std::string_view::npos && *reader.number16(12) > 0 &&
           *reader.number16(14) > 0;
}

} // namespace

std::span<const ImageKind> imageKinds() {
    return kinds;
}

const ImageKind* kindOfImage(std::string_view bytes, std::u16string_view hint) {
    for (const Beginning& beginning : beginnings) {
        if (bytes.starts_with(beginning.bytes))
            return &kinds[beginning.kind];
    }
    if (bytes.size() >= 14 && bytes.substr(6, 8) == "HEAPCCDR")
        return &kinds[canonAt];
    if (bytes.starts_with("RIFF") && bytes.substr(8, 4) == "WEBP")
        return &kinds[webpAt];
    if (bytes.size() >= 16) {
        if (const ImageKind* const kind = kindOfBrands(bytes))
            return kind;
    }
    if (isBitmapFile(bytes))
        return &kinds[bmpAt];
    if (isPortableMap(bytes))
        return &kinds[ppmAt];
    if (isSilicon(bytes))
        return &kinds[sgiAt];
    if (isTarga(bytes, hint == targa))
        return &kinds[tgaAt];
    if (const ImageKind* const kind = kindOfIcons(bytes))
        return kind;
    if (isPaintbrush(bytes))
        return &kinds[pcxAt];
    if (isPicture(bytes))
        return &kinds[pictAt];
    return isVectorGraphics(bytes) ? &kinds[svgAt] : nullptr;
}

const ImageKind* kindOfCamera(std::string_view maker, bool isDigitalNegative) {
    if (isDigitalNegative)
        return &kinds[adobeAt];
    struct Maker {
        std::string_view name;
        At kind;
    };
    constexpr Maker makers[] = {{"Canon", canon2At},        {"CANON", canon2At},    {"NIKON", nikonAt},
                                {"Nikon", nikonAt},         {"OLYMPUS", olympusAt}, {"PENTAX", pentaxAt},
                                {"RICOH", pentaxAt},        {"SONY", sonyAt},       {"SAMSUNG", samsungAt},
                                {"Panasonic", panasonicAt}, {"FUJIFILM", fujiAt}};
    for (const Maker& row : makers) {
        if (maker.starts_with(row.name))
            return &kinds[row.kind];
    }
    return &kinds[otherCameraAt];
}

} // namespace kelvo
