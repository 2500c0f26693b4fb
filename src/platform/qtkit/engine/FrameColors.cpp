#include "platform/qtkit/engine/FrameColors.h"

#include "platform/qtkit/engine/FrameFilter.h"

#include <algorithm>
#include <cstring>
#include <string>

extern "C" {
#include <libavutil/mastering_display_metadata.h>
#include <libavutil/pixdesc.h>
}

namespace kelvo {
namespace {

/// Before that, colours that nobody says anything of are those of standard television.
constexpr int leastHeightOfHighDefinition = 720;
/// What is tone-mapped at a time, because it takes 12 bytes a pixel and more.
constexpr int rowsOfStrip = 64;
/// In candelas: what is shown as white, and how bright films become where they say nothing of it.
constexpr int brightnessOfWhite = 203;
constexpr int usualPeak = 1000;

[[noreturn]] void fail() {
    throw MovieFailure(Outcome::broken, u"its frames cannot be converted");
}

bool isFullRange(const AVFrame& frame) {
    switch (frame.format) {
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ444P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ411P:
        return true;
    default:
        return frame.color_range == AVCOL_RANGE_JPEG;
    }
}

int coefficientsOf(const AVFrame& frame) {
    switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
        return SWS_CS_ITU709;
    case AVCOL_SPC_FCC:
        return SWS_CS_FCC;
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
        return SWS_CS_ITU601;
    case AVCOL_SPC_SMPTE240M:
        return SWS_CS_SMPTE240M;
    case AVCOL_SPC_BT2020_NCL:
    case AVCOL_SPC_BT2020_CL:
        return SWS_CS_BT2020;
    default:
        return frame.height >= leastHeightOfHighDefinition ? SWS_CS_ITU709 : SWS_CS_ITU601;
    }
}

bool isOfHighDynamicRange(const AVFrame& frame) {
    return frame.color_trc == AVCOL_TRC_SMPTE2084 || frame.color_trc == AVCOL_TRC_ARIB_STD_B67;
}

bool isOfWideGamut(const AVFrame& frame) {
    return frame.color_primaries == AVCOL_PRI_BT2020 ||
           (frame.color_primaries == AVCOL_PRI_UNSPECIFIED && coefficientsOf(frame) == SWS_CS_BT2020);
}

void scale(const AVFrame& frame, int width, int height, AVPixelFormat format, std::uint8_t* const planes[4],
           const int strides[4]) {
    const auto from = static_cast<AVPixelFormat>(frame.format);
    if (sws_isSupportedInput(from) == 0)
        fail();
    const bool isShrunk = width < frame.width || height < frame.height;
    const bool isSame = width == frame.width && height == frame.height;
    // In the frame's own size only its colours, of which there are fewer, have something between them.
    const int method = isShrunk ? SWS_AREA : isSame ? SWS_BILINEAR : SWS_BICUBIC;
    const auto scaler =
        Scaler(sws_getContext(frame.width, frame.height, from, width, height, format,
                              method | SWS_FULL_CHR_H_INT | SWS_ACCURATE_RND, nullptr, nullptr, nullptr));
    if (!scaler)
        fail();
    constexpr int one = 1 << 16;
    // Refused where colours are no brightness and differences from it.
    sws_setColorspaceDetails(scaler.get(), sws_getCoefficients(coefficientsOf(frame)),
                             isFullRange(frame) ? 1 : 0, sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, one, one);
    if (sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, planes, strides) <= 0)
        fail();
}

/// How bright the film becomes, as a multiple of white.
double peakOf(const AVFrame& frame) {
    double most = usualPeak;
    if (const AVFrameSideData* const data =
            av_frame_get_side_data(&frame, AV_FRAME_DATA_CONTENT_LIGHT_LEVEL)) {
        const auto& light = *reinterpret_cast<const AVContentLightMetadata*>(data->data);
        if (light.MaxCLL > 0)
            most = light.MaxCLL;
    }
    return std::clamp(most / brightnessOfWhite, 1.5, 50.0);
}

