#pragma once

#include "platform/foundation/NSString.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdlib>
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
inline constexpr const char* toneOfOneSecond = "-f lavfi -i sine=d=1 ";

} // namespace kelvo::tests
