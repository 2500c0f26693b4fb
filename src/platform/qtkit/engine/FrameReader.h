#pragma once

#include "platform/qtkit/engine/MovieInput.h"
#include "platform/qtkit/engine/MovieLibrary.h"

#include <cstdint>

namespace kelvo {

/// What has been decoded of a stream.
struct FoundFrame {
    /// Null when nothing could be.
    Frame frame;
    /// Whether it is the one that is seen at the time, or the last before the end.
    bool isReached = false;
    /// Whether another place to begin may give a better one: no frame before the time was read, or the first that was
    /// needs others before it, which indexes do not always say truly.
    bool isDoubtful = false;
};

/// A decoder for the stream, ready. Null when there is none for streams of this kind. Throws MovieFailure.
Decoder decoderFor(const AVCodecParameters& parameters);

/// Decodes the stream from where the file is read until the frame that is seen at that time, in the stream's units;
/// AV_NOPTS_VALUE: until the first one. What the time of the input does not allow is left out.
FoundFrame readFrame(AVFormatContext& format, const AVStream& stream, AVCodecContext& decoder,
                     const MovieInput& input, std::int64_t time);

/// The frame of one packet. Null when it cannot be decoded.
Frame frameOfPacket(AVCodecContext& decoder, const AVPacket& packet);

} // namespace kelvo
