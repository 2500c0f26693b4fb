#include "platform/webkit/WebArchive.h"

#include <utility>

namespace kelvo {

struct WebArchive::Contents {
    WebResource mainResource;
    std::vector<WebResource> subresources;
    std::vector<WebArchive> subframeArchives;
};

WebArchive::WebArchive(WebResource mainResource, std::vector<WebResource> subresources,
                       std::vector<WebArchive> subframeArchives)
    : contents_(std::make_shared<const Contents>(
          Contents{std::move(mainResource), std::move(subresources), std::move(subframeArchives)})) {}

const WebArchive::Contents& WebArchive::none() noexcept {
    static const Contents none;
    return none;
}

const WebResource& WebArchive::mainResource() const noexcept {
    return contents_ ? contents_->mainResource : none().mainResource;
}

const std::vector<WebResource>& WebArchive::subresources() const noexcept {
    return contents_ ? contents_->subresources : none().subresources;
}

const std::vector<WebArchive>& WebArchive::subframeArchives() const noexcept {
    return contents_ ? contents_->subframeArchives : none().subframeArchives;
}

} // namespace kelvo
