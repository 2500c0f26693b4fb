#pragma once

#include "platform/coregraphics/Bitmap.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace kelvo::tests {

/// A picture as rows of letters, from the top; what no letter is near to is '?'.
using Letters = std::vector<std::string>;

inline constexpr std::array<std::pair<char, std::array<int, 4>>, 11> colorsOfLetters{
    {{'R', {255, 0, 0, 255}},
     {'G', {0, 255, 0, 255}},
     {'B', {0, 0, 255, 255}},
     {'W', {255, 255, 255, 255}},
     {'K', {0, 0, 0, 255}},
     {'.', {0, 0, 0, 0}},
     {'r', {255, 0, 0, 128}},
     {'k', {0, 0, 0, 128}},
     {'p', {255, 127, 127, 255}}, // r on white
     {'v', {128, 0, 127, 255}},   // r on blue
     {'y', {255, 255, 0, 255}}}};

inline BitmapRef picture(const Letters& rows) {
    Bitmap bitmap;
    bitmap.width = static_cast<std::uint32_t>(rows.front().size());
    bitmap.height = static_cast<std::uint32_t>(rows.size());
    bitmap.bytesPerRow = std::size_t{bitmap.width} * 4;
    bitmap.alpha = BitmapAlpha::skipLast;
    std::string bytes;
    for (const std::string& row : rows) {
        for (const char letter : row) {
            for (const auto& [name, color] : colorsOfLetters) {
                if (name != letter)
                    continue;
                for (const int sample : color)
                    bytes += static_cast<char>(sample);
                if (color[3] != 255)
                    bitmap.alpha = BitmapAlpha::last;
            }
        }
    }
    bitmap.data = NSData::dataWithBytes(bytes);
    return std::make_shared<const Bitmap>(bitmap);
}

inline Letters lettersOf(const BitmapRef& bitmap) {
    Letters rows;
    const CGImage image = imageOfBitmap(bitmap);
    constexpr int near = 3;
    for (std::size_t y = 0; y < image.height(); ++y) {
        std::string& row = rows.emplace_back();
        for (std::size_t x = 0; x < image.width(); ++x) {
            const std::uint8_t* const pixel = image.data().bytes().data() + y * image.bytesPerRow() + x * 4;
            char found = '?';
            for (const auto& [letter, color] : colorsOfLetters) {
                bool isNear = std::abs(pixel[3] - color[3]) <= near;
                for (std::size_t index = 0; index < 3; ++index)
                    isNear = isNear && (color[3] == 0 || std::abs(pixel[index] - color[index]) <= near);
                if (isNear)
                    found = letter;
            }
            row += found;
        }
    }
    return rows;
}

} // namespace kelvo::tests
