#pragma once

#include "platform/foundation/NSURL.h"

namespace kelvo {

/// One request for a resource, reduced to what is decided by.
class NSURLRequest {
public:
    /// Nil.
    NSURLRequest() = default;
    NSURLRequest(std::nullptr_t) {}
    static NSURLRequest requestWithURL(const NSURL& url) {
        NSURLRequest request;
        request.url_ = url;
        return request;
    }

    bool isNil() const noexcept { return url_.isNil(); }
    const NSURL& URL() const noexcept { return url_; }

private:
    NSURL url_;
};

} // namespace kelvo
