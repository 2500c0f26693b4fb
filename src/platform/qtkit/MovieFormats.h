#pragma once

#include <span>

namespace kelvo {

/// A container of movies or sound that is read.
struct MovieFormat {
    /// The name of the library's reader for it.
    const char* demuxer;
    /// What files of it are called: extensions in small letters and quoted type codes, separated by spaces.
    const char16_t* types;
};

/// All of them, the most common first. Nothing else is opened: no playlists, which name files elsewhere, and no single
/// images.
std::span<const MovieFormat> movieFormats();

} // namespace kelvo
