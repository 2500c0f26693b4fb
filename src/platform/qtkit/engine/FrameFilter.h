#pragma once

#include "platform/qtkit/engine/MovieLibrary.h"

#include <string>

namespace kelvo {

/// Filters of the library, for frames of one size and format.
class FrameFilter {
public:
    /// The filters by their names and options, as the library's own programs take them. Throws MovieFailure when they
    /// cannot be had.
    FrameFilter(const std::string& steps, int width, int height, int format);

    /// What becomes of one frame, by filters that need no other. Throws MovieFailure.
    Frame filtered(const AVFrame& frame);
    /// The same by filters that wait for the frames after it, of which there are none. Nothing can be filtered any more.
    Frame filteredAsLast(const AVFrame& frame);

private:
    void add(const AVFrame* frame);
    Frame next();

    FilterGraph graph_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
};

} // namespace kelvo
