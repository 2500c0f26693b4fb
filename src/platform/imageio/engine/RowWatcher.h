#pragma once

#include "platform/imageio/engine/VipsHandles.h"

#include <atomic>
#include <cstddef>

namespace kelvo {

/// Stands behind a loader, and has what this cannot read come empty in place of failing the whole image. To be kept as
/// long as images are made of what it watches.
class RowWatcher {
public:
    RowWatcher() = default;
    RowWatcher(const RowWatcher&) = delete;
    RowWatcher& operator=(const RowWatcher&) = delete;

    /// The image as it was loaded, read through the watcher.
    vips::Image watched(const vips::Image& loaded);
    /// From the top; of those that have been read so far all when none failed. Some before the first that failed may not
    /// be counted.
    std::size_t goodRows() const noexcept { return goodRows_; }

private:
    static int generate(VipsRegion* to, void* sequence, void* from, void* watcher, gboolean* stop);
    void failAt(std::size_t row) noexcept;

    std::atomic<std::size_t> goodRows_ = 0;
};

} // namespace kelvo
