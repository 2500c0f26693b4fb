#include "platform/imageio/engine/RowWatcher.h"

namespace kelvo {

vips::Image RowWatcher::watched(const vips::Image& loaded) {
    goodRows_ = static_cast<std::size_t>(loaded->Ysize);
    vips::Image image(vips_image_new());
    if (!image)
        vips::fail();
    // Nobody else keeps it.
    g_object_ref(loaded.get());
    vips_object_local(image.get(), loaded.get());
    if (vips_image_pipelinev(image.get(), loaded->dhint, loaded.get(), nullptr) != 0 ||
        vips_image_generate(image.get(), vips_start_one, generate, vips_stop_one, loaded.get(), this) != 0)
        vips::fail();
    return image;
}

int RowWatcher::generate(VipsRegion* to, void* sequence, void*, void* watcher, gboolean*) {
    auto* const from = static_cast<VipsRegion*>(sequence);
    const VipsRect& area = to->valid;
    if (vips_region_prepare(from, &area) == 0)
        return vips_region_region(to, from, &area, area.left, area.top);
    vips_region_black(to);
    static_cast<RowWatcher*>(watcher)->failAt(static_cast<std::size_t>(area.top));
    return 0;
}

void RowWatcher::failAt(std::size_t row) noexcept {
    std::size_t good = goodRows_;
    while (row < good && !goodRows_.compare_exchange_weak(good, row)) {
    }
}

} // namespace kelvo
