#include "platform/imageio/engine/FrameDecoder.h"

#include "platform/imageio/engine/ByteReader.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

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

/// What stands behind a file that is too short, and in pixels that nothing is decoded to.
struct Filler {
    std::uint8_t value = 0;
    /// How much of it; 0: nothing at all.
    std::size_t length = 0;
};

int bufferWithFiller(AVCodecContext* context, AVFrame* frame, int flags) {
    const int result = avcodec_default_get_buffer2(context, frame, flags);
    for (const AVBufferRef* const buffer : frame->buf) {
        if (result >= 0 && buffer)
            std::memset(buffer->data, static_cast<const Filler*>(context->opaque)->value, buffer->size);
    }
    return result;
}

/// What is known of a frame when its memory is asked for.
struct Head {
    int width = 0;
    int height = 0;
    AVPixelFormat format = AV_PIX_FMT_NONE;
};

int keepHead(AVCodecContext* context, AVFrame*, int) {
    *static_cast<Head*>(context->opaque) = {context->width, context->height, context->pix_fmt};
    return AVERROR_EXIT;
}

using GetBuffer = int (*)(AVCodecContext* context, AVFrame* frame, int flags);
using OpenDecoder = std::unique_ptr<AVCodecContext, FreeContext>;

/// `getBuffer` may be null; it finds `opaque` in the context.
OpenDecoder openDecoder(const AVCodec* codec, GetBuffer getBuffer, void* opaque) {
    OpenDecoder context(avcodec_alloc_context3(codec));
    if (!context)
        fail();
    context->thread_count = 1;
    // Rows are longer in memory than in the image.
    context->max_pixels = static_cast<std::int64_t>(imageengine::mostPixelsOfImage / 16 * 17);
    // Numbers without an upper end as they are meant for screens; other decoders have no such option. A table of 7 ms.
    if (getBuffer != keepHead)
        av_opt_set(context->priv_data, "apply_trc", "iec61966_2_1", 0);
    if (getBuffer) {
        context->opaque = opaque;
        context->get_buffer2 = getBuffer;
    }
    if (avcodec_open2(context.get(), codec, nullptr) < 0)
        fail();
    return context;
}

/// A copy, because the decoders read a little past the end.
std::unique_ptr<AVPacket, FreePacket> packetOf(std::string_view bytes, Filler filler) {
    std::unique_ptr<AVPacket, FreePacket> packet(av_packet_alloc());
    if (!packet || av_new_packet(packet.get(), static_cast<int>(bytes.size() + filler.length)) < 0)
        fail();
    std::memcpy(packet->data, bytes.data(), bytes.size());
    std::memset(packet->data + bytes.size(), filler.value, filler.length);
    return packet;
}

/// Null when the decoder fails. `pixels` becomes how many the image has, as far as the decoder has come to know.
DecodedFrame frameOf(const AVCodec* codec, std::string_view bytes, Filler filler, std::size_t& pixels) {
    const OpenDecoder context = openDecoder(codec, filler.length > 0 ? bufferWithFiller : nullptr, &filler);
    const auto packet = packetOf(bytes, filler);
    DecodedFrame frame(av_frame_alloc());
    if (!frame)
        fail();
    const bool isDecoded = avcodec_send_packet(context.get(), packet.get()) >= 0 &&
                           (avcodec_receive_frame(context.get(), frame.get()) >= 0 ||
                            (avcodec_send_packet(context.get(), nullptr) >= 0 &&
                             avcodec_receive_frame(context.get(), frame.get()) >= 0));
    pixels = static_cast<std::size_t>(std::max(context->width, 0)) *
             static_cast<std::size_t>(std::max(context->height, 0));
    return isDecoded ? std::move(frame) : nullptr;
}

Head headOf(const AVCodec* codec, std::string_view bytes) {
    Head head;
    const OpenDecoder context = openDecoder(codec, keepHead, &head);
    avcodec_send_packet(context.get(), packetOf(bytes, {}).get());
    if (head.format == AV_PIX_FMT_NONE)
        fail();
    return head;
}

