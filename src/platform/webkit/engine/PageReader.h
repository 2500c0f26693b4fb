#pragma once

#include "platform/ledger/Outcome.h"
#include "platform/webkit/PageFiles.h"
#include "platform/webkit/engine/NetworkProxy.h"
#include "platform/webkit/engine/RequestGate.h"

#include <webkit2/webkit2.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo {

/// One page to read.
struct PageRequest {
    /// With its base already in it; the engine adds none.
    std::string bytes;
    /// Empty: what the page says of itself counts.
    std::string charset;
    /// By the monotonic clock: when the description is to be there.
    double deadlineSeconds = 0;
    /// What the page may load from this machine's disk.
    PageFiles files{nullptr};
    /// Asked for every request of the page.
    RequestGate::Decision decide;
    /// Asked for every connection that such requests need.
    NetworkProxy::Decision decideConnection;
    /// Told what the page may not load of this machine's disk.
    std::function<void(const std::string& url)> noteRefusal;
    /// Told why there is no description, or what is missing from it.
    std::function<void(Outcome outcome, const char16_t* sentence)> note;
};

/// A picture as it came over the wire.
struct PageResource {
    std::string url;
    std::string mimeType;
    std::string bytes;
};

struct PageDescription {
    /// What the walk through the page found; see RenderedPageReader.cpp.
    std::string fields;
    std::vector<PageResource> resources;
};

/// Reads pages one after another in a web view that nobody sees. The display must be open.
class PageReader {
public:
    /// `extensionFolder` holds the extension that asks before each request, and nothing else; `runtimeFolder`
    /// is this process's alone, and gone whenever no web process starts.
    PageReader(const std::string& extensionFolder, const std::string& runtimeFolder, bool sandboxed);
    PageReader(const PageReader&) = delete;
    PageReader& operator=(const PageReader&) = delete;
    ~PageReader();

    /// Absent when the page's process ended meanwhile, or had to be ended because it gave no description in
    /// time.
    std::optional<PageDescription> read(const PageRequest& request);
    /// Makes ready for the next page: nothing of the last one goes on, and a web process that has read many
    /// or has grown is replaced.
    void rest();

private:
    enum class Phase { idle, loading, finished, left, gone };
    /// What a load does without. A page is loaded once more, without one of the two, where the first load
    /// gives none, or only the beginning.
    enum class Without { nothing, network, scripts };

    /// Leaves view_ null when WebKit does not start in time.
    void open(Without without, double secondsToWait);
    void openView();
    void closeView();
    /// Until the condition holds or the monotonic time (microseconds) has come; whether it holds. Gives up on
    /// a web process that grows too large meanwhile.
    bool runUntil(const std::function<bool()>& condition, gint64 end);
    /// Until the page is there or the time has come.
    void load(const PageRequest& request, Without without, gint64 end);
    /// Once the first load has ended, or its time is over.
    Without whatToDoWithout(gint64 end);
    bool isThere() const { return view_ && phase_ != Phase::gone; }
    /// Leaves the page; whether that came to an end.
    bool goBlank(double secondsToWait);
    /// Ends the web process.
    void giveUp();
    /// Why the web process is not there any more.
    void noteEnd(const PageRequest& request) const;
    void dropResources();
    /// What the extension answers, if that is a text and comes in time.
    std::optional<std::string> ask(const char* message, GVariant* parameter, gint64 end);
    /// The description of the page. `mayBeBlank` false: absent when the page shows nothing.
    std::optional<std::string> walk(gint64 end, bool mayBeBlank);
    std::vector<PageResource> collectResources(const std::string& fields, gint64 end);
    std::string decide(const GateQuestion& question);
    ConnectionDecision decideConnection(const std::string& host, std::uint16_t port);
    /// Leads WebKit's traffic through the proxy, by a password that is new each time.
    void setProxy();
    /// Ends the network process, with whatever it has under way, and has WebKit start another.
    void replaceNetworkProcess();

    static void onLoadChanged(WebKitWebView*, WebKitLoadEvent event, PageReader* self);
    static gboolean onLoadFailed(WebKitWebView*, WebKitLoadEvent, const char*, GError*, PageReader* self);
    static void onTerminated(WebKitWebView*, WebKitWebProcessTerminationReason, PageReader* self);
    static void onResource(WebKitWebView*, WebKitWebResource* resource, WebKitURIRequest* request,
                           PageReader* self);

    struct Resource {
        std::string requestedURL;
        WebKitWebResource* resource;
    };

    RequestGate gate_;
    NetworkProxy proxy_;
    WebKitWebContext* context_ = nullptr;
    WebKitSettings* settings_ = nullptr;
    GtkWidget* window_ = nullptr;
    WebKitWebView* view_ = nullptr;
    Phase phase_ = Phase::idle;
    bool isCommitted_ = false;
    bool isTooLarge_ = false;
    Without without_ = Without::nothing;
    /// Null unless a page is being loaded: what goes on before and after is not let through.
    const PageRequest* request_ = nullptr;
    std::vector<Resource> resources_;
    int pagesOfProcess_ = 0;
};

} // namespace kelvo
