#pragma once

#include <cstddef>
#include <cstdint>

namespace kelvo::movieengine {

// What the stand-in for movies and plumwick-movie-engine say to each other.

inline constexpr const char* programName = "plumwick-movie-engine";

// Every message is a dictionary. It holds the movie whole, so that it can be answered whatever became of the engine
// meanwhile; the last movie stays open in the engine, which knows it by its number.

/// A number that stands for this file alone.
inline constexpr const char16_t* numberKey = u"Number";
/// Data: the open file.
inline constexpr const char16_t* movieKey = u"Movie";
/// A number: how many seconds the answer may take. What has been found by then is the answer.
inline constexpr const char16_t* secondsKey = u"Seconds";
/// A number.
inline constexpr const char16_t* wantKey = u"Want";
enum class Want : std::uint8_t {
    /// A dictionary of facts. Nil when the file is no movie, which is noted.
    facts,
    /// A dictionary: the pixels of the frame that is seen at a time. Nil when there is none.
    frame,
    /// The same of the first frame, or of a picture that is no part of the movie.
    poster
};
/// A number: microseconds from the beginning of the movie.
inline constexpr const char16_t* timeKey = u"Time";

// Of the facts, and absent when it is not known:

/// Microseconds, never negative.
inline constexpr const char16_t* durationKey = u"Duration";
/// As pixels are seen: not longer or wider than they are high, and turned. Of pixels below as well.
inline constexpr const char16_t* widthKey = u"Width";
inline constexpr const char16_t* heightKey = u"Height";
/// Booleans.
inline constexpr const char16_t* hasVideoKey = u"HasVideo";
inline constexpr const char16_t* hasAudioKey = u"HasAudio";

// Of pixels: the bytes are 4 of each (red, green, blue, alpha, not multiplied by it), without gaps, from the top, in sRGB.

/// A boolean; without it all alpha is 255.
inline constexpr const char16_t* alphaKey = u"Alpha";
/// Data of width * height * 4 bytes.
inline constexpr const char16_t* bytesKey = u"Bytes";
inline constexpr std::size_t bytesOfPixel = 4;

/// What has more pixels is shrunk: to that of cinema films.
inline constexpr std::int64_t mostPixelsOfPicture = std::int64_t{4096} * 2304;

} // namespace kelvo::movieengine
