#include "platform/imageio/engine/VipsImage.h"

#include "platform/engine/EngineExceptions.h"
#include "platform/foundation/NSException.h"
#include "platform/imageio/engine/ByteReader.h"
#include "platform/imageio/engine/CodedColors.h"
#include "platform/imageio/engine/JPEGPasses.h"
#include "platform/imageio/engine/RowWatcher.h"
#include "platform/imageio/engine/VipsHandles.h"

#include <gmodule.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string>

#include <dlfcn.h>
#include <unistd.h>

namespace kelvo {
namespace {

/// Larger files are read rather than mapped, so that they do not become resident.
constexpr std::size_t mostBytesInPlace = std::size_t{8} << 20;
/// Of images that come in rows a thumbnail needs little memory, but time for each pixel.
constexpr std::uint64_t mostPixelsInRows = 1'000'000'000;
/// What a progressive JPEG may hold back until its end.
constexpr std::uint64_t mostCoefficientBytes = std::uint64_t{256} << 20;

using vips::fail;
using vips::Image;
using vips::made;
using vips::Source;

Source sourceOf(const NSData& data) {
    ::VipsSource* source = nullptr;
    if (data.descriptor() >= 0 && data.length() > mostBytesInPlace) {
        // The place in the file is the descriptor's, and the last reader's.
        ::lseek(data.descriptor(), 0, SEEK_SET);
        source = vips_source_new_from_descriptor(data.descriptor());
    } else {
        source = vips_source_new_from_memory(data.bytes().data(), data.length());
    }
    if (!source)
        fail();
    return Source(source);
}

/// What the library says where it goes on in spite of damage. What it says of profiles is no damage to the image.
std::atomic<bool> hasWarned = false;

void takeWarning(const gchar*, GLogLevelFlags, const gchar* message, gpointer) {
    if (std::string_view(message).find("profile") == std::string_view::npos)
        hasWarned = true;
}

/// What GObject says where the library asks it for a size that it does not take; the image is 1 pixel wide then.
std::atomic<bool> hasRefusedSize = false;

void takeRefusal(const gchar*, GLogLevelFlags, const gchar*, gpointer) {
    hasRefusedSize = true;
}

/// Loaders are named by the class that those for files, memory and streams have in common; this is the last of these.
std::string streamLoader(const ImageKind& kind) {
    return std::string(kind.loader) + "Source";
}

/// Modules need much that few files do: they are loaded with the first of these.
void loadModule(const char* name) {
    Dl_info library{};
    if (::dladdr(reinterpret_cast<const void*>(&vips_init), &library) == 0)
        return;
    const std::string path = library.dli_fname;
    const std::string file = path.substr(0, path.rfind('/') + 1) + "vips-modules-" +
                             std::to_string(VIPS_MAJOR_VERSION) + '.' + std::to_string(VIPS_MINOR_VERSION) +
                             '/' + name + ".so";
    if (GModule* const module = g_module_open(file.c_str(), G_MODULE_BIND_LAZY))
        g_module_make_resident(module);
}

void requireLoader(const ImageKind& kind) {
    if (!hasVipsLoader(kind))
        throw ImageFailure(Outcome::missingEngine, u"the library for images of this kind is not installed");
}

/// A PNG whose rows come in several passes, which is held whole until the last.
bool isInterlaced(std::string_view bytes) {
    constexpr std::size_t placeOfMethod = 28;
    return ByteReader(bytes, ByteOrder::big).number8(placeOfMethod).value_or(0) != 0;
}

std::uint64_t mostPixelsOf(const ImageKind& kind, std::string_view bytes, const PixelDemand& demand) {
    if (demand.mostPixels == 0 || !kind.isReadInRows ||
        (kind.loader == std::string_view("VipsForeignLoadPng") && isInterlaced(bytes)))
        return imageengine::mostPixelsOfImage;
    return mostPixelsInRows;
}

bool isLoadedBy(const ImageKind& kind, std::string_view loader) {
    return kind.loader == loader;
}

/// What the loaders are told of which image is meant; those of single images know no such words.
std::string optionsOf(const ImageKind& kind, std::int64_t index) {
    std::string options = kind.mayHaveMany && index > 0 ? "page=" + std::to_string(index) : "";
    // Strips that are missing would come as if they were empty.
    if (isLoadedBy(kind, "VipsForeignLoadTiff"))
        options += std::string(options.empty() ? "" : ",") + "fail_on=error";
    return options.empty() ? options : '[' + options + ']';
}

bool isDrawing(const ImageKind& kind) {
    return isLoadedBy(kind, "VipsForeignLoadSvg");
}

/// A drawing in this size. The library knows one by what stands in its first 1,000 bytes, and is not asked.
Image drawn(const NSData& data, double scale) {
    const Source source = sourceOf(data);
    return made([&](auto** to) { return vips_svgload_source(source.get(), to, "scale", scale, nullptr); });
}

/// As it is when nothing of it is decoded yet.
Image loaded(const NSData& data, const std::string& options) {
    const Source source = sourceOf(data);
    hasRefusedSize = false;
    Image image(
        vips_image_new_from_source(source.get(), options.c_str(), "access", VIPS_ACCESS_SEQUENTIAL, nullptr));
    if (!image || hasRefusedSize)
        fail();
    return image;
}

Image headOf(const NSData& data, const ImageKind& kind, std::int64_t index) {
    return isDrawing(kind) ? drawn(data, 1) : loaded(data, optionsOf(kind, index));
}

bool isPyramid(const ImageKind& kind) {
    return isLoadedBy(kind, "VipsForeignLoadJp2k");
}

/// The smallest of the sizes in which the file holds the image, each half as large as the one before, that is large
/// enough. The library's own choice is wrong by several where it is asked for a thumbnail.
Image levelOf(const NSData& data, ::VipsImage* whole, int side) {
    int level = 0;
    for (int longer = std::max(whole->Xsize, whole->Ysize) / 2;
         longer >= side && level + 1 < vips_image_get_n_pages(whole); longer /= 2)
        ++level;
    return loaded(data, "[page=" + std::to_string(level) + "]");
}

std::string blob(::VipsImage* image, const char* name) {
    const void* bytes = nullptr;
    std::size_t length = 0;
    if (vips_image_get_typeof(image, name) == 0 || vips_image_get_blob(image, name, &bytes, &length) != 0)
        return {};
    return {static_cast<const char*>(bytes), length};
}

int number(::VipsImage* image, const char* name, int otherwise) {
    int value = 0;
    return vips_image_get_typeof(image, name) != 0 && vips_image_get_int(image, name, &value) == 0
               ? value
               : otherwise;
}

const char16_t* modelOf(::VipsImage* image) {
    switch (vips_image_guess_interpretation(image)) {
    case VIPS_INTERPRETATION_B_W:
    case VIPS_INTERPRETATION_GREY16:
        return u"Gray";
    case VIPS_INTERPRETATION_CMYK:
        return u"CMYK";
    case VIPS_INTERPRETATION_LAB:
    case VIPS_INTERPRETATION_LABQ:
    case VIPS_INTERPRETATION_LABS:
        return u"Lab";
    default:
        return u"RGB";
    }
}

/// "png-comment-3-Title".
void* addText(::VipsImage*, const char* field, GValue* value, void* to) {
    constexpr std::string_view prefix = "png-comment-";
    const std::string_view name = field;
    const std::size_t keyword = name.find('-', prefix.size());
    if (name.starts_with(prefix) && keyword != std::string_view::npos &&
        G_VALUE_HOLDS(value, VIPS_TYPE_REF_STRING))
        static_cast<std::vector<std::pair<std::string, std::string>>*>(to)->emplace_back(
            name.substr(keyword + 1), vips_value_get_ref_string(value, nullptr));
    return nullptr;
}

/// Channels of 8 bits in sRGB, 3 or 4 of them.
Image inStandardColors(Image image) {
    const VipsInterpretation colors = vips_image_get_interpretation(image.get());
    if (colors != VIPS_INTERPRETATION_sRGB &&
        !(colors == VIPS_INTERPRETATION_RGB && image->BandFmt == VIPS_FORMAT_UCHAR))
        image = made(
            [&](auto** to) { return vips_colourspace(image.get(), to, VIPS_INTERPRETATION_sRGB, nullptr); });
    if (image->BandFmt != VIPS_FORMAT_UCHAR)
        image = made([&](auto** to) { return vips_cast_uchar(image.get(), to, nullptr); });
    if (image->Bands < 3) {
        // Said to be in colours, and of one or two channels all the same.
        const Image gray = made([&](auto** to) { return vips_extract_band(image.get(), to, 0, nullptr); });
        const Image last =
            made([&](auto** to) { return vips_extract_band(image.get(), to, image->Bands - 1, nullptr); });
        ::VipsImage* channels[]{gray.get(), gray.get(), gray.get(), last.get()};
        image = made([&](auto** to) { return vips_bandjoin(channels, to, image->Bands + 2, nullptr); });
    }
    if (image->Bands > 4)
        image = made([&](auto** to) { return vips_extract_band(image.get(), to, 0, "n", 4, nullptr); });
    return image;
}

int writeRegion(VipsRegion* region, VipsRect* area, void* to) {
    auto& writer = *static_cast<PixelWriter*>(to);
    for (int row = area->top; row < VIPS_RECT_BOTTOM(area); ++row) {
        const auto* const pixels = VIPS_REGION_ADDR(region, area->left, row);
        const auto length = static_cast<std::size_t>(area->width) * VIPS_IMAGE_SIZEOF_PEL(region->im);
        writer.write(static_cast<std::size_t>(row), static_cast<std::size_t>(area->left), {pixels, length});
    }
    return 0;
}

DecodedImage written(Image image, int orientation) {
    image = inStandardColors(std::move(image));
    requirePixels(image->Xsize, image->Ysize);
    PixelWriter writer({static_cast<std::size_t>(image->Xsize), static_cast<std::size_t>(image->Ysize)},
                       static_cast<std::size_t>(image->Bands), orientation);
    if (vips_sink_disc(image.get(), writeRegion, &writer) != 0)
        fail();
    DecodedImage decoded = writer.image();
    // Some of the loaders say how it went when they are closed.
    image = nullptr;
    decoded.isPartial = hasWarned;
    vips_error_clear();
    return decoded;
}

int sideOf(const PixelDemand& demand) {
    return demand.mostPixels == 0 || demand.mostPixels > VIPS_MAX_COORD ? VIPS_MAX_COORD
                                                                        : static_cast<int>(demand.mostPixels);
}

/// The option that has colours converted; only where they have to be: finding out how to takes longer than most
/// thumbnails.
const char* conversionOf(::VipsImage* image) {
    const std::string profile = blob(image, VIPS_META_ICC_NAME);
    return !profile.empty() && !descriptionOfProfile(profile).starts_with("sRGB") ? "export_profile"
                                                                                  : nullptr;
}

Image thumbnailOf(::VipsImage* image, int side) {
    return made([&](auto** to) {
        return vips_thumbnail_image(image, to, side, "height", side, "size", VIPS_SIZE_DOWN, "no_rotate",
                                    TRUE, conversionOf(image), "srgb", nullptr);
    });
}

/// What cannot be read stays empty, unless that is all.
DecodedImage decodeWatched(Image source, const PixelDemand& demand) {
    RowWatcher watcher;
    hasWarned = false;
    const auto height = static_cast<std::size_t>(source->Ysize);
    Image thumbnail;
    {
        const Image image = watcher.watched(source);
        if (!demand.profile.empty() && vips_image_get_typeof(image.get(), VIPS_META_ICC_NAME) == 0)
            vips_image_set_blob_copy(image.get(), VIPS_META_ICC_NAME, demand.profile.data(),
                                     demand.profile.size());
        thumbnail = thumbnailOf(image.get(), sideOf(demand));
        // So that the loader is closed with the last image that is made of it.
        source = nullptr;
    }
    DecodedImage decoded = written(std::move(thumbnail), demand.orientation);
    if (watcher.goodRows() == 0)
        fail();
    decoded.goodRows = watcher.goodRows();
    decoded.isPartial = decoded.isPartial || watcher.goodRows() < height;
    return decoded;
}

/// A JPEG whose end is missing, up to where bits are. Fails when there is no row for sure.
DecodedImage decodeBeginning(const NSData& data, const PixelDemand& demand) {
    // With its mark at the end it fails where bits are missing, and not because the mark is.
    const NSData ended = NSData::dataWithBytesNoCopy(std::string(data.characters()) + "\xFF\xD9");
    DecodedImage decoded = decodeWatched(loaded(ended, "[fail_on=warning]"), demand);
    if (!decoded.isPartial)
        return decoded;
    // The library finds out when it comes to the next strip, or not at all when there is none.
    constexpr std::size_t strip = 8;
    decoded.goodRows = (*decoded.goodRows - 1) / strip * strip;
    if (*decoded.goodRows == 0)
        fail();
    return decoded;
}

} // namespace

void prepareVips() {
    // Modules are looked for there; without this all are loaded at once, and some of them are not wanted.
    ::setenv("VIPSHOME", "/nonexistent", 0);
    // What has to be held whole stays in memory: there is no disk.
    ::setenv("VIPS_DISC_THRESHOLD", "4g", 0);
    if (VIPS_INIT("plumwick-image-engine") != 0)
        throw NSException(EngineMissingException, u"The image library does not start.");
    vips_concurrency_set(2);
    // Nothing is asked for twice.
    vips_cache_set_max(0);
    vips_block_untrusted_set(TRUE);
    for (const ImageKind& kind : imageKinds()) {
        if (kind.reader == ImageReader::vips)
            vips_operation_block_set(kind.loader, FALSE);
    }
    constexpr auto warnings = static_cast<GLogLevelFlags>(G_LOG_LEVEL_WARNING | G_LOG_LEVEL_MESSAGE);
    g_log_set_handler("VIPS", warnings, takeWarning, nullptr);
    g_log_set_handler("GLib-GObject", G_LOG_LEVEL_WARNING, takeRefusal, nullptr);
}

bool hasVipsLoader(const ImageKind& kind) {
    const std::string loader = streamLoader(kind);
    const auto isThere = [&] { return vips_type_find("VipsForeignLoad", loader.c_str()) != 0; };
    if (!isThere() && kind.module) {
        loadModule(kind.module);
        vips_operation_block_set(kind.loader, FALSE);
    }
    return isThere();
}

VipsImage::VipsImage(NSData data, const ImageKind& kind) : data_(std::move(data)), kind_(kind) {
    requireLoader(kind_);
}

ImageFacts VipsImage::facts(std::int64_t index) const {
    const Image head = headOf(data_, kind_, index);
    ImageFacts facts;
    facts.width = vips_image_get_width(head.get());
    facts.height = vips_image_get_page_height(head.get());
    facts.count = std::max(vips_image_get_n_pages(head.get()), 1);
    const VipsBandFormat format = vips_image_get_format(head.get());
    facts.isFloat = vips_band_format_isfloat(format) != 0;
    facts.bitsOfSample =
        number(head.get(), "heif-bitdepth", static_cast<int>(vips_format_sizeof(format)) * 8);
    facts.hasAlpha = vips_image_hasalpha(head.get()) != 0;
    facts.isIndexed = number(head.get(), "palette-bit-depth", 0) > 0;
    const int orientation = number(head.get(), VIPS_META_ORIENTATION, 0);
    facts.orientation = orientation >= 1 && orientation <= 8 ? orientation : 0;
    facts.model = modelOf(head.get());
    facts.profile = blob(head.get(), VIPS_META_ICC_NAME);
    vips_image_map(head.get(), addText, &facts.texts);
    vips_error_clear();
    return facts;
}

DecodedImage VipsImage::decodeWhole(std::int64_t index, const PixelDemand& demand) const {
    const bool isJPEG = isLoadedBy(kind_, "VipsForeignLoadJpeg");
    if (!demand.isCutOff || !(isJPEG || isLoadedBy(kind_, "VipsForeignLoadPng")))
        return decodeWatched(loaded(data_, optionsOf(kind_, index)), demand);
    try {
        if (!isJPEG)
            return decodeWatched(loaded(data_, "[fail_on=truncated]"), demand);
        if (hasAllPassesOfJPEG(data_.characters()))
            return decodeBeginning(data_, demand);
    } catch (const ImageFailure&) {
        // In passes that did not come to their end all rows are there, and none as it should be.
    }
    DecodedImage decoded = decodeWatched(loaded(data_, ""), demand);
    decoded.goodRows = 0;
    decoded.isPartial = true;
    return decoded;
}

DecodedImage VipsImage::decode(std::int64_t index, const PixelDemand& demand) const {
    hasWarned = false;
    if (isLoadedBy(kind_, "VipsForeignLoadJpeg") &&
        coefficientBytesOfJPEG(data_.characters()) > mostCoefficientBytes)
        throw ImageFailure(Outcome::outOfMemory,
                           u"the image is stored in passes, and too large to be kept until the last");
    const int side = sideOf(demand);
    const char* conversion = nullptr;
    {
        const Image head = headOf(data_, kind_, index);
        if (isDrawing(kind_))
            return written(
                drawn(data_, std::min(1.0, static_cast<double>(side) / std::max(head->Xsize, head->Ysize))),
                demand.orientation);
        requirePixels(head->Xsize, vips_image_get_page_height(head.get()),
                      mostPixelsOf(kind_, data_.characters(), demand));
        if (isPyramid(kind_))
            return decodeWatched(levelOf(data_, head.get(), side), demand);
        conversion = conversionOf(head.get());
    }
    if (isLoadedBy(kind_, "VipsForeignLoadHeif") && conversion == nullptr) {
        const auto colors = codedColorsOf(data_.characters());
        if (colors && differFromStandard(*colors))
            return decodeWatched(convertedToStandard(loaded(data_, optionsOf(kind_, index)), *colors),
                                 demand);
    }
    if (demand.mostPixels == 0)
        return decodeWhole(index, demand);
    const std::string options = optionsOf(kind_, index);
    if (!demand.profile.empty())
        return decodeWatched(loaded(data_, options), demand);
    const Source source = sourceOf(data_);
    try {
        return written(made([&](auto** to) {
                           return vips_thumbnail_source(
                               source.get(), to, side, "option_string", options.c_str(), "height", side,
                               "size", VIPS_SIZE_DOWN, "no_rotate", TRUE, conversion, "srgb", nullptr);
                       }),
                       demand.orientation);
    } catch (const ImageFailure&) {
        if (!kind_.isReadInRows)
            throw;
    }
    return decodeWatched(loaded(data_, options), demand);
}

DecodedImage shrunk(ImageSize size, bool hasAlpha, std::span<const std::uint8_t> pixels,
                    const PixelDemand& demand) {
    hasWarned = false;
    const Image whole(vips_image_new_from_memory(pixels.data(), pixels.size(), static_cast<int>(size.width),
                                                 static_cast<int>(size.height), 4, VIPS_FORMAT_UCHAR));
    if (!whole)
        fail();
    Image image = made([&](auto** to) {
        return vips_copy(whole.get(), to, "interpretation", VIPS_INTERPRETATION_sRGB, nullptr);
    });
    if (!hasAlpha)
        image = made([&](auto** to) { return vips_extract_band(image.get(), to, 0, "n", 3, nullptr); });
    const int side = sideOf(demand);
    if (!demand.profile.empty())
        vips_image_set_blob_copy(image.get(), VIPS_META_ICC_NAME, demand.profile.data(),
                                 demand.profile.size());
    return written(thumbnailOf(image.get(), side), demand.orientation);
}

std::string descriptionOfProfile(std::string_view profile) {
    const ByteReader reader(profile, ByteOrder::big);
    constexpr std::size_t placeOfTags = 128;
    constexpr std::uint32_t mostTags = 100;
    const std::uint32_t count = std::min(reader.number32(placeOfTags).value_or(0), mostTags);
    for (std::uint32_t tag = 0; tag < count; ++tag) {
        const std::size_t entry = placeOfTags + 4 + std::size_t{12} * tag;
        const std::size_t start = reader.number32(entry + 4).value_or(0);
        if (profile.substr(std::min(entry, profile.size()), 4) != "desc" || start + 12 > profile.size())
            continue;
        if (profile.substr(start, 4) == "desc") {
            const std::size_t length = reader.number32(start + 8).value_or(0);
            const std::string_view text = profile.substr(start + 12, length);
            return std::string(text.substr(0, text.find('\0')));
        }
        // Of several languages the first; its units are mostly ASCII.
        const std::size_t length = reader.number32(start + 20).value_or(0);
        const std::size_t place = start + reader.number32(start + 24).value_or(0);
        if (profile.substr(start, 4) != "mluc" || place > profile.size())
            return {};
        std::u16string units;
        for (std::size_t unit = 0; unit + 1 < std::min<std::size_t>(length, 512); unit += 2)
            units += static_cast<char16_t>(reader.number16(place + unit).value_or(0));
        units.resize(std::min(units.find(u'\0'), units.size()));
        return NSString(units).UTF8String();
    }
    return {};
}

} // namespace kelvo