/// Of a Photoshop document as its decoder would describe it, which would unpack all of it first, and forget what it has
/// unpacked where nobody gives it memory for the pixels. Absent for what is rare.
std::optional<Head> headOfPhotoshop(std::string_view bytes) {
    enum Mode : std::uint16_t { gray = 1, indexed = 2, RGB = 3, CMYK = 4 };
    const ByteReader reader(bytes, ByteOrder::big);
    const auto channels = reader.number16(12);
    const auto height = reader.number32(14);
    const auto width = reader.number32(18);
    const auto depth = reader.number16(22);
    const auto mode = reader.number16(24);
    constexpr std::uint32_t longestSide = 30'000;
    constexpr std::uint16_t version = 1;
    if (!bytes.starts_with("8BPS") || reader.number16(4) != version || !mode || *width == 0 || *height == 0 ||
        *width > longestSide || *height > longestSide)
        return std::nullopt;
    struct Row {
        std::uint16_t mode;
        std::uint16_t channels;
        std::uint16_t depth;
        AVPixelFormat format;
    };
    constexpr Row rows[] = {
        {gray, 1, 8, AV_PIX_FMT_GRAY8},      {gray, 1, 16, AV_PIX_FMT_GRAY16BE},
        {gray, 2, 8, AV_PIX_FMT_YA8},        {gray, 2, 16, AV_PIX_FMT_YA16BE},
        {indexed, 1, 8, AV_PIX_FMT_PAL8},    {RGB, 3, 8, AV_PIX_FMT_RGB24},
        {RGB, 3, 16, AV_PIX_FMT_RGB48BE},    {RGB, 4, 8, AV_PIX_FMT_RGBA},
        {RGB, 4, 16, AV_PIX_FMT_RGBA64BE},   {CMYK, 4, 8, AV_PIX_FMT_GBRP},
        {CMYK, 4, 16, AV_PIX_FMT_GBRP16BE},  {CMYK, 5, 8, AV_PIX_FMT_GBRAP},
        {CMYK, 5, 16, AV_PIX_FMT_GBRAP16BE},
    };
    for (const Row& row : rows) {
        if (row.mode == *mode && row.channels == *channels && row.depth == *depth)
            return Head{static_cast<int>(*width), static_cast<int>(*height), row.format};
    }
    return std::nullopt;
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

/// Of the decoder, if it may read so much.
const AVCodec* codecFor(const char* decoder, std::string_view bytes) {
    av_log_set_level(AV_LOG_QUIET);
    const AVCodec* const codec = avcodec_find_decoder_by_name(decoder);
    if (!codec)
        throw ImageFailure(Outcome::missingEngine, u"the library for images of this kind is not installed");
    if (bytes.size() > mostBytesOfFile)
        throw ImageFailure(Outcome::outOfMemory, u"the image takes more memory than it may");
    return codec;
}

/// All but the pixels.
Frame described(const Head& head) {
    requirePixels(head.width, head.height);
    const AVPixFmtDescriptor* const description = av_pix_fmt_desc_get(head.format);
    if (!description || sws_isSupportedInput(head.format) == 0)
        fail();
    Frame frame;
    frame.size = {static_cast<std::size_t>(head.width), static_cast<std::size_t>(head.height)};
    frame.bitsOfSample = description->comp[0].depth;
    frame.isFloat = (description->flags & AV_PIX_FMT_FLAG_FLOAT) != 0;
    frame.isIndexed = (description->flags & AV_PIX_FMT_FLAG_PAL) != 0;
    frame.isGray = !frame.isIndexed && description->nb_components < 3;
    frame.hasAlpha = frame.isIndexed || (description->flags & AV_PIX_FMT_FLAG_ALPHA) != 0;
    return frame;
}

Frame frameOfDecoded(const AVFrame* decoded) {
    const auto format = static_cast<AVPixelFormat>(decoded->format);
    Frame frame = described({decoded->width, decoded->height, format});
    if (frame.isIndexed)
        frame.hasAlpha = hasTransparentColor(*decoded);
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

/// The same file with two different things behind it; absent when that does not help either.
std::optional<std::pair<Frame, Frame>> filledFrames(const AVCodec* codec, std::string_view bytes,
                                                    std::size_t pixels) {
    constexpr std::size_t mostPixels = 25'000'000;
    constexpr std::size_t slack = std::size_t{64} << 10;
    if (pixels == 0 || pixels > mostPixels)
        return std::nullopt;
    const std::size_t length = pixels * imageengine::bytesOfPixel + slack;
    const auto filled = [&](std::uint8_t value) {
        const DecodedFrame decoded = frameOf(codec, bytes, {value, length}, pixels);
        return decoded ? frameOfDecoded(decoded.get()) : Frame();
    };
    // As a number with a fraction the other is none of those that become black.
    std::pair<Frame, Frame> frames{filled(0), filled(0x3F)};
    if (frames.first.pixels.empty() || frames.first.pixels.size() != frames.second.pixels.size())
        return std::nullopt;
    return frames;
}

/// Whether a row is the same in both.
bool isSettled(const std::pair<Frame, Frame>& frames, std::size_t row) {
    const std::size_t length = frames.first.size.width * imageengine::bytesOfPixel;
    return std::memcmp(frames.first.pixels.data() + row * length, frames.second.pixels.data() + row * length,
                       length) == 0;
}

} // namespace

bool hasFrameDecoder(const char* decoder) {
    return avcodec_find_decoder_by_name(decoder) != nullptr;
}

Frame headOfFrame(const char* decoder, std::string_view bytes) {
    // What decoders are given is copied.
    constexpr std::size_t mostBytesOfMostHeads = std::size_t{1} << 20;
    const AVCodec* const codec = codecFor(decoder, bytes);
    if (const auto head = codec->id == AV_CODEC_ID_PSD ? headOfPhotoshop(bytes) : std::nullopt)
        return described(*head);
    if (bytes.size() > mostBytesOfMostHeads) {
        try {
            return described(headOf(codec, bytes.substr(0, mostBytesOfMostHeads)));
        } catch (const ImageFailure&) {
            // Layers may stand before it.
        }
    }
    return described(headOf(codec, bytes));
}

Frame decodedFrame(const char* decoder, std::string_view bytes) {
    const AVCodec* const codec = codecFor(decoder, bytes);
    std::size_t pixels = 0;
    if (const DecodedFrame decoded = frameOf(codec, bytes, {}, pixels))
        return frameOfDecoded(decoded.get());
    auto frames = filledFrames(codec, bytes, pixels);
    bool isAnythingThere = false;
    for (std::size_t row = 0; frames && !isAnythingThere && row < frames->first.size.height; ++row)
        isAnythingThere = isSettled(*frames, row);
    if (!isAnythingThere)
        fail();
    frames->first.isPartial = true;
    return std::move(frames->first);
}

std::size_t settledRows(const char* decoder, std::string_view bytes) {
    const AVCodec* const codec = codecFor(decoder, bytes);
    std::size_t pixels = 0;
    frameOf(codec, bytes, {}, pixels);
    const auto frames = filledFrames(codec, bytes, pixels);
    std::size_t row = 0;
    while (frames && row < frames->first.size.height && isSettled(*frames, row))
        ++row;
    return row;
}

} // namespace kelvo
