#include "platform/imageio/engine/ImageKind.h"

#include "platform/imageio/engine/ByteReader.h"

#include <algorithm>
#include <string>

namespace kelvo {
namespace {

using namespace std::string_view_literals;

constexpr auto vips = ImageReader::vips;
constexpr auto frames = ImageReader::frames;
constexpr auto preview = ImageReader::preview;

constexpr const char16_t* tiff = u"public.tiff";
constexpr const char16_t* avif = u"public.avif";
constexpr const char16_t* heic = u"public.heic";
constexpr const char16_t* heif = u"public.heif";
constexpr const char16_t* jpeg2000 = u"public.jpeg-2000";
constexpr const char16_t* jpegXL = u"public.jpeg-xl";
constexpr const char16_t* radiance = u"public.radiance";
constexpr const char16_t* targa = u"com.truevision.tga-image";
constexpr const char16_t* canon = u"com.canon.cr2-raw-image";
constexpr const char16_t* fuji = u"com.fuji.raw-image";
constexpr const char16_t* nikon = u"com.nikon.raw-image";
constexpr const char16_t* olympus = u"com.olympus.raw-image";
constexpr const char16_t* panasonic = u"com.panasonic.rw2-raw-image";
constexpr const char16_t* pentax = u"com.pentax.raw-image";
constexpr const char16_t* otherCamera = u"public.camera-raw-image";

constexpr ImageKind cameraOf(const char16_t* type) {
    return {type, preview, "", nullptr, false, true};
}

constexpr ImageKind kinds[] = {
    {u"public.jpeg", vips, "VipsForeignLoadJpeg", nullptr, false, true, true},
    {u"public.png", vips, "VipsForeignLoadPng", nullptr, false, true, true},
    {u"com.compuserve.gif", vips, "VipsForeignLoadNsgif", nullptr, true},
    {tiff, vips, "VipsForeignLoadTiff", nullptr, true, true, true},
    {u"org.webmproject.webp", vips, "VipsForeignLoadWebp", nullptr, true, true},
    {heic, vips, "VipsForeignLoadHeif", "vips-heif", true, true},
    {heif, vips, "VipsForeignLoadHeif", "vips-heif", true, true},
    {avif, vips, "VipsForeignLoadHeif", "vips-heif", true, true},
    {u"public.svg-image", vips, "VipsForeignLoadSvg"},
    {jpeg2000, vips, "VipsForeignLoadJp2k", nullptr, false, true},
    {jpegXL, vips, "VipsForeignLoadJxl", "vips-jxl", false, true},
    {u"public.pbm", vips, "VipsForeignLoadPpm", nullptr, false, false, true},
    {radiance, vips, "VipsForeignLoadRad", nullptr, false, false, true},
    {u"com.microsoft.bmp", frames, "bmp"},
    {u"com.adobe.photoshop-image", frames, "psd", nullptr, false, true},
    {targa, frames, "targa"},
    {u"com.sgi.sgi-image", frames, "sgi"},
    {u"com.zsoft.pcx-image", frames, "pcx"},
    {u"com.ilm.openexr-image", frames, "exr"},
    {u"com.apple.pict", frames, "qdraw"},
    {u"com.microsoft.ico", ImageReader::icons, "bmp", nullptr, true},
    {u"com.microsoft.cur", ImageReader::icons, "bmp", nullptr, true},
    {u"com.apple.icns", ImageReader::iconFamily, "", nullptr, true},
    cameraOf(u"com.adobe.raw-image"),
    cameraOf(canon),
    cameraOf(u"com.canon.cr3-raw-image"),
    cameraOf(u"com.canon.crw-raw-image"),
    cameraOf(fuji),
    cameraOf(u"com.konicaminolta.raw-image"),
    cameraOf(nikon),
    cameraOf(olympus),
    cameraOf(panasonic),
    cameraOf(pentax),
    cameraOf(u"com.sony.arw-raw-image"),
    cameraOf(u"com.samsung.raw-image"),
    cameraOf(otherCamera),
};

/// Of a type that is in the table.
const ImageKind* kindOf(std::u16string_view type) {
    return std::find_if(std::begin(kinds), std::end(kinds),
                        [type](const ImageKind& kind) { return kind.type == type; });
}

struct Mark {
    std::string_view bytes;
    const char16_t* type;
};
constexpr Mark beginnings[] = {
    {"\xFF\xD8\xFF"sv, u"public.jpeg"},
    {"\x89PNG\r\n\x1A\n"sv, u"public.png"},
    {"GIF87a"sv, u"com.compuserve.gif"},
    {"GIF89a"sv, u"com.compuserve.gif"},
    {"II*\0\x10\0\0\0CR"sv, canon},
    {"II*\0"sv, tiff},
    {"MM\0*"sv, tiff},
    {"II+\0\x08\0\0\0"sv, tiff},
    {"MM\0+\0\x08\0\0"sv, tiff},
    {"IIRO"sv, olympus},
    {"IIRS"sv, olympus},
    {"MMOR"sv, olympus},
    {"IIU\0"sv, panasonic},
    {"FUJIFILMCCD-RAW"sv, fuji},
    {"\0MRM"sv, u"com.konicaminolta.raw-image"},
    {"\xFF\x4F\xFF\x51"sv, jpeg2000},
    {"\0\0\0\x0CjP  \r\n\x87\n"sv, jpeg2000},
    {"\xFF\x0A"sv, jpegXL},
    {"\0\0\0\x0CJXL \r\n\x87\n"sv, jpegXL},
    {"#?RADIANCE"sv, radiance},
    {"#?RGBE"sv, radiance},
    // No library here reads its second version.
    {"8BPS\0\x01"sv, u"com.adobe.photoshop-image"},
    {"\x76\x2F\x31\x01"sv, u"com.ilm.openexr-image"},
    {"icns"sv, u"com.apple.icns"},
};

/// Of files of the ISO base media format, by the brand and those that it is said to be compatible with.
const ImageKind* kindOfBrands(std::string_view bytes) {
    const ByteReader reader(bytes, ByteOrder::big);
    const auto length = reader.number32(0);
    if (!length || bytes.substr(4, 4) != "ftyp")
        return nullptr;
    const std::string_view all =
        bytes.substr(8, std::min<std::size_t>(*length, 256) - std::min<std::size_t>(*length, 8));
    constexpr Mark brands[] = {{"crx ", u"com.canon.cr3-raw-image"},
                               {"avif", avif},
                               {"avis", avif},
                               {"heic", heic},
                               {"heix", heic},
                               {"heim", heic},
                               {"heis", heic},
                               {"hevc", heic},
                               {"hevx", heic},
                               {"mif1", heif},
                               {"msf1", heif}};
    for (const Mark& brand : brands) {
        for (std::size_t place = 0; place + 4 <= all.size(); place += 4) {
            // The second number is the version of the first brand.
            if (place != 4 && all.substr(place, 4) == brand.bytes)
                return kindOf(brand.type);
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
    return bytes.starts_with("\0\0\1\0"sv)   ? kindOf(u"com.microsoft.ico")
           : bytes.starts_with("\0\0\2\0"sv) ? kindOf(u"com.microsoft.cur")
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
    for (const Mark& beginning : beginnings) {
        if (bytes.starts_with(beginning.bytes))
            return kindOf(beginning.type);
    }
    if (bytes.size() >= 14 && bytes.substr(6, 8) == "HEAPCCDR")
        return kindOf(u"com.canon.crw-raw-image");
    if (bytes.size() >= 12 && bytes.starts_with("RIFF") && bytes.substr(8, 4) == "WEBP")
        return kindOf(u"org.webmproject.webp");
    if (bytes.size() >= 16) {
        if (const ImageKind* const kind = kindOfBrands(bytes))
            return kind;
    }
    if (isBitmapFile(bytes))
        return kindOf(u"com.microsoft.bmp");
    if (isPortableMap(bytes))
        return kindOf(u"public.pbm");
    if (isSilicon(bytes))
        return kindOf(u"com.sgi.sgi-image");
    if (isTarga(bytes, hint == targa))
        return kindOf(targa);
    if (const ImageKind* const kind = kindOfIcons(bytes))
        return kind;
    if (isPaintbrush(bytes))
        return kindOf(u"com.zsoft.pcx-image");
    if (isPicture(bytes))
        return kindOf(u"com.apple.pict");
    return isVectorGraphics(bytes) ? kindOf(u"public.svg-image") : nullptr;
}

const ImageKind* kindOfCamera(std::string_view maker, bool isDigitalNegative) {
    if (isDigitalNegative)
        return kindOf(u"com.adobe.raw-image");
    constexpr Mark makers[] = {{"Canon", canon},
                               {"CANON", canon},
                               {"NIKON", nikon},
                               {"Nikon", nikon},
                               {"OLYMPUS", olympus},
                               {"PENTAX", pentax},
                               {"RICOH", pentax},
                               {"SONY", u"com.sony.arw-raw-image"},
                               {"SAMSUNG", u"com.samsung.raw-image"},
                               {"Panasonic", panasonic},
                               {"FUJIFILM", fuji}};
    for (const Mark& row : makers) {
        if (maker.starts_with(row.bytes))
            return kindOf(row.type);
    }
    return kindOf(otherCamera);
}

} // namespace kelvo
