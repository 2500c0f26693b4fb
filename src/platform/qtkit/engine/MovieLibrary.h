#pragma once

#include "platform/ledger/Outcome.h"

#include <chrono>
#include <exception>
#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace kelvo {

/// Why there is nothing: thrown by whoever finds out.
class MovieFailure : public std::exception {
public:
    MovieFailure(Outcome outcome, const char16_t* sentence) : outcome_(outcome), sentence_(sentence) {}

    Outcome outcome() const noexcept { return outcome_; }
    const char16_t* sentence() const noexcept { return sentence_; }
    const char* what() const noexcept override { return "a movie that cannot be read"; }

private:
    Outcome outcome_;
    const char16_t* sentence_;
};

using Clock = std::chrono::steady_clock;

struct FreeFormat {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
struct FreeDecoder {
    void operator()(AVCodecContext* decoder) const { avcodec_free_context(&decoder); }
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
struct FreeGraph {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};
using Format = std::unique_ptr<AVFormatContext, FreeFormat>;
using Decoder = std::unique_ptr<AVCodecContext, FreeDecoder>;
using Packet = std::unique_ptr<AVPacket, FreePacket>;
using Frame = std::unique_ptr<AVFrame, FreeFrame>;
using Scaler = std::unique_ptr<SwsContext, FreeScaler>;
using FilterGraph = std::unique_ptr<AVFilterGraph, FreeGraph>;

/// Throws for null, which the library gives when there is no memory.
template <typename Owner, typename Made>
Owner owned(Made* made) {
    if (!made)
        throw std::bad_alloc();
    return Owner(made);
}

} // namespace kelvo
