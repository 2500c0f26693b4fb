#include "platform/imageio/engine/FrameDecoder.h"

#include <algorithm>
#include <cstring>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/imgutils.h>
#include <libavutil/log.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
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
struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using DecodedFrame = std::unique_ptr<AVFrame, FreeFrame>;

constexpr std::size_t mostBytesOfFile = std::size_t{1} << 30;

[[noreturn]] void fail() {
    throw ImageFailure(Outcome::broken, u"the image cannot be decoded");
}

DecodedFrame frameOf(const AVCodec* codec, std::string_view bytes) {
    const std::unique_ptr<AVCodecContext, FreeContext> context(avcodec_alloc_context3(codec));
    const std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
    DecodedFrame frame(av_frame_alloc());
    if (!context || !packet || !frame)
        fail();
    context->thread_count = 1;
    // Rows are longer in memory than in the image.
    context->max_pixels = static_cast<std::int64_t>(imageengine::mostPixelsOfImage / 16 * 17);
    // Numbers without an upper end as they are meant for screens; other decoders have no such option.
    av_opt_set(context->priv_data, "apply_trc", "iec61966_2_1", 0);
    // The decoders read a little past the end.
    if (avcodec_open2(context.get(), codec, nullptr) < 0 ||
        av_new_packet(packet.get(), static_cast<int>(bytes.size())) < 0)
        fail();
    std::memcpy(packet->data, bytes.data(), bytes.size());
    if (avcodec_send_packet(context.get(), packet.get()) < 0)
        fail();
    if (avcodec_receive_frame(context.get(), frame.get()) < 0 &&
        (avcodec_send_packet(context.get(), nullptr) < 0 ||
         avcodec_receive_frame(context.get(), frame.get()) < 0))
        fail();
    return frame;
}

bool hasTransparentColor(const AVFrame& frame) {
    constexpr std::size_t colorsOfPalette = 256;
    for (std::size_t color = 0; color < colorsOfPalette; ++color) {
        std::uint32_t value = 0;
        std::memcpy(&value, frame.data[1] + color * sizeof value, sizeof value);
        // Decoders leave colours that the file does not have at 0.
        if (value != 0 && value >> 24U != 0xFF)
            return true;
    }
    return false;
}

/// Decoders call a channel alpha that the file does not use, and which is empty then.
bool isAlphaUsed(const std::vector<std::uint8_t>& pixels) {
    for (std::size_t place = imageengine::bytesOfPixel - 1; place < pixels.size();
         place += imageengine::bytesOfPixel) {
        if (pixels[place] != 0)
            return true;
    }
    return false;
}

} // namespace

bool hasFrameDecoder(const char* decoder) {
    return avcodec_find_decoder_by_name(decoder) != nullptr;
}

Frame decodedFrame(const char* decoder, std::string_view bytes) {
    av_log_set_level(AV_LOG_QUIET);
    const AVCodec* const codec = avcodec_find_decoder_by_name(decoder);
    if (!codec)
        throw ImageFailure(Outcome::missingEngine, u"the library for images of this kind is not installed");
    if (bytes.size() > mostBytesOfFile)
        throw ImageFailure(Outcome::outOfMemory, u"the image takes more memory than it may");
    const DecodedFrame decoded = frameOf(codec, bytes);
    requirePixels(decoded->width, decoded->height);
    const auto format = static_cast<AVPixelFormat>(decoded->format);
    const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(format);
    if (!description || sws_isSupportedInput(format) == 0)
        fail();

    Frame frame;
    frame.size = {static_cast<std::size_t>(decoded->width), static_cast<std::size_t>(decoded->height)};
    frame.bitsOfSample = description->comp[0].depth;
    frame.isFloat = (description->flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    frame.isIndexed = (description->flags & AV_PIX_FMT_FLAG_PAL) != 0;
    frame.isGray = !frame.isIndexed && description->nb_components < 3;
    frame.hasAlpha =
        frame.isIndexed ? hasTransparentColor(*decoded) : (description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    const std::unique_ptr<SwsContext, FreeScaler> scaler(sws_getContext(
        decoded->width, decoded->height, format, decoded->width, decoded->height, AV_PIX_FMT_RGBA,
        SWS_POINT | SWS_FULL_CHR_H_INT | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
    if (!scaler)
        fail();
    // The library may write whole vectors past the end of the last row.
    constexpr std::size_t slack = 64;
    frame.pixels.resize(frame.size.width * frame.size.height * imageengine::bytesOfPixel + slack);
    std::uint8_t* const planes[4]{frame.pixels.data(), nullptr, nullptr, nullptr};
    const int strides[4]{static_cast<int>(frame.size.width * imageengine::bytesOfPixel), 0, 0, 0};
    if (sws_scale(scaler.get(), decoded->data, decoded->linesize, 0, decoded->height, planes, strides) <= 0)
        fail();
    frame.pixels.resize(frame.pixels.size() - slack);
    frame.hasAlpha = frame.hasAlpha && isAlphaUsed(frame.pixels);
    return frame;
}

} // namespace kelvo
