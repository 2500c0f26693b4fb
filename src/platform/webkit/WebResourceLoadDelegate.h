#pragma once

#include "platform/foundation/NSURLRequest.h"
#include "platform/foundation/Value.h"

namespace kelvo {

/// Decides what the web engine loads: asked before every request of a page, its redirects included.
class WebResourceLoadDelegate {
public:
    virtual ~WebResourceLoadDelegate();

    /// Whether the decision on a request is at hand. A delegate that has to find out first starts to and
    /// gives false: then the request is held at its connection, others go on, and the delegate is asked again
    /// until it gives true.
    virtual bool webView_canDecideRequest(const Value& webView, const NSURLRequest& request);

    /// The request to send, or nil to refuse it. It may be another one; a file that takes the place of a
    /// picture has to be there until the page has been read. `redirectResponse` is nil unless this request
    /// follows a redirect, and then a dictionary with the "URL" that redirected and its "StatusCode". The web
    /// view, the resource's identifier and the data source only tell requests apart and may be nil.
    ///
    /// Asked once more wherever a connection is to be made, for the root of that host
    /// ("http://example.org:80/"): no connection is made unless that very request may be sent.
    virtual NSURLRequest webView_resource_willSendRequest_redirectResponse_fromDataSource(
        const Value& webView, const Value& resource, const NSURLRequest& request,
        const Value& redirectResponse, const Value& dataSource) = 0;
};

} // namespace kelvo
