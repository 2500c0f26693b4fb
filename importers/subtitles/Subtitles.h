#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::importers {

/// What a file of subtitles holds, in UTF-8.
struct Subtitles {
    std::int64_t cues = 0;
    /// In seconds, when the last one ends; absent when that is told in frames of unknown length.
    std::optional<double> end;
    std::string title;
    std::string author;
    std::string text;
};

/// Absent when they are none.
std::optional<Subtitles> readSubtitles(std::string_view file);

} // namespace kelvo::importers
