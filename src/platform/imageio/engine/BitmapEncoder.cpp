#include "platform/imageio/engine/BitmapEncoder.h"

#include <cstring>
#include <memory>
#include <string_view>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/log.h>
}

namespace kelvo {
namespace {

struct FreeContext {
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

void require(bool isDone) {
    if (!isDone)
        throw ImageFailure(Outcome::broken, u"the image cannot be written in this format");
}

} // namespace

NSData encodedBitmap(ImageSize size, std::span<const std::uint8_t> pixels) {
    constexpr std::size_t bytesOfColor = 3;
    av_log_set_level(AV_LOG_QUIET);
    const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_BMP);
    if (!codec)
        throw ImageFailure(Outcome::missingEngine, u"the library for images of this kind is not installed");
    const std::unique_ptr<AVCodecContext, FreeContext> context(avcodec_alloc_context3(codec));
    std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
    const std::unique_ptr<AVFrame, FreeFrame> frame(av_frame_alloc());
    require(context && packet && frame);
    context->width = frame->width = static_cast<int>(size.width);
    context->height = frame->height = static_cast<int>(size.height);
    context->pix_fmt = AV_PIX_FMT_BGR24;
    frame->format = AV_PIX_FMT_BGR24;
    context->time_base = {1, 1};
    context->max_pixels = static_cast<std::int64_t>(imageengine::mostPixelsOfImage);
    require(avcodec_open2(context.get(), codec, nullptr) >= 0 && av_frame_get_buffer(frame.get(), 0) >= 0);
    const std::size_t rowLength = size.width * bytesOfColor;
    for (std::size_t row = 0; row < size.height; ++row)
        std::memcpy(frame->data[0] + static_cast<std::ptrdiff_t>(row) * frame->linesize[0],
                    pixels.data() + row * rowLength, rowLength);
    require(avcodec_send_frame(context.get(), frame.get()) >= 0 &&
            avcodec_receive_packet(context.get(), packet.get()) >= 0);
    const std::shared_ptr<AVPacket> written(packet.release(), FreePacket());
    return NSData::dataWithBytesNoCopy({written->data, static_cast<std::size_t>(written->size)}, written);
}

} // namespace kelvo