/// From colours as the frames say that theirs are to those of usual screens.
std::string conversionOf(const AVFrame& frame) {
    const bool isBright = isOfHighDynamicRange(frame);
    std::string steps =
        "zscale=t=linear:npl=" + std::to_string(brightnessOfWhite) + ",format=gbrpf32le,zscale=p=709";
    if (isBright)
        steps += ",tonemap=mobius:peak=" + std::to_string(peakOf(frame));
    // Films of usual brightness are shown as their numbers stand.
    return steps + ",zscale=m=gbr:r=full:t=" + (isBright ? "iec61966-2-1" : "709") + ",format=gbrp";
}

/// A frame of the size and format, with memory of its own.
Frame newFrame(int width, int height, AVPixelFormat format) {
    auto frame = owned<Frame>(av_frame_alloc());
    frame->width = width;
    frame->height = height;
    frame->format = format;
    if (av_frame_get_buffer(frame.get(), 0) < 0)
        throw std::bad_alloc();
    return frame;
}

void writeConverted(const AVFrame& frame, int width, int height, std::uint8_t* pixels) {
    const Frame whole = newFrame(width, height, AV_PIX_FMT_GBRP16LE);
    scale(frame, width, height, AV_PIX_FMT_GBRP16LE, whole->data, whole->linesize);
    // It looks at each pixel by itself, so that strips will do.
    FrameFilter conversion(conversionOf(frame), width, rowsOfStrip, AV_PIX_FMT_GBRP16LE);
    constexpr int colors = 3;
    for (int top = 0; top < height; top += rowsOfStrip) {
        const int rows = std::min(rowsOfStrip, height - top);
        const Frame strip = newFrame(width, rowsOfStrip, AV_PIX_FMT_GBRP16LE);
        strip->color_range = AVCOL_RANGE_JPEG;
        strip->colorspace = AVCOL_SPC_RGB;
        strip->color_primaries = isOfWideGamut(frame) ? AVCOL_PRI_BT2020 : AVCOL_PRI_BT709;
        strip->color_trc = isOfHighDynamicRange(frame) ? frame.color_trc : AVCOL_TRC_BT709;
        for (int plane = 0; plane < colors; ++plane) {
            for (int row = 0; row < rowsOfStrip; ++row) {
                // The last strip ends in rows that are not looked at.
                const auto from =
                    static_cast<std::ptrdiff_t>(top + std::min(row, rows - 1)) * whole->linesize[plane];
                std::memcpy(strip->data[plane] + static_cast<std::ptrdiff_t>(row) * strip->linesize[plane],
                            whole->data[plane] + from,
                            static_cast<std::size_t>(width) * sizeof(std::uint16_t));
            }
        }
        const Frame made = conversion.filtered(*strip);
        if (made->width != width || made->height != rowsOfStrip || made->format != AV_PIX_FMT_GBRP)
            fail();
        for (int row = 0; row < rows; ++row) {
            const auto at = [&](int plane) {
                return made->data[plane] + static_cast<std::ptrdiff_t>(row) * made->linesize[plane];
            };
            const std::uint8_t* const green = at(0);
            const std::uint8_t* const blue = at(1);
            const std::uint8_t* const red = at(2);
            for (int column = 0; column < width; ++column) {
                *pixels++ = red[column];
                *pixels++ = green[column];
                *pixels++ = blue[column];
                *pixels++ = 0xFF;
            }
        }
    }
}

} // namespace

void writeColors(const AVFrame& frame, std::int64_t width, std::int64_t height, std::uint8_t* pixels) {
    const AVPixFmtDescriptor* const description =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    if (!description || frame.width <= 0 || frame.height <= 0 || !frame.data[0])
        fail();
    const auto across = static_cast<int>(width);
    const auto down = static_cast<int>(height);
    const bool isRGB = (description->flags & AV_PIX_FMT_FLAG_RGB) != 0;
    if (isOfHighDynamicRange(frame) || (isOfWideGamut(frame) && !isRGB)) {
        writeConverted(frame, across, down, pixels);
        return;
    }
    std::uint8_t* const planes[4]{pixels, nullptr, nullptr, nullptr};
    const int strides[4]{across * 4, 0, 0, 0};
    scale(frame, across, down, AV_PIX_FMT_RGBA, planes, strides);
}

} // namespace kelvo
