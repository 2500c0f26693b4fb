#pragma once

#include "platform/foundation/NSDictionary.h"
#include "platform/qtkit/engine/FrameReader.h"
#include "platform/qtkit/engine/MovieInput.h"
#include "platform/qtkit/engine/MoviePicture.h"

#include <cstdint>
#include <memory>
#include <optional>

namespace kelvo {

/// Makes the library ready and quiet. To be called before the first movie.
void prepareMovieLibraries();

/// A movie that the engine has open. What it throws is MovieFailure. Each question may take so many seconds; the answer is
/// what was found by then.
class OpenedMovie {
public:
    OpenedMovie(const NSData& data, double seconds);

    /// As MovieEngineMessages.h describes them.
    NSDictionary facts() const;
    /// The frame that is seen so many microseconds after the beginning. Absent without video.
    std::optional<MoviePicture> frameAt(std::int64_t microseconds, double seconds);
    /// The first frame, or else the picture of the cover. Absent when there is none.
    std::optional<MoviePicture> poster(double seconds);

    bool hasVideo() const noexcept { return video_ != nullptr; }
    std::uint64_t bytesRead() const noexcept { return input_->bytesRead(); }

private:
    void open();
    void allow(double seconds);
    std::optional<MoviePicture> frame(std::int64_t microseconds);

    NSData data_;
    std::unique_ptr<MovieInput> input_;
    Format format_;
    AVStream* video_ = nullptr;
    AVStream* cover_ = nullptr;
    bool hasAudio_ = false;
    FrameGeometry geometry_;
    /// Whether packets have been taken, so that the next one is not the first.
    bool isBegun_ = false;
};

} // namespace kelvo
