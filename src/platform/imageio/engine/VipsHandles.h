#pragma once

#include "platform/imageio/engine/DecodedImage.h"

#include <vips/vips.h>

#include <memory>

namespace kelvo::vips {

// What all that use libvips here share.

template <typename Object>
struct Release {
    void operator()(Object* object) const { g_object_unref(object); }
};
using Source = std::unique_ptr<VipsSource, Release<VipsSource>>;
using Image = std::unique_ptr<::VipsImage, Release<::VipsImage>>;

/// Throws ImageFailure (broken), and forgets what the library said.
[[noreturn]] inline void fail(const char16_t* sentence = u"the image cannot be decoded") {
    vips_error_clear();
    throw ImageFailure(Outcome::broken, sentence);
}

/// What an operation makes that is told where to put it.
template <typename Operation>
Image made(Operation operation) {
    ::VipsImage* image = nullptr;
    if (operation(&image) != 0)
        fail();
    return Image(image);
}

} // namespace kelvo::vips
