#pragma once

#include "platform/foundation/NSData.h"
#include "platform/qtkit/engine/MovieLibrary.h"

#include <array>
#include <cstdint>

namespace kelvo {

/// How frames lie in the picture that is seen.
struct FrameGeometry {
    /// Of the picture before it is turned; 0 where only the frame itself tells.
    std::int64_t width = 0;
    std::int64_t height = 0;
    /// Whether rows become columns, and then from which ends they are counted.
    bool isLying = false;
    bool isMirrored = false;
    bool isUpsideDown = false;

    std::int64_t widthSeen() const noexcept { return isLying ? height : width; }
    std::int64_t heightSeen() const noexcept { return isLying ? width : height; }
};

/// Of pixels that are as wide to their height as the ratio says, and of the nine numbers of a display matrix (may be null).
FrameGeometry geometryOf(std::int64_t width, std::int64_t height, AVRational pixelAspect,
                         const std::int32_t* displayMatrix);

/// Pixels as movieengine describes them.
struct MoviePicture {
    std::int64_t width = 0;
    std::int64_t height = 0;
    bool hasAlpha = false;
    NSData bytes;
    /// Whether the time was over before the frame that was asked for.
    bool isEarlier = false;
};

/// The frame as it is seen, in sRGB. Throws MovieFailure when it cannot be converted.
MoviePicture pictureOf(const AVFrame& frame, FrameGeometry geometry);

} // namespace kelvo
