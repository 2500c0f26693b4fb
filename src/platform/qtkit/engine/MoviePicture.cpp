#include "platform/qtkit/engine/MoviePicture.h"

#include "platform/foundation/SealedMemory.h"
#include "platform/qtkit/MovieEngineMessages.h"
#include "platform/qtkit/engine/FrameColors.h"
#include "platform/qtkit/engine/FrameFilter.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace kelvo {
namespace {

using movieengine::bytesOfPixel;

/// Who says more than that does not mean it.
constexpr double mostPixelAspect = 16;
constexpr std::int64_t longestSide = 1 << 20;

/// So small that it has no more pixels than pictures have.
void bound(FrameGeometry& geometry) {
    geometry.width = std::clamp<std::int64_t>(geometry.width, 1, longestSide);
    geometry.height = std::clamp<std::int64_t>(geometry.height, 1, longestSide);
    const double pixels = static_cast<double>(geometry.width) * static_cast<double>(geometry.height);
    const double most = movieengine::mostPixelsOfPicture;
    if (pixels <= most)
        return;
    const double factor = std::sqrt(most / pixels);
    for (std::int64_t* const side : {&geometry.width, &geometry.height})
        *side = std::max<std::int64_t>(std::llround(std::floor(static_cast<double>(*side) * factor)), 1);
    // What is thinner than a pixel.
    geometry.width = std::min(geometry.width, movieengine::mostPixelsOfPicture / geometry.height);
}

/// Whether the alpha tells anything: decoders call a channel that, too, which the movie does not use.
bool isAlphaUsed(std::span<const std::uint8_t> pixels) {
    bool isSeen = false;
    bool isClear = false;
    for (std::size_t place = bytesOfPixel - 1; place < pixels.size(); place += bytesOfPixel) {
        isSeen = isSeen || pixels[place] != 0;
        isClear = isClear || pixels[place] != 0xFF;
        if (isSeen && isClear)
            return true;
    }
    return false;
}

/// The frame as screens show it that draw all its lines at once; null for one whose lines are of one moment. Of the others
/// every second line is a moment later, and what moves would be combed: those are made of the lines beside them.
Frame ofOneMoment(const AVFrame& frame) {
    constexpr int leastHeight = 16;
    if (!frame.interlaced_frame || frame.height < leastHeight)
        return nullptr;
    try {
        return FrameFilter("estdif=mode=frame:deint=interlaced", frame.width, frame.height, frame.format)
            .filteredAsLast(frame);
    } catch (const MovieFailure&) {
        // Of a format that the filter does not know.
        return nullptr;
    }
}

void turn(const FrameGeometry& geometry, const std::uint8_t* from, std::uint8_t* to) {
    const std::int64_t across = geometry.widthSeen();
    const std::int64_t down = geometry.heightSeen();
    std::int64_t step = geometry.isLying ? across : 1;
    std::int64_t rowStep = geometry.isLying ? 1 : across;
    std::int64_t origin = 0;
    if (geometry.isMirrored) {
        origin += across - 1;
        (geometry.isLying ? rowStep : step) *= -1;
    }
    if (geometry.isUpsideDown) {
        origin += (down - 1) * across;
        (geometry.isLying ? step : rowStep) *= -1;
    }
    for (std::int64_t y = 0; y < geometry.height; ++y) {
        std::int64_t place = origin + y * rowStep;
        for (std::int64_t x = 0; x < geometry.width; ++x, place += step, from += bytesOfPixel)
            std::memcpy(to + place * static_cast<std::int64_t>(bytesOfPixel), from, bytesOfPixel);
    }
}

} // namespace

FrameGeometry geometryOf(std::int64_t width, std::int64_t height, AVRational pixelAspect,
                         const std::int32_t* displayMatrix) {
    FrameGeometry geometry;
    geometry.width = std::clamp<std::int64_t>(width, 0, longestSide);
    geometry.height = std::clamp<std::int64_t>(height, 0, longestSide);
    const double aspect = pixelAspect.num > 0 && pixelAspect.den > 0 ? av_q2d(pixelAspect) : 1;
    if (aspect != 1 && aspect <= mostPixelAspect && aspect >= 1 / mostPixelAspect && geometry.width > 0)
        geometry.width =
            std::max<std::int64_t>(std::llround(static_cast<double>(geometry.width) * aspect), 1);
    if (!displayMatrix)
        return geometry;
    // To the nearest quarter of a turn: x and y of a place are (a x + c y, b x + d y).
    const double a = displayMatrix[0];
    const double b = displayMatrix[1];
    const double c = displayMatrix[3];
    const double d = displayMatrix[4];
    geometry.isLying = std::abs(b) + std::abs(c) > std::abs(a) + std::abs(d);
    geometry.isMirrored = (geometry.isLying ? c : a) < 0;
    geometry.isUpsideDown = (geometry.isLying ? b : d) < 0;
    return geometry;
}

MoviePicture pictureOf(const AVFrame& decoded, FrameGeometry geometry) {
    const Frame ofMoment = ofOneMoment(decoded);
    const AVFrame& frame = ofMoment ? *ofMoment : decoded;
    if (geometry.width <= 0 || geometry.height <= 0) {
        geometry.width = frame.width;
        geometry.height = frame.height;
    }
    bound(geometry);
    MoviePicture picture;
    picture.width = geometry.widthSeen();
    picture.height = geometry.heightSeen();
    const std::size_t length =
        static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height) * bytesOfPixel;
    // The library may write whole vectors past the end of the last row.
    constexpr std::size_t slack = 64;
    SealedMemory memory(length + slack);
    std::uint8_t* const pixels = memory.bytes().data();
    if (geometry.isLying || geometry.isMirrored || geometry.isUpsideDown) {
        std::vector<std::uint8_t> lying(length + slack);
        writeColors(frame, geometry.width, geometry.height, lying.data());
        turn(geometry, lying.data(), pixels);
    } else {
        writeColors(frame, geometry.width, geometry.height, pixels);
    }
    const AVPixFmtDescriptor* const description =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (description && (description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0) {
        picture.hasAlpha = isAlphaUsed({pixels, length});
        for (std::size_t place = bytesOfPixel - 1; !picture.hasAlpha && place < length; place += bytesOfPixel)
            pixels[place] = 0xFF;
    }
    picture.bytes = memory.seal(length);
    return picture;
}

} // namespace kelvo
