#include "platform/qtkit/engine/FrameReader.h"

#include <utility>

namespace kelvo {
namespace {

constexpr int threadsOfDecoder = 2;
/// 8192 by 8192, with what decoders add at the edges.
constexpr std::int64_t mostPixelsOfFrame = std::int64_t{8192 + 64} * (8192 + 64);

class Search {
public:
    Search(const AVStream& stream, AVCodecContext& decoder, const MovieInput& input, std::int64_t time)
        : decoder_(decoder), input_(input), time_(time), second_(av_rescale_q(1, {1, 1}, stream.time_base)) {}

    /// Takes a packet; null: the last one was. True when the frame has been found.
    bool take(const AVPacket* packet) {
        if (packet)
            skipWhatIsNotSeen(*packet);
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
        const bool isLasting =
            begin != AV_NOPTS_VALUE && decoded->pkt_duration > 0 && decoded->pkt_duration > time_ - begin;
        found.frame = std::move(decoded);
        return found.isReached = isLasting;
    }

    /// Frames that no other needs are not decoded on the way. Those of the last second are, because the lengths of
    /// frames are not always true.
    void skipWhatIsNotSeen(const AVPacket& packet) {
        const bool isOnTheWay = time_ != AV_NOPTS_VALUE && packet.pts != AV_NOPTS_VALUE &&
                                packet.pts < time_ && time_ - packet.pts > second_ &&
                                packet.duration < time_ - packet.pts;
        decoder_.skip_frame = isOnTheWay ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
    }

    AVCodecContext& decoder_;
    const MovieInput& input_;
    std::int64_t time_;
    std::int64_t second_;
};

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
    Search search(stream, decoder, input, time);
    const auto packet = owned<Packet>(av_packet_alloc());
    while (!input.isLate()) {
        if (av_read_frame(&format, packet.get()) < 0) {
            if (!input.isLate() && !search.take(nullptr))
                search.found.isReached = search.found.frame != nullptr && !input.isLate();
            break;
        }
        const bool isFound = packet->stream_index == stream.index && search.take(packet.get());
        av_packet_unref(packet.get());
        if (isFound)
            break;
    }
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
