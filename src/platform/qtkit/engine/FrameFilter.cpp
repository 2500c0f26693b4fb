#include "platform/qtkit/engine/FrameFilter.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

namespace kelvo {
namespace {

void require(bool condition) {
    if (!condition)
        throw MovieFailure(Outcome::broken, u"its frames cannot be converted");
}

AVFilterInOut* openEnd(const char* name, AVFilterContext* filter) {
    AVFilterInOut* const end = avfilter_inout_alloc();
    if (!end)
        throw std::bad_alloc();
    end->name = av_strdup(name);
    end->filter_ctx = filter;
    return end;
}

} // namespace

FrameFilter::FrameFilter(const std::string& steps, int width, int height, int format)
    : graph_(owned<FilterGraph>(avfilter_graph_alloc())) {
    graph_->nb_threads = 1;
    const std::string arguments = "video_size=" + std::to_string(width) + "x" + std::to_string(height) +
                                  ":pix_fmt=" + std::to_string(format) + ":time_base=1/1:pixel_aspect=1/1";
    require(avfilter_graph_create_filter(&source_, avfilter_get_by_name("buffer"), "in", arguments.c_str(),
                                         nullptr, graph_.get()) >= 0 &&
            avfilter_graph_create_filter(&sink_, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr,
                                         graph_.get()) >= 0);
    AVFilterInOut* outputs = openEnd("in", source_);
    AVFilterInOut* inputs = openEnd("out", sink_);
    const bool isMade =
        avfilter_graph_parse_ptr(graph_.get(), steps.c_str(), &inputs, &outputs, nullptr) >= 0 &&
        avfilter_graph_config(graph_.get(), nullptr) >= 0;
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    require(isMade);
}

Frame FrameFilter::filtered(const AVFrame& frame) {
    add(&frame);
    return next();
}

Frame FrameFilter::filteredAsLast(const AVFrame& frame) {
    add(&frame);
    add(nullptr);
    return next();
}

void FrameFilter::add(const AVFrame* frame) {
    // It is only looked at, which the library has no word for.
    require(av_buffersrc_add_frame_flags(source_, const_cast<AVFrame*>(frame), AV_BUFFERSRC_FLAG_KEEP_REF) >=
            0);
}

Frame FrameFilter::next() {
    auto result = owned<Frame>(av_frame_alloc());
    require(av_buffersink_get_frame(sink_, result.get()) >= 0);
    return result;
}

} // namespace kelvo
