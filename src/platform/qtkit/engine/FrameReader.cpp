#include "platform/qtkit/engine/FrameReader.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace kelvo {
namespace {

/// Frames wait for those they are made from: three keep two processors busy, two do not (measured: 66 and 95 ms for 14
/// frames of 1080p, 88 with one).
constexpr int threadsOfDecoder = 3;
/// 8192 by 8192, with what decoders add at the edges.
constexpr std::int64_t mostPixelsOfFrame = std::int64_t{8192 + 64} * (8192 + 64);

/// What is read ahead of the decoder, so that it need not decode what nobody sees.
constexpr std::size_t mostBytesAhead = std::size_t{24} << 20;

/// The next packet of the stream; null at the end and when the time is over.
Packet nextPacket(AVFormatContext& format, const AVStream& stream, const MovieInput& input) {
    auto packet = owned<Packet>(av_packet_alloc());
    while (!input.isLate() && av_read_frame(&format, packet.get()) >= 0) {
        if (packet->stream_index == stream.index)
            return packet;
        av_packet_unref(packet.get());
    }
    return nullptr;
}

class Search {
public:
    Search(AVCodecContext& decoder, const MovieInput& input, std::int64_t time)
        : decoder_(decoder), input_(input), time_(time) {}

    /// Takes a packet; null: the last one was. True when the frame has been found.
    bool take(const AVPacket* packet) {
        // A damaged packet keeps nobody from the next.
        bool isSent = avcodec_send_packet(&decoder_, packet) != AVERROR(EAGAIN);
        while (!input_.isLate()) {
            auto decoded = owned<Frame>(av_frame_alloc());
            if (avcodec_receive_frame(&decoder_, decoded.get()) < 0) {
                if (isSent)
                    return false;
                isSent = true;
                avcodec_send_packet(&decoder_, packet);
                continue;
            }
            if (isFound(std::move(decoded)))
                return true;
        }
        return false;
    }

    /// The last packet was taken.
    void finish() {
        if (!input_.isLate() && !take(nullptr))
            found.isReached = found.frame != nullptr && !input_.isLate();
    }

    FoundFrame found;

private:
    bool isFound(Frame decoded) {
        const std::int64_t begin = decoded->best_effort_timestamp;
        if (!found.frame)
            found.isDoubtful = decoded->key_frame == 0;
        if (time_ == AV_NOPTS_VALUE) {
            found.frame = std::move(decoded);
            return found.isReached = true;
        }
        if (begin != AV_NOPTS_VALUE && begin > time_) {
            if (!found.frame) {
                found.isDoubtful = true;
                found.frame = std::move(decoded);
            }
            return found.isReached = true;
        }
        found.frame = std::move(decoded);
        return false;
    }

    AVCodecContext& decoder_;
    const MovieInput& input_;
    std::int64_t time_;
};

/// The packets of a stream up to a time, as far as they are kept.
struct PacketsAhead {
    std::vector<Packet> packets;
    /// Of the frame that is seen at the time, where all that come before it are there.
    std::optional<std::size_t> seen;
};

PacketsAhead readAhead(AVFormatContext& format, const AVStream& stream, const MovieInput& input,
                       std::int64_t time) {
    PacketsAhead ahead;
    std::optional<std::size_t> latest;
    for (std::size_t bytes = 0; bytes < mostBytesAhead;) {
        Packet packet = nextPacket(format, stream, input);
        // No frame is seen before it is decoded.
        const bool isPast = packet && packet->dts != AV_NOPTS_VALUE && packet->dts > time;
        if (!packet || isPast) {
            ahead.seen = latest;
            if (packet)
                ahead.packets.push_back(std::move(packet));
            break;
        }
        bytes += static_cast<std::size_t>(std::max(packet->size, 0)) + sizeof(AVPacket);
        ahead.packets.push_back(std::move(packet));
        const AVPacket& last = *ahead.packets.back();
        if (last.pts == AV_NOPTS_VALUE)
            break;
        if (last.pts <= time && (!latest || last.pts >= ahead.packets[*latest]->pts))
            latest = ahead.packets.size() - 1;
    }
    return ahead;
}

} // namespace

Decoder decoderFor(const AVCodecParameters& parameters) {
    const AVCodec* const codec = avcodec_find_decoder(parameters.codec_id);
    if (!codec)
        return nullptr;
    auto decoder = owned<Decoder>(avcodec_alloc_context3(codec));
    if (avcodec_parameters_to_context(decoder.get(), &parameters) < 0)
        throw MovieFailure(Outcome::broken, u"its video cannot be decoded");
    decoder->thread_count = threadsOfDecoder;
    decoder->max_pixels = mostPixelsOfFrame;
    if (std::int64_t{parameters.width} * parameters.height > mostPixelsOfFrame)
        throw MovieFailure(Outcome::outOfMemory, u"its frames have more pixels than are decoded");
    if (avcodec_open2(decoder.get(), codec, nullptr) < 0)
        throw MovieFailure(Outcome::broken, u"its video cannot be decoded");
    return decoder;
}

FoundFrame readFrame(AVFormatContext& format, const AVStream& stream, AVCodecContext& decoder,
                     const MovieInput& input, std::int64_t time) {
    Search search(decoder, input, time);
    PacketsAhead ahead;
    if (time != AV_NOPTS_VALUE)
        ahead = readAhead(format, stream, input, time);
    const std::size_t end = ahead.seen ? *ahead.seen + 1 : ahead.packets.size();
    for (std::size_t index = 0; index < end; ++index) {
        // Frames that no other needs are not decoded on the way.
        decoder.skip_frame = ahead.seen && index != *ahead.seen ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
        if (search.take(ahead.packets[index].get()))
            return std::move(search.found);
        ahead.packets[index] = nullptr;
    }
    while (!ahead.seen) {
        const Packet packet = nextPacket(format, stream, input);
        if (!packet)
            break;
        if (search.take(packet.get()))
            return std::move(search.found);
    }
    search.finish();
    return std::move(search.found);
}

Frame frameOfPacket(AVCodecContext& decoder, const AVPacket& packet) {
    auto frame = owned<Frame>(av_frame_alloc());
    if (avcodec_send_packet(&decoder, &packet) < 0 || avcodec_send_packet(&decoder, nullptr) < 0 ||
        avcodec_receive_frame(&decoder, frame.get()) < 0)
        return nullptr;
    return frame;
}

} // namespace kelvo
