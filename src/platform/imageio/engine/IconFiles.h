#pragma once

#include "platform/imageio/engine/FrameDecoder.h"

#include <cstdint>
#include <string_view>
#include <vector>

namespace kelvo {

/// One of the pictures in a file of icons.
struct IconEntry {
    enum class Form : std::uint8_t {
        file,   ///< a picture as a file of its own
        bitmap, ///< a bitmap file without its head, of twice the height where a mask follows
        planes, ///< red, green and blue one after the other, packed, and the mask that belongs to them
        planesWithAlpha ///< alpha before them
    };
    Form form = Form::file;
    /// What the file says; 0 where only the picture itself does.
    std::size_t side = 0;
    int bitsOfPixel = 0;
    std::string_view bytes;
    std::string_view mask;
    /// Whether the file ends before it.
    bool isCutOff = false;
};

/// Of com.microsoft.ico and com.microsoft.cur: the largest and deepest first.
std::vector<IconEntry> iconsOfFolder(std::string_view bytes);
/// Of com.apple.icns: the largest first. Icons of fewer than 24 bits are not read.
std::vector<IconEntry> iconsOfFamily(std::string_view bytes);

/// Of a picture that is no file. Throws ImageFailure.
Frame decodedIcon(const IconEntry& icon);

} // namespace kelvo
