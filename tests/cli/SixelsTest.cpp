#include "cli/Sixels.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

namespace kelvo::cli {
namespace {

using Color = std::array<int, 3>;

/// What a terminal makes of it; nothing where it does not paint.
struct Screen {
    std::size_t width = 0;
    std::size_t height = 0;
    std::map<std::pair<std::size_t, std::size_t>, Color> pixels;
    std::size_t colors = 0;
};

Screen drawn(const std::string& sixels) {
    Screen screen;
    std::size_t place = 0;
    const auto number = [&] {
        char* end = nullptr;
        const auto value = static_cast<int>(std::strtol(sixels.c_str() + place, &end, 10));
        place = static_cast<std::size_t>(end - sixels.c_str());
        return value;
    };
    const auto numbers = [&] {
        std::vector<int> all{number()};
        while (sixels[place] == ';' && ++place)
            all.push_back(number());
        return all;
    };
    EXPECT_TRUE(sixels.starts_with("\x1BP") && sixels.ends_with("\x1B\\"));
    place = sixels.find('q') + 1;
    std::map<int, Color> palette;
    int color = -1;
    std::size_t column = 0;
    std::size_t top = 0;
    while (place < sixels.size() - 2) {
        const char sign = sixels[place++];
        if (sign == '"') {
            const auto size = numbers();
            screen.width = static_cast<std::size_t>(size.at(2));
            screen.height = static_cast<std::size_t>(size.at(3));
        } else if (sign == '#') {
            const auto fields = numbers();
            color = fields[0];
            if (fields.size() == 5)
                palette[color] = {fields[2] * 255 / 100, fields[3] * 255 / 100, fields[4] * 255 / 100};
        } else if (sign == '$' || sign == '-') {
            column = 0;
            top += sign == '-' ? 6 : 0;
        } else {
            const int count = sign == '!' ? number() : 1;
            const char bits = sign == '!' ? sixels[place++] : sign;
            for (int index = 0; index < count; ++index, ++column) {
                for (unsigned row = 0; row < 6; ++row) {
                    if (((bits - '?') >> row & 1) != 0)
                        screen.pixels[{column, top + row}] = palette.at(color);
                }
            }
        }
    }
    screen.colors = palette.size();
    return screen;
}

CGImage imageOf(std::size_t width, std::size_t height, const auto& pixelAt) {
    std::string bytes;
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            for (const int channel : pixelAt(x, y))
                bytes += static_cast<char>(channel);
        }
    }
    return CGImage(width, height, kCGImageAlphaLast, NSData::dataWithBytesNoCopy(bytes));
}

using Pixel = std::array<int, 4>;

TEST(SixelsTest, WhatATerminalMakesOfThem) {
    struct Row {
        const char* name;
        std::size_t width;
        std::size_t height;
        Pixel (*pixelAt)(std::size_t x, std::size_t y);
        int tolerance;
    };
    const Row rows[] = {
        {"one pixel", 1, 1,
         [](std::size_t, std::size_t) {
             return Pixel{10, 200, 30, 255};
         },
         3},
        {"few colours", 40, 13,
         [](std::size_t x, std::size_t y) {
             return y < 7 ? Pixel{255, 0, 0, 255} : Pixel{0, x < 20 ? 255 : 60, 255, 255};
         },
         3},
        {"holes", 21, 12,
         [](std::size_t x, std::size_t y) {
             return Pixel{0, 90, 255, (x + y) % 3 == 0 ? 127 : 128};
         },
         3},
        {"nothing at all", 9, 9,
         [](std::size_t, std::size_t) {
             return Pixel{0, 90, 255, 0};
         },
         0},
        {"many colours", 128, 96,
         [](std::size_t x, std::size_t y) {
             return Pixel{static_cast<int>(2 * x), static_cast<int>(2 * y), static_cast<int>(x + y), 255};
         },
         24},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Screen screen = drawn(sixelsOf(imageOf(row.width, row.height, row.pixelAt)));
        EXPECT_EQ(screen.width, row.width);
        EXPECT_EQ(screen.height, row.height);
        EXPECT_LE(screen.colors, 256U);
        std::size_t seen = 0;
        int worst = 0;
        for (std::size_t y = 0; y < row.height; ++y) {
            for (std::size_t x = 0; x < row.width; ++x) {
                const Pixel pixel = row.pixelAt(x, y);
                const auto found = screen.pixels.find({x, y});
                ASSERT_EQ(found != screen.pixels.end(), pixel[3] >= 128) << x << ',' << y;
                seen += pixel[3] >= 128 ? 1 : 0;
                for (std::size_t channel = 0; channel < 3 && pixel[3] >= 128; ++channel)
                    worst = std::max(worst, std::abs(found->second[channel] - pixel[channel]));
            }
        }
        EXPECT_LE(worst, row.tolerance);
        EXPECT_EQ(screen.pixels.size(), seen) << "none is outside";
    }
}

} // namespace
} // namespace kelvo::cli
