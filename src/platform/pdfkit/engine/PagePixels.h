#pragma once

#include "platform/foundation/NSData.h"

#include <cstddef>
#include <exception>

namespace poppler {
class page;
}

namespace kelvo {

/// Why a page is not drawn.
class PageFailure : public std::exception {
public:
    explicit PageFailure(const char16_t* sentence) : sentence_(sentence) {}

    const char16_t* sentence() const noexcept { return sentence_; }
    const char* what() const noexcept override { return "a page that cannot be drawn"; }

private:
    const char16_t* sentence_;
};

/// In points.
struct PageSize {
    double width = 0;
    double height = 0;
};

/// Of the crop box, turned as the page is.
PageSize sizeOfPageAsRead(const poppler::page& page);

struct PixelRequest {
    std::size_t width = 0;
    std::size_t height = 0;
    bool isTransparent = false;
};

/// The page as PDFEngineMessages.h describes its pixels, in sealed memory. Nil when the request is for none, or for more
/// than there may be, and when the library draws nothing. Throws PageFailure when the page has no size that could be drawn.
NSData pixelsOfPage(const poppler::page& page, const PixelRequest& request);

} // namespace kelvo
