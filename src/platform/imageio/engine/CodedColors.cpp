#include "platform/imageio/engine/CodedColors.h"

#include "platform/imageio/engine/ByteReader.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

using vips::Image;
using vips::made;

constexpr std::uint16_t wide = 9;      // ITU-R BT.2020
constexpr std::uint16_t display = 12;  // Display P3
constexpr std::uint16_t absolute = 16; // perceptual quantiser
constexpr std::uint16_t hybridLog = 18;
constexpr double nitsOfPaper = 203;

/// The contents of the first box of that type within others.
std::string_view boxIn(std::string_view boxes, std::string_view type) {
    std::size_t place = 0;
    while (place + 8 <= boxes.size()) {
        const std::size_t length = ByteReader(boxes, ByteOrder::big).number32(place).value_or(0);
        if (boxes.substr(place + 4, 4) == type)
            return boxes.substr(place + 8, length < 8 ? boxes.npos : length - 8);
        if (length < 8)
            break;
        place += length;
    }
    return {};
}

/// In nits, of up to 10,000.
double lightOfAbsolute(double value) {
    constexpr double m1 = 2610.0 / 16384;
    constexpr double m2 = 2523.0 / 4096 * 128;
    constexpr double c1 = 3424.0 / 4096;
    constexpr double c2 = 2413.0 / 4096 * 32;
    constexpr double c3 = 2392.0 / 4096 * 32;
    const double power = std::pow(value, 1 / m2);
    return 10000 * std::pow(std::max(power - c1, 0.0) / (c2 - c3 * power), 1 / m1);
}

/// In nits, on a screen of 1,000.
double lightOfHybridLog(double value) {
    constexpr double a = 0.17883277;
    constexpr double b = 1 - 4 * a;
    const double c = 0.5 - a * std::log(4 * a);
    const double scene = value <= 0.5 ? value * value / 3 : (std::exp((value - c) / a) + b) / 12;
    constexpr double gammaOfScreen = 1.2;
    return 1000 * std::pow(scene, gammaOfScreen);
}

/// Of what is brighter than most of paper as much as a screen has left.
double held(double light) {
    constexpr double knee = 0.8;
    return light <= knee ? light : 1 - (1 - knee) * std::exp((knee - light) / (1 - knee));
}

/// Where 1 is paper.
double lightOf(double value, std::uint16_t transfer) {
    if (transfer == absolute)
        return held(lightOfAbsolute(value) / nitsOfPaper);
    if (transfer == hybridLog)
        return held(lightOfHybridLog(value) / nitsOfPaper);
    constexpr double linearPart = 0.04045;
    return value <= linearPart ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

Image lightTable(std::size_t count, std::uint16_t transfer) {
    std::vector<float> values(count);
    for (std::size_t index = 0; index < count; ++index)
        values[index] = static_cast<float>(
            lightOf(static_cast<double>(index) / static_cast<double>(count - 1), transfer));
    Image table(vips_image_new_from_memory_copy(values.data(), count * sizeof(float), static_cast<int>(count),
                                                1, 1, VIPS_FORMAT_FLOAT));
    if (!table)
        vips::fail();
    return table;
}

/// From these primaries to those of sRGB.
Image matrixFrom(std::uint16_t primaries) {
    constexpr double ofWide[]{1.660491,  -0.587641, -0.072850, -0.124550, 1.132900,
                              -0.008349, -0.018151, -0.100579, 1.118730};
    constexpr double ofDisplay[]{1.224940, -0.224940, 0,         -0.042057, 1.042057,
                                 0,        -0.019638, -0.078636, 1.098274};
    constexpr double none[]{1, 0, 0, 0, 1, 0, 0, 0, 1};
    constexpr int side = 3;
    Image matrix(vips_image_new_matrix_from_array(side, side,
                                                  primaries == wide      ? ofWide
                                                  : primaries == display ? ofDisplay
                                                                         : none,
                                                  side * side));
    if (!matrix)
        vips::fail();
    return matrix;
}

Image bands(const Image& image, int first, int count) {
    return made([&](auto** to) { return vips_extract_band(image.get(), to, first, "n", count, nullptr); });
}

} // namespace

std::optional<CodedColors> codedColorsOf(std::string_view bytes) {
    const std::string_view meta = boxIn(bytes, "meta");
    // Its version stands before what it holds.
    const std::string_view properties =
        boxIn(boxIn(meta.substr(std::min<std::size_t>(meta.size(), 4)), "iprp"), "ipco");
    std::string_view rest = properties;
    for (;;) {
        const std::string_view found = boxIn(rest, "colr");
        if (found.empty())
            return std::nullopt;
        const ByteReader reader(found, ByteOrder::big);
        if (found.starts_with("nclx") && reader.number16(6))
            return CodedColors{*reader.number16(4), *reader.number16(6)};
        rest.remove_prefix(static_cast<std::size_t>(found.data() + found.size() - rest.data()));
    }
}

bool differFromStandard(CodedColors colors) {
    constexpr std::uint16_t standard = 13;
    constexpr std::uint16_t video = 1;
    const bool isBright = colors.transfer == absolute || colors.transfer == hybridLog;
    const bool isWide = colors.primaries == wide || colors.primaries == display;
    return isBright || (isWide && (colors.transfer == standard || colors.transfer == video));
}

Image convertedToStandard(Image image, CodedColors colors) {
    if (image->Bands < 3 || (image->BandFmt != VIPS_FORMAT_UCHAR && image->BandFmt != VIPS_FORMAT_USHORT))
        return image;
    const bool hasWideSamples = image->BandFmt == VIPS_FORMAT_USHORT;
    const Image table = lightTable(hasWideSamples ? 65536 : 256, colors.transfer);
    const Image coded = bands(image, 0, 3);
    const Image light = made([&](auto** to) { return vips_maplut(coded.get(), to, table.get(), nullptr); });
    const Image matrix = matrixFrom(colors.primaries);
    const Image inPrimaries =
        made([&](auto** to) { return vips_recomb(light.get(), to, matrix.get(), nullptr); });
    const Image told = made([&](auto** to) {
        return vips_copy(inPrimaries.get(), to, "interpretation", VIPS_INTERPRETATION_scRGB, nullptr);
    });
    Image standard = made([&](auto** to) { return vips_scRGB2sRGB(told.get(), to, nullptr); });
    if (image->Bands == 3)
        return standard;
    Image alpha = bands(image, 3, 1);
    if (hasWideSamples)
        alpha = made([&](auto** to) { return vips_msb(alpha.get(), to, nullptr); });
    ::VipsImage* parts[]{standard.get(), alpha.get()};
    return made([&](auto** to) { return vips_bandjoin(parts, to, 2, nullptr); });
}

} // namespace kelvo
