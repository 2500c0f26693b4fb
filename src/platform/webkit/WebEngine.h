#pragma once

#include "platform/engine/EngineProcess.h"
#include "platform/foundation/NSURL.h"
#include "platform/webkit/RenderedPage.h"
#include "platform/webkit/WebResourceLoadDelegate.h"

#include <optional>

namespace kelvo {

/// The web engine, which runs in a process of its own ("plumwick-web-engine").
class WebEngine {
public:
    struct Options {
        /// The charset label from outside the page; nil: the page's own declaration counts.
        NSString textEncodingName;
        /// What relative references are resolved against; nil: they resolve to nothing.
        NSURL baseURL;
        /// For all of it, with what the caller does with the page. What has loaded shortly before is used.
        double timeoutSeconds = 60;
        /// Asked before every request; null: everything is fetched.
        WebResourceLoadDelegate* delegate = nullptr;
    };

    /// The one of this process. Its engine is started at the first page, kept, and ended with the process.
    static WebEngine& sharedEngine();

    /// Loads, lays out and describes the page. Runs the current run loop meanwhile. A page that a script
    /// leaves, or keeps from ending, is read as without scripts. Absent when the engine could make nothing of it;
    /// throws as EngineProcess::ask does when there is no engine here, when it failed, and when it gave no answer in
    /// time; the next page is read all the same. What the delegate throws refuses that request. Loads that were
    /// refused are noted with the current request.
    std::optional<RenderedPage> render(const NSData& page, const Options& options);

    /// The process of the engine, 0 when none runs.
    pid_t processIdentifier() const { return process_.processIdentifier(); }

private:
    WebEngine();

    EngineProcess process_;
};

} // namespace kelvo
