#pragma once

#include "platform/appkit/images/NSBitmapImageRep.h"
#include "platform/appkit/images/NSImage.h"
#include "platform/foundation/NSString.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <string>

namespace kelvo::tests {

// Small movies, made by the program ffmpeg.

/// The path of a movie that was made by these arguments; its name decides on its container.
inline std::string movieFile(const TemporaryFolder& folder, const std::string& name,
                             const std::string& arguments) {
    const std::string path = folder.path(name);
    const std::string command =
        "cd '" + folder.path() + "' && ffmpeg -nostdin -v error -y " + arguments + " '" + path + "'";
    EXPECT_EQ(std::system(command.c_str()), 0) << command;
    return path;
}

inline NSString stringOf(const std::string& path) {
    return NSString::stringWithUTF8String(path);
}

/// A source of 5 frames a second, each of the brightness that its number has, to be encoded without great loss.
inline std::string countedFrames(const std::string& seconds) {
    return "-f lavfi -i \"nullsrc=s=64x48:r=5:d=" + seconds +
           ",format=yuv420p,geq=lum='40+N':cb=128:cr=128\" ";
}
inline constexpr const char* wellEncoded = " -c:v libx264 -g 25 -bf 2 -crf 2 -pix_fmt yuv420p ";

/// Red, green, blue and alpha.
inline std::array<int, 4> pixelAt(const NSImage& image, double across, double down) {
    const auto rep = std::dynamic_pointer_cast<const NSBitmapImageRep>(image.representations().at(0));
    const Bitmap& bitmap = *rep->bitmap();
    const auto x = static_cast<std::size_t>(across * bitmap.width);
    const auto y = static_cast<std::size_t>(down * bitmap.height);
    const std::uint8_t* const bytes = bitmap.data.bytes().data() + y * bitmap.bytesPerRow + x * 4;
    return {bytes[0], bytes[1], bytes[2], bytes[3]};
}

/// Which of the counted frames it is; -1 for none.
inline int numberOfFrame(const std::shared_ptr<NSImage>& image) {
    return image ? static_cast<int>(std::lround(pixelAt(*image, 0.5, 0.5)[1] * 219.0 / 255 + 16 - 40)) : -1;
}

} // namespace kelvo::tests
